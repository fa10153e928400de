// The whole PER run-time: what generated modules include, and the value model that they share.
//
// A decoder fills a tree of plain structures:
//
//   BOOLEAN                    uint8_t, 0 or 1
//   NULL                       nothing
//   INTEGER                    int32_t, uint32_t if the upper bound is above 2^31 - 1, or int64_t
//                              if that is MAX
//   ENUMERATED                 uint32_t, the number of the item
//   OCTET STRING (SIZE (l..u)) struct { uint32_t numocts; uint8_t data[u]; }
//   BIT STRING (SIZE (l..u))   struct { uint32_t numbits; uint8_t data[(u + 7) / 8]; }
//   without SIZE               AsnDynOctStr, AsnDynBitStr
//   8-bit character strings    const char*, NUL-terminated
//   BMPString                  AsnBMPString
//   OBJECT IDENTIFIER          AsnObjId
//   open type                  AsnOpenType
//   SEQUENCE                   struct: the presence bits `m`, if any component has one; the
//                              components; `extElem1`, the additions as octets, if the type is
//                              extensible and knows none
//   CHOICE                     struct: the tag `t`, 1 for the first alternative; the union `u`, if
//                              any alternative has a value: INTEGER, ENUMERATED and 8-bit strings
//                              as above, all others by pointer; `extElem1`, an unknown alternative
//                              as octets, if the type is extensible and knows none
//   SEQUENCE OF                struct { uint32_t n; element* elem; }
//
// In a set that is decoded as published, these differ:
//
//   INTEGER without an upper   int64_t
//   bound, or extensible
//   GeneralString              its octets as text
//   SEQUENCE                   `extElem1`, if the type is extensible: the additions that it does
//                              not know, as an AsnUnknownAdditions
//   CHOICE                     `extElem1`, if the type is extensible: the octets of an alternative
//                              that it does not know; the tag is then that of extElem1 or above
//
// Bit 0 of `m` belongs to the first OPTIONAL component of the root, in declaration order; then come
// the other OPTIONAL components and one bit for each known addition.
//
// Ownership: every pointer in the tree leads to memory of the context's element heap, which
// asnFreeContext frees and nothing else does. The only exception is the `data` of an `extElem1`: it
// points into the buffer that was read, which is the caller's input or, inside an open type that
// was copied, the element heap. The tree must not outlive the context or the caller's input.
//
// Values: records in the element heap start zeroed, so an absent component is zero, and so is the
// tag of a choice with an unknown alternative, except in a set that is decoded as published. Inline
// octets of 1024 or more are not cleared beyond their count. A tree is complete only if its decoder
// returned 0; discard it after any other status.
#pragma once

#include "constructs.h"
#include "integers.h"
#include "objid.h"
#include "print.h"
#include "published.h"
#include "real.h"
#include "strings.h"
#include "trace.h"
