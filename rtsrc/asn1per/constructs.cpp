#include "constructs.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "lengths.h"

namespace {

constexpr AsnLogger kLogError{AsnLogBase::constructs};

/// The bitmap of additions: the first 32, bit 31 for index 0, and how many of the others are
/// there, which no type knows.
template <class In>
AsnStatus bitmap(In& in, uint32_t* present, uint32_t* beyond) {
    uint32_t last = 0;
    AsnStatus status = asnSmallNumber(in, last);
    if (status != kAsnOk) return in.fail(kLogError, status);
    const int64_t count = int64_t{last} + 1;
    In bits = in;
    status = in.move(count);
    if (status != kAsnOk) return in.fail(kLogError, status);
    const auto first = static_cast<uint32_t>(std::min<int64_t>(count, 32));
    *present = bits.flags(first) << (32 - first);
    *beyond = 0;
    for (int64_t read = 32; read < count; read += 32)
        *beyond += static_cast<uint32_t>(
            std::popcount(bits.flags(static_cast<uint32_t>(std::min<int64_t>(count - read, 32)))));
    return kAsnOk;
}

[[gnu::flatten, gnu::noinline]] AsnStatus readBitmap(AsnContext& ctx, uint32_t* present,
                                                     uint32_t* beyond) {
    return asnRead(ctx, [=](auto& in) { return bitmap(in, present, beyond); });
}

/// An index below 256 alternatives, as pd_ConsUnsigned reads it.
template <class In>
AsnStatus rootAlternative(In& in, uint32_t* t, uint32_t roots) {
    in.openField("ConsUnsigned");
    uint32_t index = 0;
    const AsnStatus status = roots > 1 ? in.bits(index, asnBitCount(roots - 1)) : kAsnOk;
    if (status != kAsnOk) return in.fail(kLogError, status);
    *t = index + 1;
    in.closeField();
    in.tell("pd_ConsUnsigned: decoded value is %u\n", static_cast<unsigned>(index));
    return index < roots ? kAsnOk : kAsnInvalidChoice;
}

}  // namespace

[[gnu::flatten]] uint32_t asnFlags(AsnContext& ctx, uint32_t count) {
    return asnRead(ctx, [count](auto& in) { return in.flags(count); });
}

AsnStatus pd_Additions(AsnContext& ctx, void* record, AsnAdditionDecoder decode) {
    uint32_t present = 0;
    uint32_t beyond = 0;
    AsnStatus status = readBitmap(ctx, &present, &beyond);
    if (status != kAsnOk) return status;
    AsnCursor behind;
    while (present != 0) {
        const auto index = static_cast<uint32_t>(std::countl_zero(present));
        present &= ~(0x80000000U >> index);
        status = asnEnterOpenType(ctx, behind);
        if (status != kAsnOk) return kLogError(ctx, status);
        status = decode(ctx, record, index);
        if (status != kAsnOk) return status;
        asnCopyCursor(ctx, behind);
    }
    for (; beyond != 0; --beyond) {
        status = asnEnterOpenType(ctx, behind);
        if (status != kAsnOk) return kLogError(ctx, status);
        asnCopyCursor(ctx, behind);
    }
    return kAsnOk;
}

[[gnu::flatten]] AsnStatus pd_RootAlternative(AsnContext& ctx, uint32_t* t, uint32_t roots) {
    return asnRead(ctx, [=](auto& in) { return rootAlternative(in, t, roots); });
}

[[gnu::flatten]] AsnStatus asnExtAlternative(AsnContext& ctx, uint32_t* t, uint32_t roots) {
    return asnRead(ctx, [=](auto& in) {
        return in.flag() != 0 ? kAsnExtended : rootAlternative(in, t, roots);
    });
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
    if (status != kAsnOk) return kLogError(ctx, status);
    t = index + roots + 1;
    status = pd_byteAlign(ctx);
    if (status != kAsnOk) return kLogError(ctx, status);
    AsnCursor behind;
    status = asnEnterOpenType(ctx, behind);
    if (status != kAsnOk) return kLogError(ctx, status);
    if (index >= known) return kAsnInvalidChoice;
    status = decode(ctx, choice);
    if (status != kAsnOk) return status;
    asnCopyCursor(ctx, behind);
    return kAsnOk;
}

[[gnu::flatten]] AsnStatus pd_ListLength(AsnContext& ctx, uint32_t* count, uint32_t elementBits) {
    return asnReadSized(ctx, [=](auto& in, auto* size) {
        const AsnStatus status = asnLength(in, size, *count);
        if (status != kAsnOk || in.bitsLeft() >= int64_t{*count} * elementBits) return status;
        return in.fail(kLogError, kAsnEndOfData);
    });
}

void* asnNewCleared(AsnContext& ctx, size_t count, size_t size) {
    size_t octets = 0;
    if (__builtin_mul_overflow(count, size, &octets)) return nullptr;
    void* const memory = asnMemAllocRaw(ctx.memHeap, octets);
    return memory != nullptr ? std::memset(memory, 0, octets) : nullptr;
}

void* asnNewRecords(AsnContext& ctx, size_t count, size_t size, const AsnSpan* uncleared,
                    size_t spans) {
    size_t octets = 0;
    if (__builtin_mul_overflow(count, size, &octets)) return nullptr;
    auto* const records = static_cast<unsigned char*>(asnMemAllocRaw(ctx.memHeap, octets));
    if (records == nullptr) return nullptr;
    for (unsigned char* record = records; count > 0; --count, record += size) {
        size_t at = 0;
        for (size_t i = 0; i < spans; ++i) {
            std::memset(record + at, 0, uncleared[i].offset - at);
            at = uncleared[i].offset + uncleared[i].size;
        }
        std::memset(record + at, 0, size - at);
    }
    return records;
}

void asnLogNoMemory(AsnContext& ctx) {
    (void)kLogError(ctx, kAsnNoMemory);
}

AsnStatus AsnNesting::check() const {
    return ctx_.depth <= kAsnMaxDepth ? kAsnOk : kLogError(ctx_, kAsnTooDeep);
}

static_assert(__LINE__ < 1000, "trail lines of two source files would meet");
