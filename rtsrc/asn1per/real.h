// REAL (X.690 8.5 contents).
#pragma once

#include "bits.h"

/// Reads a length, then the contents octets from the octet under the cursor, whatever bit it stands
/// at. Returns 0, -2, or -16 for contents that X.690 does not allow; all logged.
[[nodiscard]] AsnStatus pd_Real(AsnContext& ctx, double* value);

/// Decodes contents octets: none for 0, binary of base 2, 8 or 16 with scale factor, decimal NR1 to
/// NR3 (ISO 6093), or a special value. Returns 0 or -16, not logged. What a double cannot hold
/// becomes infinity or 0.
[[nodiscard]] AsnStatus asnDecRealContents(const uint8_t* contents, uint32_t length, double* value);
