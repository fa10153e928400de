// OBJECT IDENTIFIER (X.690 8.19 contents; X.691, 07/2002, clause 23).
#pragma once

#include "numbers.h"

/// Part of the value itself: nothing is allocated for it.
struct AsnObjId {
    int32_t numids;  // arcs in `subid`, 0 .. 128
    uint32_t subid[128];
};

/// Reads a length and the contents: at most 300 octets, of a fragmented string the first fragment.
/// Returns 0, -2, -4 for more than 128 arcs, -5, or -17 for longer contents; all logged.
[[nodiscard]] AsnStatus pd_ObjectId(AsnContext& ctx, AsnObjId& value);

/// Octets that are read one by one.
struct AsnOctetReader {
    const uint8_t* data;
    uint32_t size;  // octets in `data`
    uint32_t index;
};

/// Splits contents octets into arcs, each taken modulo 2^32; no contents give no arcs. Returns 0,
/// -2 if an arc exceeds the reader's octets, -4 for more than 128 arcs, -5 if an arc exceeds
/// `length`; none logged.
[[nodiscard]] AsnStatus asnDecObjIdContents(AsnOctetReader& reader, AsnObjId& value,
                                            uint32_t length);

// --- the rule ---

template <bool Tracing, AsnRules rules>
[[nodiscard, gnu::flatten]] AsnStatus pd_ObjectId(AsnReader<Tracing, rules> in, AsnObjId& value) {
    uint32_t length = 0;
    AsnStatus status = pd_Length(in, &length);
    if (status < 0) return in.log(AsnSource::objid, status);
    in.newField("ObjectID");
    const AsnCursor start = asnSaveCursor(in.ctx);
    const bool inPlace = start.bitOffset == 8;
    uint8_t copy[300];
    status = pd_octets(in, inPlace ? nullptr : copy, sizeof copy, uint64_t{length} * 8);
    if (status != kAsnOk) return in.log(AsnSource::objid, status);
    in.setFieldCount();
    AsnOctetReader reader{inPlace ? start.data + start.byteIndex : copy, length, 0};
    status = asnDecObjIdContents(reader, value, length);
    return status == kAsnOk ? status : in.log(AsnSource::objid, status);
}

static_assert(__LINE__ < 1000, "the trail lines of two sources would overlap");
