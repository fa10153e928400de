#include "hex_reader.h"

#include <algorithm>

namespace {

size_t lineEnds(std::string_view text) {
    return static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
}

bool isSeparator(char c) {
    return HexReader::isBlank(c) || c == ',' || c == ':' || c == '-';
}

}  // namespace

int HexReader::hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

void HexReader::fail(size_t at, const std::string& what) const {
    const size_t lineStart = text_.substr(0, at).rfind('\n') + 1;  // 0 if there is none
    const size_t line = lineEnds(text_.substr(0, at)) + 1;
    throw BadHex(what + " at line " + std::to_string(line) + ", column " +
                 std::to_string(at - lineStart + 1));
}

size_t HexReader::digitsAt(size_t at) const {
    size_t end = at;
    while (end < text_.size() && hexDigit(text_[end]) >= 0) {
        const char next = end + 1 < text_.size() ? text_[end + 1] : '\0';
        if (text_[end] == '0' && (next == 'x' || next == 'X')) break;
        ++end;
    }
    return end - at;
}

bool HexReader::skipPrefix(char first) {
    const bool isThere = at_ + 1 < text_.size() && text_[at_] == first &&
                         (text_[at_ + 1] == 'x' || text_[at_ + 1] == 'X');
    at_ += isThere ? 2 : 0;
    return isThere;
}

void HexReader::readDigits(bool oneAlone) {
    const size_t digits = digitsAt(at_);
    const size_t end = at_ + digits;
    if (digits == 1 && oneAlone) return add(hexDigit(text_[at_++]));
    if (digits % 2 != 0 || digits == 0) {
        const char stop = end < text_.size() ? text_[end] : '\n';
        if (!isSeparator(stop)) fail(end, std::string("'") + stop + "' is no hex digit");
        if (digits == 0) fail(end, "no hex digits");
        fail(end - 1, "half an octet");
    }
    while (at_ < end) readPair();
}

void HexReader::readPair() {
    add(hexDigit(text_[at_]) * 16 + hexDigit(text_[at_ + 1]));
    at_ += 2;
}

void HexReader::add(int octet) {
    if (!isOpen_) {
        line_ += lineEnds(text_.substr(counted_, at_ - counted_));
        counted_ = at_;
        messages_.push_back({{}, line_});
    }
    isOpen_ = true;
    messages_.back().octets.push_back(static_cast<unsigned char>(octet));
}

void HexReader::endMessage() {
    isOpen_ = false;
}
