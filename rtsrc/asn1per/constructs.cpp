#include "constructs.h"

#include <cstring>

namespace {

constexpr AsnLogger logError{AsnLogBase::constructs};

/// Reads an open type and puts the cursor at its start; `saved` receives the place behind it.
AsnStatus enterOpenType(AsnContext& ctx, AsnContext& saved) {
    const uint8_t* data = nullptr;
    uint32_t numocts = 0;
    const AsnStatus status = pd_OpenType(ctx, &data, &numocts);
    if (status != kAsnOk) return status;
    asnCopyCursor(saved, ctx);
    asnBindOpenType(ctx, data, numocts);
    return kAsnOk;
}

}  // namespace

uint32_t pd_Flag(AsnContext& ctx) {
    uint8_t bit = 0;
    (void)pd_bit(ctx, &bit);  // beyond the end: 0
    return bit;
}

uint32_t pd_Flags(AsnContext& ctx, uint32_t count) {
    uint32_t word = 0;
    for (uint32_t i = 0; i < count; ++i) word |= pd_Flag(ctx) << i;
    return word;
}

AsnStatus pd_Additions(AsnContext& ctx, void* record, AsnAdditionDecoder decode) {
    uint32_t last = 0;
    AsnStatus status = pd_SmallNonNegWholeNumber(ctx, &last);
    if (status != kAsnOk) return logError(ctx, status);
    const int64_t count = int64_t{last} + 1;

    AsnContext bitmap;
    asnForkContext(bitmap, ctx);  // owns nothing, as long as only bits are read
    status = pd_moveBitCursor(ctx, count);
    if (status != kAsnOk) return logError(ctx, status);
    for (int64_t i = 0; i < count; ++i) {
        if (pd_Flag(bitmap) == 0) continue;
        AsnContext saved;
        status = enterOpenType(ctx, saved);
        if (status != kAsnOk) return logError(ctx, status);
        status = decode(ctx, record, static_cast<uint32_t>(i));
        if (status != kAsnOk) return status;
        asnCopyCursor(ctx, saved);
    }
    return kAsnOk;
}

AsnStatus pd_UnknownAlternative(AsnContext& ctx, AsnOpenType*& extElem1) {
    extElem1 = asnNewValue<AsnOpenType>(ctx);
    if (extElem1 == nullptr) return kAsnNoMemory;
    return pd_ChoiceOpenTypeExt(ctx, &extElem1->data, &extElem1->numocts);
}

AsnStatus pd_ExtensionAlternative(AsnContext& ctx, void* choice, uint32_t& t, uint32_t roots,
                                  uint32_t known, AsnAlternativeDecoder decode) {
    uint32_t index = 0;
    AsnStatus status = pd_SmallNonNegWholeNumber(ctx, &index);
    if (status != kAsnOk) return logError(ctx, status);
    t = index + roots + 1;
    status = pd_byteAlign(ctx);
    if (status != kAsnOk) return logError(ctx, status);
    AsnContext saved;
    status = enterOpenType(ctx, saved);
    if (status != kAsnOk) return logError(ctx, status);
    if (index >= known) return kAsnInvalidChoice;
    status = decode(ctx, choice);
    if (status != kAsnOk) return status;
    asnCopyCursor(ctx, saved);
    return kAsnOk;
}

AsnStatus pd_ListLength(AsnContext& ctx, uint32_t* count, uint32_t elementBits) {
    const AsnStatus status = pd_Length(ctx, count);
    if (status != kAsnOk) return status;
    if (asnBitsLeft(ctx) < int64_t{*count} * elementBits) return logError(ctx, kAsnEndOfData);
    return kAsnOk;
}

void asnClearRecords(void* records, size_t count, size_t size, const AsnSpan* uncleared,
                     size_t spans) {
    auto* record = static_cast<unsigned char*>(records);
    for (; count > 0; --count, record += size) {
        size_t at = 0;
        for (size_t i = 0; i < spans; ++i) {
            std::memset(record + at, 0, uncleared[i].offset - at);
            at = uncleared[i].offset + uncleared[i].size;
        }
        std::memset(record + at, 0, size - at);
    }
}

void asnLogNoMemory(AsnContext& ctx) {
    (void)logError(ctx, kAsnNoMemory);
}

AsnStatus AsnNesting::check() const {
    return ctx_.depth <= kAsnMaxDepth ? kAsnOk : logError(ctx_, kAsnTooDeep);
}

static_assert(__LINE__ < 1000, "trail lines of two source files would meet");
