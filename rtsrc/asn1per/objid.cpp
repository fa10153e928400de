#include "objid.h"

#include "numbers.h"
#include "trace.h"

namespace {

constexpr AsnLogger logError{AsnLogBase::objid};
constexpr uint32_t kMaxContents = 300;
constexpr uint32_t kMaxArcs = 128;

}  // namespace

AsnStatus pd_ObjectId(AsnContext& ctx, AsnObjId& value) {
    uint32_t length = 0;
    AsnStatus status = pd_Length(ctx, &length);
    if (status < 0) return logError(ctx, status);
    pu_newField(ctx, "ObjectID");
    uint8_t contents[kMaxContents];
    status = pd_octets(ctx, contents, sizeof contents, length * 8);
    if (status != kAsnOk) return logError(ctx, status);
    pu_setFldBitCount(ctx);
    AsnOctetReader reader{contents, length, 0};
    status = asnDecObjIdContents(reader, value, length);
    return status == kAsnOk ? status : logError(ctx, status);
}

AsnStatus asnDecObjIdContents(AsnOctetReader& reader, AsnObjId& value, uint32_t length) {
    const uint32_t start = reader.index;
    uint32_t count = 0;
    while (reader.index - start < length) {
        uint32_t arc = 0;
        uint8_t octet = 0;
        do {
            if (reader.index >= reader.size) return kAsnEndOfData;
            octet = reader.data[reader.index++];
            arc = arc << 7 | (octet & 0x7FU);
        } while ((octet & 0x80) != 0);
        if (count == 0) {
            const uint32_t top = arc < 80 ? arc / 40 : 2;
            value.subid[count++] = top;
            arc -= top * 40;
        }
        if (count == kMaxArcs) return kAsnInvalidObjectId;
        value.subid[count++] = arc;
        value.numids = static_cast<int32_t>(count);
    }
    if (reader.index - start != length) return kAsnInvalidLength;
    value.numids = static_cast<int32_t>(count);
    return kAsnOk;
}

static_assert(__LINE__ < 1000, "trail lines of two source files would meet");
