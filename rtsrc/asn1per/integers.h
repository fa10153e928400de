// INTEGER in 64 bits, and ENUMERATED (X.691, 07/2002, 10.7, 10.8, 12 and 13). Every failure is
// logged, once by each function that it passes.
#pragma once

#include <algorithm>

#include "numbers.h"

/// The octets of a number after their count: two's complement, or without a sign. Returns 0, -2, -5
/// for a count in fragments, or -24 for a number that 64 bits with a sign do not hold.
template <bool isSigned, bool Tracing, AsnRules rules>
[[nodiscard]] AsnStatus asnNumberOctets(AsnReader<Tracing, rules> in, int64_t* value) {
    uint32_t octets = 0;
    AsnStatus status = pd_Length(in, &octets);
    if (status == kAsnFragment) status = kAsnInvalidLength;
    if (status != kAsnOk) return in.log(AsnSource::integers, status);
    in.newField("UnconsInteger");
    int64_t number = 0;
    for (uint32_t i = 0; i < octets; ++i) {
        uint8_t octet = 0;
        status = pd_octets(in, &octet, 1, 8);
        if (status != kAsnOk) return in.log(AsnSource::integers, status);
        if (i == 0 && isSigned && octet >= 0x80) number = -1;
        constexpr int64_t kRoom = int64_t{1} << 55;
        if (number < -kRoom || number >= kRoom) return in.log(AsnSource::integers, kAsnRange);
        number = number * 256 + octet;
    }
    *value = number;
    in.setFieldCount();
    return kAsnOk;
}

/// INTEGER without bounds. No octets give 0. Returns 0, -2, -5 or -24.
template <bool Tracing, AsnRules rules>
[[nodiscard]] AsnStatus asnLongInteger(AsnReader<Tracing, rules> in, int64_t* value) {
    return asnNumberOctets<true>(in, value);
}

/// INTEGER (lower..MAX): the distance from the lower bound, in octets without a sign. The bound has
/// 32 bits. Returns 0, -2, -5 or -24.
template <bool Tracing, AsnRules rules>
[[nodiscard]] AsnStatus asnSemiConsInteger(AsnReader<Tracing, rules> in, int64_t* value,
                                           int64_t lower) {
    const AsnStatus status = asnNumberOctets<false>(in, value);
    if (status != kAsnOk) return status;
    return __builtin_add_overflow(*value, lower, value) ? in.log(AsnSource::integers, kAsnRange)
                                                        : kAsnOk;
}

/// INTEGER (lower..upper, ...). Returns 0, -2, -5 or -24.
template <bool Tracing, AsnRules rules>
[[nodiscard]] AsnStatus asnExtLongInteger(AsnReader<Tracing, rules> in, int64_t* value,
                                          int32_t lower, int32_t upper) {
    uint8_t extended = 0;
    AsnStatus status = pd_bit(in, &extended);
    if (status != kAsnOk) return in.log(AsnSource::integers, status);
    if (extended != 0) return asnLongInteger(in, value);
    int32_t number = 0;
    status = pd_ConsInteger(in, &number, lower, upper);
    *value = number;
    return status;
}

/// ENUMERATED with the items 0 to `last`. Returns 0, -2, or -23 for another item.
template <bool Tracing, AsnRules rules>
[[nodiscard]] AsnStatus asnEnumerated(AsnReader<Tracing, rules> in, uint32_t* item, uint32_t last) {
    const AsnStatus status = pd_ConsUnsigned(in, item, 0, last);
    if (status != kAsnOk) return status;
    return *item <= last ? kAsnOk : in.log(AsnSource::integers, kAsnConstraint);
}

/// The same with an extension marker: additions continue the numbers of the root, whether they are
/// known or not. Returns 0, -2, -5 or -23.
template <bool Tracing, AsnRules rules>
[[nodiscard]] AsnStatus asnExtEnumerated(AsnReader<Tracing, rules> in, uint32_t* item,
                                         uint32_t last) {
    uint8_t extended = 0;
    AsnStatus status = pd_bit(in, &extended);
    if (status != kAsnOk) return in.log(AsnSource::integers, status);
    if (extended == 0) return asnEnumerated(in, item, last);
    uint32_t addition = 0;
    in.newField("addition");
    status = pd_SmallNonNegWholeNumber(in, &addition);
    if (status != kAsnOk) return in.log(AsnSource::integers, status);
    in.setFieldCount();
    *item = last + 1 + std::min(addition, UINT32_MAX - 1 - last);
    return kAsnOk;
}

static_assert(__LINE__ < 1000, "the trail lines of two sources would overlap");
