#include "page_blocks.h"

#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <vector>

#include "json_text.h"

namespace {

void appendBase64(std::string& text, std::span<const uint8_t> octets) {
    static constexpr std::string_view kDigits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (size_t at = 0; at < octets.size(); at += 3) {
        const auto group = octets.subspan(at, std::min<size_t>(3, octets.size() - at));
        uint32_t bits = 0;
        for (size_t i = 0; i < 3; ++i) bits = bits << 8 | (i < group.size() ? group[i] : 0U);
        for (size_t i = 0; i < 4; ++i)
            text += i <= group.size() ? kDigits[bits >> (18 - 6 * i) & 63] : '=';
    }
}

/// Appends an array as compressed base64, and clears its elements.
void appendPacked(std::string& text, std::string& elements) {
    elements += ']';
    uLongf size = compressBound(elements.size());
    std::vector<uint8_t> packed(size);
    if (compress(packed.data(), &size, reinterpret_cast<const Bytef*>(elements.data()),
                 elements.size()) != Z_OK)
        throw std::runtime_error("out of memory");
    appendBase64(text, std::span(packed).first(size));
    elements.clear();
}

}  // namespace

void PageBlocks::add(const nlohmann::ordered_json& message, std::string_view details) {
    messages_ += count_ == 0 ? '[' : ',';
    appendJson(messages_, message);
    details_ += count_ == 0 ? '[' : ',';
    details_ += details;
    if (++count_ == kMaxMessages || messages_.size() + details_.size() > kMaxOctets) finish();
}

void PageBlocks::finish() {
    if (count_ == 0) return;
    std::string block = "<script type=\"application/json\" class=\"block\">{\"messages\":\"";
    appendPacked(block, messages_);
    block += "\",\"details\":\"";
    appendPacked(block, details_);
    block += "\"}</script>\n";
    page_ << block;
    count_ = 0;
}
