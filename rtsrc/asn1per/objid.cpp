#include "objid.h"

namespace {

constexpr uint32_t kMaxArcs = 128;

}  // namespace

AsnStatus pd_ObjectId(AsnContext& ctx, AsnObjId& value) {
    return asnRead(ctx, [&](auto in) { return pd_ObjectId(in, value); });
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
            octet = reader.data[index++];  // NOLINT(clang-analyzer-core.uninitialized.Assign)
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
