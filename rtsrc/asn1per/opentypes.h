// Open types, and the two readers that keep unknown extensions (X.691, 07/2002, 10.2, 18.8, 22.8).
#pragma once

#include "bits.h"

/// Octets that are not decoded further: those of the buffer that was read, which must outlive the
/// record, or from pd_OpenType also a copy in the element heap. Empty: 0 and null.
struct AsnOpenType {
    uint32_t numocts;
    const uint8_t* data;
};

/// Reads a length and that many octets: `data` points to where they stand, or to a copy in the
/// element heap where they are fragmented or not at an octet boundary. Returns 0, -2 or -12,
/// logged.
[[nodiscard]] AsnStatus pd_OpenType(AsnContext& ctx, const uint8_t** data, uint32_t* numocts);

/// Reads an open type, and puts the cursor at its first octet; `behind` receives the place behind
/// it. Returns as pd_OpenType.
[[nodiscard]] AsnStatus asnEnterOpenType(AsnContext& ctx, AsnCursor& behind);

/// The extension additions of a SEQUENCE that knows none, once its extension bit was read as 1:
/// their bitmap and open types are read over. The record spans from the octet that holds the first
/// bit of the bitmap's length to before the octet that holds the cursor afterwards, neighbouring
/// bits included. Returns 0, -2 or -12, logged.
[[nodiscard]] AsnStatus pd_OpenTypeExt(AsnContext& ctx, const uint8_t** data, uint32_t* numocts);

/// The same for an unknown alternative of a CHOICE: index and open type.
[[nodiscard]] AsnStatus pd_ChoiceOpenTypeExt(AsnContext& ctx, const uint8_t** data,
                                             uint32_t* numocts);
