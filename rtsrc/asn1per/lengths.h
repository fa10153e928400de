// The wire forms of whole numbers and lengths (X.691, 07/2002, 10.5, 10.6, 10.9): what primitives
// are made of that begin with one. What they accept and return is said in numbers.h.
//
// For the run-time's own sources.
#pragma once

#include "numbers.h"
#include "reader.h"

inline constexpr AsnLogger kLogLengthError{AsnLogBase::lengths};

/// Reads `octets` octets at the next octet boundary.
template <class In>
AsnStatus asnAlignedNumber(In& in, uint32_t& value, uint32_t octets) {
    const AsnStatus status = in.align();
    if (status != kAsnOk) return in.fail(kLogLengthError, status);
    return in.number(value, octets);
}

/// One of 256 (1 octet), or of up to 65536 values (2 octets).
template <class In>
AsnStatus asnOctetNumber(In& in, uint32_t& offset, uint32_t rangeSize, uint32_t octets) {
    if (in.aligned()) return asnAlignedNumber(in, offset, octets);
    return in.bits(offset, asnBitCount(rangeSize - 1));
}

/// One of `rangeSize` values, 0 standing for 2^32.
template <class In>
AsnStatus asnWholeNumber(In& in, uint32_t& offset, uint32_t rangeSize) {
    if (rangeSize < 256 || !in.aligned()) return in.bits(offset, asnBitCount(rangeSize - 1));
    if (rangeSize <= 65536) return asnOctetNumber(in, offset, rangeSize, rangeSize == 256 ? 1 : 2);
    uint32_t octets = 0;
    const AsnStatus status = in.bits(octets, 2);
    return status == kAsnOk ? asnAlignedNumber(in, offset, octets + 1) : status;
}

/// A length without an upper bound below 65536: 0 + 7 bits, 10 + 14 bits, 11 + 6 bits of 16K.
template <class In>
AsnStatus asnUnboundedLength(In& in, uint32_t& count) {
    count = 0;
    AsnStatus status = in.aligned() ? in.align() : kAsnOk;
    uint32_t form = 0;
    if (status == kAsnOk) status = in.bit(form);
    if (status != kAsnOk) return in.fail(kLogLengthError, status);
    if (form == 0) return in.bits(count, 7);
    status = in.bit(form);
    if (status != kAsnOk) return in.fail(kLogLengthError, status);
    if (form == 0) return in.bits(count, 14);
    status = in.bits(count, 6);
    count *= 16384;
    return status == kAsnOk ? kAsnFragment : status;
}

/// A length that no size constraint can concern.
template <class In>
AsnStatus asnPlainLength(In& in, uint32_t& count) {
    in.openField("length");
    const AsnStatus status = asnUnboundedLength(in, count);
    in.closeField();
    return status >= 0 ? status : in.fail(kLogLengthError, status);
}

/// A length under a size constraint, or null for none.
template <class In>
AsnStatus asnLength(In& in, const AsnSizeConstraint* size, uint32_t& count) {
    AsnStatus status = kAsnOk;
    if (size != nullptr) {
        uint32_t extended = 0;
        if (asnFindSize(size, 1) != nullptr) {
            in.openField("length extension");
            status = in.bit(extended);
            if (status != kAsnOk) return in.fail(kLogLengthError, status);
            in.closeField();
        }
        size = asnFindSize(size, extended);
    }
    in.openField("length");
    if (size == nullptr || size->upper >= 65536) {
        status = asnUnboundedLength(in, count);
    } else {
        count = 0;
        if (size->lower != size->upper)
            status = asnWholeNumber(in, count, size->upper - size->lower + 1);
        count += size->lower;
    }
    in.closeField();
    return status >= 0 ? status : in.fail(kLogLengthError, status);
}

/// A normally small non-negative whole number.
template <class In>
AsnStatus asnSmallNumber(In& in, uint32_t& value) {
    uint32_t isLong = 0;
    AsnStatus status = in.bit(isLong);
    if (status != kAsnOk) return in.fail(kLogLengthError, status);
    if (isLong == 0) {
        status = in.bits(value, 6);
    } else {
        uint32_t octets = 0;
        status = asnPlainLength(in, octets);
        if (status >= 0) status = asnAlignedNumber(in, value, octets);
    }
    return status >= 0 ? kAsnOk : in.fail(kLogLengthError, status);
}

/// Runs a primitive that begins with a length, `primitive(reader, size)`, under the pending size
/// constraint.
template <class Primitive>
inline AsnStatus asnReadSized(AsnContext& ctx, Primitive primitive) {
    const AsnSizeConstraint* const size = asnTakeSizeConstraint(ctx);
    return asnRead(ctx, [=](auto& in) { return primitive(in, size); });
}
