// OBJECT IDENTIFIER (X.690 8.19 contents, X.691 23).
#pragma once

#include "bits.h"

/// Part of the value itself: nothing is allocated for it.
struct AsnObjId {
    int32_t numids;  // arcs in `subid`, 0 .. 128
    uint32_t subid[128];
};

/// Reads a length and the contents (at most 300 octets, of a fragmented string the first fragment).
/// Returns 0, -2, -4 for more than 128 arcs, -5, or -17 for longer contents; all logged.
[[nodiscard]] AsnStatus pd_ObjectId(AsnContext& ctx, AsnObjId& value);

/// Reads octets one after the other.
struct AsnOctetReader {
    const uint8_t* data;
    uint32_t size;  // octets in `data`
    uint32_t index;
};

/// Splits contents octets into arcs, each taken modulo 2^32; no contents give no arcs. Returns 0,
/// -2 where an arc runs past the reader's end, -4 for more than 128 arcs, -5 where an arc runs past
/// `length`; none logged.
[[nodiscard]] AsnStatus asnDecObjIdContents(AsnOctetReader& reader, AsnObjId& value,
                                            uint32_t length);
