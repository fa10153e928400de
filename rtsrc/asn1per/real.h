// REAL (X.690 8.5 contents).
#pragma once

#include "numbers.h"

/// Reads a length, then the contents octets, which start with the current octet at any bit
/// position. Returns 0, -2, or -16 for contents that X.690 does not allow; all logged.
[[nodiscard]] AsnStatus pd_Real(AsnContext& ctx, double* value);

/// Decodes contents octets: none for 0, binary of base 2, 8 or 16 with scale factor, decimal NR1 to
/// NR3 (ISO 6093), or a special value. Returns 0, or -16, not logged. A value outside the range of
/// a double becomes infinity or 0.
[[nodiscard]] AsnStatus asnDecRealContents(const uint8_t* contents, double* value, uint32_t length);

// --- the rule ---

template <bool Tracing, AsnRules rules>
[[nodiscard]] AsnStatus pd_Real(AsnReader<Tracing, rules> in, double* value) {
    AsnContext& ctx = in.ctx;
    uint32_t length = 0;
    AsnStatus status = pd_Length(in, &length);
    if (status < 0) return in.log(AsnSource::real, status);
    in.newField("Real");
    if (ctx.byteIndex > ctx.size || length > ctx.size - ctx.byteIndex)
        return in.log(AsnSource::real, kAsnEndOfData);
    status = asnDecRealContents(ctx.data + ctx.byteIndex, value, length);
    if (status != kAsnOk) return in.log(AsnSource::real, status);
    ctx.byteIndex += length;
    in.setFieldCount();
    return kAsnOk;
}

static_assert(__LINE__ < 1000, "the trail lines of two sources would overlap");
