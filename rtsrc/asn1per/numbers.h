// Whole numbers, lengths and the extension bit of lengths (X.691, 07/2002, clause 10).
//
// Each function exists twice: for a context, and as a template over a reader, which holds the rule
// (bits.h). A function logs a failure where it detects it and once more where it passes on one from
// another pd_ function, unless it says otherwise. A read that fails stores nothing. Values beyond a
// range and lengths beyond a constraint are accepted as the bits give them.
#pragma once

#include <bit>
#include <utility>

#include "bits.h"

/// The smallest n from 0 to 32 for which `number` is below 2^n.
constexpr uint32_t asnBitCount(uint32_t number) {
    return static_cast<uint32_t>(std::bit_width(number));
}

/// Reads one of `rangeSize` values (X.691 10.5).
///   offset     receives 0 .. rangeSize - 1, the distance from the lower bound
///   rangeSize  the number of values; 0 means 2^32, which as designed takes 32 bits in any variant
/// Encoding: in the UNALIGNED variant, and below 256 values, the fewest bits that hold rangeSize -
/// 1. In the ALIGNED variant 256 values take one aligned octet, up to 65536 values two; more take a
/// 2-bit octet count, padding, and then 1 to 4 octets. Returns 0 or -2. Only a failed alignment is
/// logged here, a failed read by pd_bits.
[[nodiscard]] AsnStatus pd_ConsWholeNumber(AsnContext& ctx, uint32_t* offset, uint32_t rangeSize);

/// INTEGER (lower..upper). Equal bounds read nothing. Returns 0, -2, or -24 (lower > upper, not
/// logged). After a failure the field of the trace stays open.
[[nodiscard]] AsnStatus pd_ConsInteger(AsnContext& ctx, int32_t* value, int32_t lower,
                                       int32_t upper);

/// The same unsigned: INTEGER ranges above 2^31 - 1, CHOICE indexes. The full 32-bit range counts
/// as one value less, which takes the same bits. Returns 0 or -2.
[[nodiscard]] AsnStatus pd_ConsUnsigned(AsnContext& ctx, uint32_t* value, uint32_t lower,
                                        uint32_t upper);

/// INTEGER (lower..upper, ...): one extension bit, then the constrained number or, if the bit is 1,
/// an unconstrained one (X.691 12.1). Returns 0, -2, or -24.
[[nodiscard]] AsnStatus pd_ExtInteger(AsnContext& ctx, int32_t* value, int32_t lower,
                                      int32_t upper);

/// INTEGER without bounds (X.691 10.8): a length in octets, then two's complement. Of more than 4
/// octets the leading ones are lost; 0 octets leave the value unchanged; of a fragmented number
/// only the first fragment is read. Returns 0 or -2.
[[nodiscard]] AsnStatus pd_UnconsInteger(AsnContext& ctx, int32_t* value);
[[nodiscard]] AsnStatus pd_UnconsUnsigned(AsnContext& ctx, uint32_t* value);

/// A normally small non-negative whole number (X.691 10.6). The long form aligns in both variants.
/// Returns 0 or -2. As published, it does not align, and returns -5 for more than 4 octets.
[[nodiscard]] AsnStatus pd_SmallNonNegWholeNumber(AsnContext& ctx, uint32_t* value);

/// A length determinant (X.691 10.9) under the pending size constraint, which it clears even if it
/// fails. An upper bound of 65536 or more, or no constraint, selects the 7-bit, 14-bit and fragment
/// forms, to which no lower bound is added. Returns 0, 2 for a fragment of a multiple of 16384
/// items with more to follow, or -2.
[[nodiscard]] AsnStatus pd_Length(AsnContext& ctx, uint32_t* count);

/// The sum of the lengths of all fragments of the string at the cursor, which does not move; the
/// pending constraint stays. The data of the last fragment may be missing: its read then fails.
///   itemBits  bits per item: 1 for BIT STRING, 8 for octets
/// Returns the sum, or -2.
[[nodiscard]] int32_t pd_GetComponentLength(AsnContext& ctx, uint32_t itemBits);

/// Makes the chain, which must outlive its use, apply to the next length. If a constraint is
/// pending, that one stays and the chain is only checked against it. Returns 0, or -23, not logged.
inline AsnStatus pd_SetSizeConstraint(AsnContext& ctx, const AsnSizeConstraint* chain) {
    const AsnSizeConstraint* const pending = ctx.sizeConstraint;
    if (pending == nullptr) {
        ctx.sizeConstraint = chain;
        return kAsnOk;
    }
    for (; chain != nullptr; chain = chain->next)
        if (chain->lower >= pending->lower || chain->upper <= pending->upper) return kAsnOk;
    return kAsnConstraint;
}

// --- the rules ---

/// The number of bits in the ALIGNED variant of a number with more than 65536 values.
template <bool Tracing, AsnRules rules>
[[nodiscard, gnu::noinline]] AsnStatus asnLargeRangeBits(AsnReader<Tracing, rules> in,
                                                         uint32_t* nbits) {
    uint32_t last = 0;
    const AsnStatus status = pd_bits(in, &last, 2);
    if (status == kAsnOk) *nbits = (last + 1) * 8;
    return status;
}

template <bool Tracing, AsnRules rules>
[[nodiscard]] ASN_INLINE AsnStatus pd_ConsWholeNumber(AsnReader<Tracing, rules> in,
                                                      uint32_t* offset, uint32_t rangeSize) {
    const bool isFull = rules == AsnRules::published && rangeSize == 0;
    if (in.ctx.aligned == 0 || (rangeSize < 256 && !isFull))
        return pd_bits(in, offset, asnBitCount(rangeSize - 1));
    uint32_t nbits = rangeSize == 256 ? 8 : 16;
    AsnStatus status = kAsnOk;
    if (rangeSize > 65536 || isFull) {
        status = asnLargeRangeBits(in, &nbits);
        if (status != kAsnOk) return status;
    }
    status = pd_byteAlign(in);
    if (status != kAsnOk) return in.log(AsnSource::numbers, status);
    return pd_bits<true>(in, offset, nbits);
}

template <bool Tracing, AsnRules rules>
[[nodiscard]] ASN_INLINE AsnStatus pd_ConsInteger(AsnReader<Tracing, rules> in, int32_t* value,
                                                  int32_t lower, int32_t upper) {
    in.newField("ConsInteger");
    if (lower > upper) return kAsnRange;
    uint32_t offset = 0;
    if (lower != upper) {
        const uint32_t rangeSize = static_cast<uint32_t>(upper) - static_cast<uint32_t>(lower) + 1;
        const AsnStatus status = pd_ConsWholeNumber(in, &offset, rangeSize);
        if (status != kAsnOk) return in.log(AsnSource::numbers, status);
    }
    *value = static_cast<int32_t>(static_cast<uint32_t>(lower) + offset);
    in.setFieldCount();
    in.diag("pd_ConsInteger: decoded value is %d\n", static_cast<int>(*value));
    return kAsnOk;
}

template <bool Tracing, AsnRules rules>
[[nodiscard]] ASN_INLINE AsnStatus pd_ConsUnsigned(AsnReader<Tracing, rules> in, uint32_t* value,
                                                   uint32_t lower, uint32_t upper) {
    in.newField("ConsUnsigned");
    uint32_t offset = 0;
    if (lower != upper) {
        const bool full = lower == 0 && upper == UINT32_MAX;
        const AsnStatus status =
            pd_ConsWholeNumber(in, &offset, full ? UINT32_MAX : upper - lower + 1);
        if (status != kAsnOk) return in.log(AsnSource::numbers, status);
    }
    *value = lower + offset;
    in.setFieldCount();
    in.diag("pd_ConsUnsigned: decoded value is %u\n", static_cast<unsigned>(*value));
    return kAsnOk;
}

/// The first record of the chain for root (0) or extended (1) sizes, or null.
inline const AsnSizeConstraint* asnFindSize(const AsnSizeConstraint* chain, uint8_t extended) {
    while (chain != nullptr && (chain->extended != 0) != (extended != 0)) chain = chain->next;
    return chain;
}

/// The forms of a length at its first bit: 0 + 7 bits, 10 + 14 bits, or 11 + 6 bits that count
/// 16384 items each.
template <bool Tracing, AsnRules rules>
[[nodiscard]] ASN_INLINE AsnStatus asnLengthForms(AsnReader<Tracing, rules> in, uint32_t* count) {
    uint8_t isLong = 0;
    uint8_t isFragment = 0;
    AsnStatus status = pd_bit(in, &isLong);
    if (status == kAsnOk && isLong == 0) [[likely]]
        return pd_bits(in, count, 7);
    if (status == kAsnOk) status = pd_bit(in, &isFragment);
    if (status == kAsnOk) status = pd_bits(in, count, isFragment == 0 ? 14 : 6);
    if (status != kAsnOk || isFragment == 0) return status;
    *count *= 16384;
    return kAsnFragment;
}

/// A length without an upper bound below 65536. The compiler makes use of the alignment.
template <bool Tracing, AsnRules rules>
[[nodiscard]] inline AsnStatus asnUnboundedLength(AsnReader<Tracing, rules> in, uint32_t* count) {
    if (in.ctx.aligned == 0) return asnLengthForms(in, count);
    const AsnStatus status = pd_byteAlign(in);
    return status == kAsnOk ? asnLengthForms(in, count) : status;
}

/// Picks the record of a chain that applies: if there are extended sizes, a bit says whether it is
/// one of them. Null: no record applies, and the length is not bounded.
template <bool Tracing, AsnRules rules>
[[nodiscard, gnu::noinline]] AsnStatus asnPickSize(AsnReader<Tracing, rules> in,
                                                   const AsnSizeConstraint** chain) {
    uint8_t extended = 0;
    if (asnFindSize(*chain, 1) != nullptr) {
        in.newField("length extension");
        const AsnStatus status = pd_bit(in, &extended);
        if (status != kAsnOk) return status;
        in.setFieldCount();
    }
    *chain = asnFindSize(*chain, extended);
    return kAsnOk;
}

/// The distance of a bounded length from its lower bound.
template <bool Tracing, AsnRules rules>
[[nodiscard]] inline AsnStatus asnLengthOffset(AsnReader<Tracing, rules> in,
                                               const AsnSizeConstraint& size, uint32_t* offset) {
    return pd_ConsWholeNumber(in, offset, size.upper - size.lower + 1);
}

/// pd_Length under a constraint that is no longer pending.
template <bool Tracing, AsnRules rules>
[[nodiscard]] ASN_INLINE AsnStatus asnLength(AsnReader<Tracing, rules> in,
                                             const AsnSizeConstraint* size, uint32_t* count) {
    AsnStatus status = kAsnOk;
    if (size != nullptr && (size->next != nullptr || size->extended != 0)) {
        status = asnPickSize(in, &size);
        if (status != kAsnOk) return in.log(AsnSource::numbers, status);
    }
    in.newField("length");
    uint32_t length = 0;
    if (size == nullptr || size->upper >= 65536) {
        status = asnUnboundedLength(in, &length);
    } else {
        if (size->lower != size->upper) status = asnLengthOffset(in, *size, &length);
        length += size->lower;
    }
    in.setFieldCount();
    if (status < 0) return in.log(AsnSource::numbers, status);
    *count = length;
    return status;
}

/// The pending constraint, which is then no longer pending.
inline const AsnSizeConstraint* asnTakeSize(AsnContext& ctx) {
    return std::exchange(ctx.sizeConstraint, nullptr);
}

template <bool Tracing, AsnRules rules>
[[nodiscard]] inline AsnStatus pd_Length(AsnReader<Tracing, rules> in, uint32_t* count) {
    return asnLength(in, asnTakeSize(in.ctx), count);
}

/// Adds up the lengths of the fragments that follow a first one of `total` items.
template <bool Tracing, AsnRules rules>
[[nodiscard, gnu::noinline]] AsnStatus asnAddFragments(AsnReader<Tracing, rules> in,
                                                       uint32_t itemBits, int64_t* total) {
    int64_t length = *total;
    AsnStatus status = kAsnFragment;
    while (status == kAsnFragment) {
        status = pd_moveBitCursor(in, length * itemBits);
        if (status != kAsnOk) return status;
        uint32_t next = 0;
        status = pd_Length(in, &next);
        length = next;
        *total += length;
    }
    return status;
}

/// What is known of a string once its lengths have been read.
struct AsnLookAhead {
    AsnCursor contents;             // where the first fragment starts, before any alignment
    const AsnSizeConstraint* size;  // what was pending
    bool fragmented;                // more fragments follow
};

/// pd_GetComponentLength before a string is read. If the string has one fragment, the plain reader
/// leaves the cursor at its contents, and the constraint is no longer pending: asnStringAfter
/// continues from there. Otherwise it has the effect of a second cursor (asnForkContext), but costs
/// less: what it changes is restored, and what it logs is dropped.
template <bool Tracing, AsnRules rules>
[[nodiscard]] ASN_INLINE int32_t asnLookAhead(AsnReader<Tracing, rules> in, uint32_t itemBits,
                                              AsnLookAhead& found) {
    AsnContext& ctx = in.ctx;
    const AsnCursor start = asnSaveCursor(ctx);
    const int32_t trailCount = ctx.errInfo.trailCount;
    const AsnStatus firstStatus = ctx.errInfo.status;
    const uint16_t flags = ctx.flags;
    if (Tracing) ctx.flags &= static_cast<uint16_t>(~ctxFieldTrace);

    found.size = ctx.sizeConstraint;
    uint32_t length = 0;
    AsnStatus status = pd_Length(in, &length);
    found.contents = asnSaveCursor(ctx);
    found.fragmented = status == kAsnFragment;
    int64_t total = length;
    if (status == kAsnFragment) status = asnAddFragments(in, itemBits, &total);
    if (total > INT32_MAX) status = kAsnEndOfData;  // more than any message holds
    if (!Tracing && status == kAsnOk && !found.fragmented) return static_cast<int32_t>(total);

    asnRestoreCursor(ctx, start);
    ctx.sizeConstraint = found.size;
    if (Tracing) ctx.flags = flags;
    if (status == kAsnOk) return static_cast<int32_t>(total);
    ctx.errInfo.trailCount = trailCount;
    ctx.errInfo.status = firstStatus;
    return in.log(AsnSource::numbers, status);
}

template <bool Tracing, AsnRules rules>
[[nodiscard]] inline int32_t pd_GetComponentLength(AsnReader<Tracing, rules> in,
                                                   uint32_t itemBits) {
    const AsnCursor start = asnSaveCursor(in.ctx);
    AsnLookAhead found;
    const int32_t total = asnLookAhead(in, itemBits, found);
    asnRestoreCursor(in.ctx, start);
    in.ctx.sizeConstraint = found.size;
    return total;
}

template <bool Tracing, AsnRules rules>
[[nodiscard]] AsnStatus pd_UnconsInteger(AsnReader<Tracing, rules> in, int32_t* value) {
    in.diag("pd_UnconsInteger: start\n");
    uint32_t octets = 0;
    AsnStatus status = pd_Length(in, &octets);
    if (status < 0) return in.log(AsnSource::numbers, status);
    in.diag("pd_UnconsInteger: nbytes is %d\n", static_cast<int>(octets));
    in.newField("UnconsInteger");
    status = in.ctx.aligned != 0 ? pd_byteAlign(in) : kAsnOk;
    if (status != kAsnOk) return in.log(AsnSource::numbers, status);
    uint32_t number = 0;
    for (uint32_t i = 0; i < octets; ++i) {
        uint8_t octet = 0;
        status = pd_octets(in, &octet, 1, 8);
        if (status != kAsnOk) return in.log(AsnSource::numbers, status);
        if (i == 0) number = octet >= 0x80 ? UINT32_MAX : 0;  // the sign
        number = number << 8 | octet;
    }
    if (octets != 0) *value = static_cast<int32_t>(number);
    in.setFieldCount();
    in.diag("pd_UnconsInteger: decoded value is %d\n", static_cast<int>(*value));
    return kAsnOk;
}

template <bool Tracing, AsnRules rules>
[[nodiscard]] AsnStatus pd_UnconsUnsigned(AsnReader<Tracing, rules> in, uint32_t* value) {
    uint32_t octets = 0;
    AsnStatus status = pd_Length(in, &octets);
    if (status < 0) return in.log(AsnSource::numbers, status);
    in.newField("UnconsUnsigned");
    status = in.ctx.aligned != 0 ? pd_byteAlign(in) : kAsnOk;
    if (status == kAsnOk) status = pd_bits(in, value, uint64_t{octets} * 8);
    if (status != kAsnOk) return in.log(AsnSource::numbers, status);
    in.setFieldCount();
    in.diag("pd_UnconsUnsigned: decoded value is %u\n", static_cast<unsigned>(*value));
    return kAsnOk;
}

template <bool Tracing, AsnRules rules>
[[nodiscard]] AsnStatus pd_ExtInteger(AsnReader<Tracing, rules> in, int32_t* value, int32_t lower,
                                      int32_t upper) {
    uint8_t extended = 0;
    AsnStatus status = pd_bit(in, &extended);
    if (status == kAsnOk)
        status =
            extended != 0 ? pd_UnconsInteger(in, value) : pd_ConsInteger(in, value, lower, upper);
    return status == kAsnOk ? status : in.log(AsnSource::numbers, status);
}

template <bool Tracing, AsnRules rules>
[[nodiscard]] AsnStatus pd_SmallNonNegWholeNumber(AsnReader<Tracing, rules> in, uint32_t* value) {
    uint8_t isLong = 0;
    uint64_t nbits = 6;
    AsnStatus status = pd_bit(in, &isLong);
    if (status == kAsnOk && isLong != 0) {
        uint32_t octets = 0;
        status = pd_Length(in, &octets);
        nbits = uint64_t{octets} * 8;
        if (in.published && status >= 0)
            status = octets > 4 ? kAsnInvalidLength : kAsnOk;
        else if (status >= 0)
            status = pd_byteAlign(in);
    }
    if (status == kAsnOk) status = pd_bits(in, value, nbits);
    return status == kAsnOk ? status : in.log(AsnSource::numbers, status);
}

static_assert(__LINE__ < 1000, "the trail lines of two sources would overlap");
