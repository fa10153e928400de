// Whole numbers, lengths and the extension bit of lengths (X.691, 07/2002, clause 10).
//
// Every primitive logs what it returns, but for the statuses marked "not logged". Values beyond a
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
///   rangeSize  how many values there are; 0 stands for 2^32
/// Wire form: UNALIGNED, or below 256 values, the fewest bits that hold rangeSize - 1. ALIGNED: 256
/// values take one aligned octet, up to 65536 two, more a 2-bit octet count, padding, then 1 to 4
/// octets. Returns 0 or -2.
[[nodiscard]] AsnStatus pd_ConsWholeNumber(AsnContext& ctx, uint32_t* offset, uint32_t rangeSize);

/// pd_ConsInteger in full.
[[nodiscard]] AsnStatus asnConsInteger(AsnContext& ctx, int32_t* value, int32_t lower,
                                       int32_t upper);

/// INTEGER (lower..upper). Equal bounds read nothing. Returns 0, -2, or -24 (lower > upper, not
/// logged).
[[nodiscard, gnu::always_inline]] inline AsnStatus pd_ConsInteger(AsnContext& ctx, int32_t* value,
                                                                  int32_t lower, int32_t upper) {
    const int64_t rangeSize = int64_t{upper} - lower + 1;  // known to the compiler, as a rule
    if (rangeSize < 256 || rangeSize > 65536) return asnConsInteger(ctx, value, lower, upper);
    const uint8_t* const octets = asnTakeOctets(ctx, rangeSize == 256 ? 1 : 2);
    if (octets == nullptr) return asnConsInteger(ctx, value, lower, upper);
    const uint32_t offset = rangeSize == 256 ? octets[0] : uint32_t{octets[0]} << 8 | octets[1];
    *value = static_cast<int32_t>(static_cast<uint32_t>(lower) + offset);
    return kAsnOk;
}

/// The same unsigned: INTEGER ranges above 2^31 - 1, CHOICE and ENUMERATED indexes. The full 32-bit
/// range counts as one value less, which asks for the same bits. Returns 0 or -2.
[[nodiscard]] AsnStatus pd_ConsUnsigned(AsnContext& ctx, uint32_t* value, uint32_t lower,
                                        uint32_t upper);

/// INTEGER (lower..upper, ...): one extension bit, then the constrained number or, where the bit is
/// set, an unconstrained one (X.691 12.1). Returns 0 or -2.
[[nodiscard]] AsnStatus pd_ExtInteger(AsnContext& ctx, int32_t* value, int32_t lower,
                                      int32_t upper);

/// INTEGER without bounds (X.691 10.8): a length in octets, then two's complement. Of more than 4
/// octets the leading ones are lost; 0 octets leave the value as it was; of a fragmented number
/// only the first fragment is read. Returns 0 or -2.
[[nodiscard]] AsnStatus pd_UnconsInteger(AsnContext& ctx, int32_t* value);
[[nodiscard]] AsnStatus pd_UnconsUnsigned(AsnContext& ctx, uint32_t* value);

/// A normally small non-negative whole number (X.691 10.6). The long form aligns in both variants.
/// Returns 0 or -2.
[[nodiscard]] AsnStatus pd_SmallNonNegWholeNumber(AsnContext& ctx, uint32_t* value);

/// A length determinant (X.691 10.9) under the pending size constraint, which it clears. An upper
/// bound of 65536 or more, or no constraint, gives the 7-bit, 14-bit and fragment forms; their
/// result has no lower bound added. Returns 0, 2 for a fragment of a multiple of 16384 items with
/// more to follow, or -2.
[[nodiscard]] AsnStatus pd_Length(AsnContext& ctx, uint32_t* count);

/// The total count over all fragments of the item at the cursor, which does not move, nor is the
/// pending constraint used up.
///   itemBits  bits per item: 1 for BIT STRING, 8 for octets
/// Returns the count, or -2 where the items do not fit the data: what it returns is safe to
/// allocate.
[[nodiscard]] int32_t pd_GetComponentLength(AsnContext& ctx, uint32_t itemBits);

/// Makes the chain, which must outlive that, apply to the next length. With a constraint pending,
/// that one stays and the chain is only checked against it. Returns 0, or -23, not logged.
AsnStatus pd_SetSizeConstraint(AsnContext& ctx, const AsnSizeConstraint* chain);

/// The first record of the chain for root (0) or extended (1) sizes, or null.
inline const AsnSizeConstraint* asnFindSize(const AsnSizeConstraint* chain, uint32_t extended) {
    while (chain != nullptr && (chain->extended != 0) != (extended != 0)) chain = chain->next;
    return chain;
}

/// The pending constraint, which is then no longer pending.
inline const AsnSizeConstraint* asnTakeSizeConstraint(AsnContext& ctx) {
    return std::exchange(ctx.sizeConstraint, nullptr);
}
