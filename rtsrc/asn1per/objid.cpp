#include "objid.h"

#include "lengths.h"

namespace {

constexpr AsnLogger kLogError{AsnLogBase::objid};
constexpr uint32_t kMaxContents = 300;
constexpr uint32_t kMaxArcs = 128;

/// The contents where they stand, else copied.
template <class In>
AsnStatus objectId(In& in, AsnObjId& value) {
    uint32_t length = 0;
    AsnStatus status = asnPlainLength(in, length);
    if (status < 0) return in.fail(kLogError, status);
    in.openField("ObjectID");
    AsnOctetReader reader{in.here(), length, 0};
    uint8_t copy[kMaxContents];
    if (in.atBoundary() && length != 0) {
        if (in.bitsLeft() < int64_t{length} * 8) return in.fail(kLogError, kAsnEndOfData);
        if (length > kMaxContents) return in.fail(kLogError, kAsnTooLong);
        in.moveOctets(length);
    } else {
        status = in.octets(copy, sizeof copy, length * 8);
        if (status != kAsnOk) return in.fail(kLogError, status);
        reader.data = copy;
    }
    in.closeField();
    status = asnDecObjIdContents(reader, value, length);
    return status == kAsnOk ? status : in.fail(kLogError, status);
}

}  // namespace

[[gnu::flatten]] AsnStatus pd_ObjectId(AsnContext& ctx, AsnObjId& value) {
    return asnRead(ctx, [to = &value](auto& in) { return objectId(in, *to); });
}

AsnStatus asnDecObjIdContents(AsnOctetReader& reader, AsnObjId& value, uint32_t length) {
    const uint32_t start = reader.index;
    uint32_t index = start;
    uint32_t count = 0;
    while (index - start < length) {
        uint32_t arc = 0;
        uint32_t octet = 0x80;
        while (octet >= 0x80) {
            if (index >= reader.size) return kAsnEndOfData;
            octet = reader.data[index++];
            arc = arc << 7 | (octet & 0x7F);
        }
        if (count == 0) {
            const uint32_t top = arc < 80 ? arc / 40 : 2;
            value.subid[count++] = top;
            arc -= top * 40;
        }
        if (count == kMaxArcs) return kAsnInvalidObjectId;
        value.subid[count++] = arc;
    }
    reader.index = index;
    value.numids = static_cast<int32_t>(count);
    return index - start == length ? kAsnOk : kAsnInvalidLength;
}

static_assert(__LINE__ < 1000, "trail lines of two source files would meet");
