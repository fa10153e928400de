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

AsnStatus TamselDecoder::decode(const TamselFamily& family, std::span<const uint8_t> message,
                                bool aligned) {
    release();
    static const uint8_t kNone = 0;
    // Bound to one octet first: no octets at all would mean a buffer of the context's own.
    (void)asnInitContext(ctx_, &kNone, 1);
    asnMemLend(ctx_.memHeap, first_);
    ctx_.aligned = aligned ? 1 : 0;
    family_ = &family;
    message_ = message.data();
    size_ = message.size();
    if (size_ > kMaxOctets) {
        asnBindOctets(ctx_, &kNone, 0);
        status_ = kAsnTooLong;
    } else {
        asnBindOctets(ctx_, message_, static_cast<uint32_t>(size_));
        std::memset(value_, 0, family.valueSize);
        status_ = size_ != 0 ? family.decode(ctx_, value_) : kAsnEndOfData;
    }
    // Not every failure is logged; the text of the status comes from here nevertheless.
    if (ctx_.errInfo.status == kAsnOk) ctx_.errInfo.status = status_;
    return status_;
}

int64_t TamselDecoder::bitPosition() const {
    // Within an open type the cursor is relative to its octets, which are in the message, or in the
    // element heap if they came in fragments.
    const std::less_equal<> inOrder;
    const bool isInMessage = inOrder(message_, ctx_.data) && inOrder(ctx_.data, message_ + size_);
    return asnBitPosition(ctx_) + (isInMessage ? (ctx_.data - message_) * 8 : 0);
}

void TamselDecoder::print(AsnDumpSink sink) const {
    if (family_ == nullptr || status_ != kAsnOk) return;
    AsnDump dump(sink, family_->root);
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
