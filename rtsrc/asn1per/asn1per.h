// The PER run-time, whole: what generated modules include, and the value model that they share.
//
// A decoder fills a tree of plain structures:
//
//   BOOLEAN                    uint8_t, 0 or 1
//   NULL                       nothing
//   INTEGER                    int32_t, or uint32_t where the upper bound is above 2^31 - 1
//   OCTET STRING (SIZE (l..u)) struct { uint32_t numocts; uint8_t data[u]; }
//   BIT STRING (SIZE (l..u))   struct { uint32_t numbits; uint8_t data[(u + 7) / 8]; }
//   without SIZE               AsnDynOctStr, AsnDynBitStr
//   8-bit character strings    const char*, NUL-terminated
//   BMPString                  AsnBMPString
//   OBJECT IDENTIFIER          AsnObjId
//   open type                  AsnOpenType
//   SEQUENCE                   struct: presence bits `m` of optional components, as they stand in
//                              the number read, so the last one first, and of additions, where
//                              there are any; the components; `extElem1`, the additions as octets,
//                              where the type is extensible and knows none
//   CHOICE                     struct: the tag `t`, 1 for the first alternative; the union `u`,
//                              absent where no alternative has a value: integers and text inline,
//                              all else by pointer; `extElem1`, an unknown alternative as octets,
//                              where the type is extensible and knows none
//   SEQUENCE OF                struct { uint32_t n; element* elem; }
//
// Ownership: whatever a pointer in the tree leads to lives in the element heap of the context and
// dies with it, in asnFreeContext; nobody frees anything else. The one thing borrowed is the octets
// of an `extElem1`: they are the caller's own input (or, inside an open type, a copy in the heap),
// so the tree must not outlive either.
//
// Values: records in the heap start zeroed, so an absent component is zero, and so is the tag of a
// choice whose alternative is not known. Inline octets beyond the count are not cleared. A tree is
// whole only if its decoder returned 0; after any other status throw it away.
#pragma once

#include "constructs.h"
#include "objid.h"
#include "print.h"
#include "real.h"
#include "strings.h"
#include "trace.h"
