#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>

#include "TamselCore.h"

namespace {

/// Text that grows in memory from malloc.
struct TextInMemory {
    char* text;
    size_t room;
    size_t size;
    bool failed;

    static void write(void* target, const char* text, size_t size) {
        auto& memory = *static_cast<TextInMemory*>(target);
        if (memory.failed || (memory.room - memory.size < size && !memory.grow(size))) return;
        std::memcpy(memory.text + memory.size, text, size);
        memory.size += size;
    }

    bool grow(size_t more) {
        const size_t wanted = std::max(2 * room, size + more);
        auto* const larger = static_cast<char*>(std::malloc(wanted));
        failed = larger == nullptr;
        if (failed) return false;
        if (size != 0) std::memcpy(larger, text, size);
        std::free(text);
        text = larger;
        room = wanted;
        return true;
    }
};

}  // namespace

TamselDecoder::~TamselDecoder() {
    release();
    std::free(text_);
}

void TamselDecoder::release() {
    if (family_ != nullptr) asnFreeContext(ctx_);
    family_ = nullptr;
}

void TamselDecoder::start(const TamselFamily& family, std::span<const uint8_t> message,
                          bool aligned) {
    release();
    static const uint8_t kNone = 0;
    // Bound to one octet first: no octets at all would mean a buffer of the context's own.
    (void)asnInitContext(ctx_, &kNone, 1);
    asnMemLend(ctx_.memHeap, first_);
    ctx_.aligned = aligned ? 1 : 0;
    family_ = &family;
    message_ = message.first(message.size() <= kMaxOctets ? message.size() : 0);
    asnBindOctets(ctx_, message_.data(), static_cast<uint32_t>(message_.size()));
    std::memset(value_, 0, family.valueSize);
}

AsnStatus TamselDecoder::run(const TamselFamily& family, std::span<const uint8_t> message) {
    if (message.size() > kMaxOctets)
        status_ = kAsnTooLong;
    else
        status_ = message.empty() ? kAsnEndOfData : family.decode(ctx_, value_);
    // Not every failure is logged, but each has a text, which is found by this status.
    if (ctx_.errInfo.status == kAsnOk) ctx_.errInfo.status = status_;
    return status_;
}

AsnStatus TamselDecoder::decode(const TamselFamily& family, std::span<const uint8_t> message,
                                bool aligned) {
    start(family, message, aligned);
    return run(family, message);
}

AsnStatus TamselDecoder::decodeTraced(const TamselFamily& family, std::span<const uint8_t> message,
                                      bool aligned) {
    start(family, message, aligned);
    paths_ = {family.root, message_.data(), static_cast<uint32_t>(message_.size())};
    ctx_.fieldPaths = &paths_;
    asnSetFieldTrace(ctx_, 1);
    return run(family, message);
}

int64_t TamselDecoder::bitPosition() const {
    // Within an open type the cursor is relative to its octets, which are in the message, or in the
    // element heap if they came in fragments.
    const std::less_equal<> inOrder;
    const uint8_t* const start = message_.data();
    const bool isInMessage =
        inOrder(start, ctx_.data) && inOrder(ctx_.data, start + message_.size());
    return asnBitPosition(ctx_) + (isInMessage ? (ctx_.data - start) * 8 : 0);
}

void TamselDecoder::printFields(AsnDumpSink sink) const {
    asnPrintFields(sink, ctx_.fieldList, message_, "");
}

void TamselDecoder::print(AsnDumpSink sink, bool escaped) const {
    if (family_ == nullptr || status_ != kAsnOk) return;
    AsnDump dump(sink, family_->root);
    dump.escaped = escaped;
    family_->print(dump, value_);
}

AsnStatus TamselDecoder::dump(std::string_view* text) {
    TextInMemory memory{text_, textRoom_, 0, false};
    print({TextInMemory::write, &memory});
    text_ = memory.text;
    textRoom_ = memory.room;
    *text = {text_, memory.failed ? 0 : memory.size};
    return memory.failed ? kAsnNoMemory : kAsnOk;
}
