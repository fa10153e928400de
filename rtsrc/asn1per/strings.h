// Bit, octet and character strings (X.691, 07/2002, clauses 15, 16 and 27).
//
// Each reads its length through pd_Length, under the size constraint registered just before with
// pd_SetSizeConstraint. Every failure is logged; on failure the record may hold a partial count.
// What "in the element heap" says lives until asnFreeContext and is nobody else's to free.
#pragma once

#include <cstring>

#include "charset.h"

/// BIT STRING and OCTET STRING of any size; `data` is in the element heap, null where empty. The
/// first bit is the high-order bit of the first octet, unused low bits of the last octet are 0.
struct AsnDynBitStr {
    uint32_t numbits;
    uint8_t* data;
};
struct AsnDynOctStr {
    uint32_t numocts;
    uint8_t* data;
};

/// BMPString: `nchars` 16-bit characters in the element heap, in the byte order of the machine.
struct AsnBMPString {
    uint32_t nchars;
    uint16_t* data;
};

/// A 16-bit character set: a table of permitted codes, or (0, null) a range.
struct Asn16BitCharSet {
    uint32_t count;
    const uint16_t* table;
    uint16_t lowest;
    uint16_t highest;
    uint32_t unalignedBits;
    uint32_t alignedBits;
};

/// Read into a fixed buffer of `size` octets, adding up the fragments of a long string. Return 0,
/// -2, -17 where the string is longer than the buffer, or -23 where no record of the size
/// constraint covers a length that asks for one.
[[nodiscard]] AsnStatus pd_BitString(AsnContext& ctx, uint32_t* numbits, uint8_t* buffer,
                                     uint32_t size);
[[nodiscard]] AsnStatus pd_OctetString(AsnContext& ctx, uint32_t* numocts, uint8_t* buffer,
                                       uint32_t size);

/// pd_OctetString under a size constraint of its own, which generated code knows when it is
/// compiled. More than two octets of a fixed size stand at an octet boundary (X.691 16.6, 16.7).
template <uint32_t capacity>
[[nodiscard, gnu::always_inline]] inline AsnStatus pd_SizedOctetString(
    AsnContext& ctx, const AsnSizeConstraint& size, uint32_t& numocts, uint8_t (&data)[capacity]) {
    const bool fixed = size.lower == size.upper && size.extended == 0 && size.next == nullptr;
    if (fixed && capacity > 2 && capacity < 65536 && ctx.sizeConstraint == nullptr)
        if (const uint8_t* const octets = asnTakeOctets(ctx, capacity)) {
            numocts = capacity;
            std::memcpy(data, octets, capacity);
            return kAsnOk;
        }
    pd_SetSizeConstraint(ctx, &size);
    return pd_OctetString(ctx, &numocts, data, capacity);
}

/// Read into the element heap. Return -12 besides, where it is exhausted.
[[nodiscard]] AsnStatus pd_DynBitString(AsnContext& ctx, AsnDynBitStr& value);
[[nodiscard]] AsnStatus pd_DynOctetString(AsnContext& ctx, AsnDynOctStr& value);

/// pd_DynOctetString without a size constraint, behind its first length, which was read as `form`.
[[nodiscard]] AsnStatus asnCopyOctets(AsnContext& ctx, AsnStatus form, uint32_t length,
                                      AsnDynOctStr& value);

/// The 8-bit character strings. `text` receives NUL-terminated text in the element heap;
/// `permitted` is the permitted alphabet as text, or null. Return 0, -2, -12, -23 for a character
/// outside the alphabet, or 2 for a fragmented string, which is not supported.
[[nodiscard]] AsnStatus pd_NumericString(AsnContext& ctx, const char** text, const char* permitted);
[[nodiscard]] AsnStatus pd_PrintableString(AsnContext& ctx, const char** text,
                                           const char* permitted);
[[nodiscard]] AsnStatus pd_VisibleString(AsnContext& ctx, const char** text, const char* permitted);
[[nodiscard]] AsnStatus pd_IA5String(AsnContext& ctx, const char** text, const char* permitted);
/// UNALIGNED, without a permitted alphabet: reads 7-bit indexes into nothing, so that every
/// character of a non-empty string fails with -23.
[[nodiscard]] AsnStatus pd_GeneralString(AsnContext& ctx, const char** text, const char* permitted);
[[nodiscard]] AsnStatus pd_86CharString(AsnContext& ctx, const char** text, const char* permitted);

/// The core of the six above; what generated code calls where it knows the set.
[[nodiscard]] AsnStatus pd_ConstrainedString(AsnContext& ctx, const char** text,
                                             const AsnCharSet& set);

/// BMPString with a permitted alphabet, or null. Same statuses as the 8-bit strings.
struct Asn16BitAlphabet {
    uint32_t count;
    const uint16_t* codes;
};
[[nodiscard]] AsnStatus pd_BMPString(AsnContext& ctx, AsnBMPString& value,
                                     const Asn16BitAlphabet* permitted);
[[nodiscard]] AsnStatus pd_16BitConstrainedString(AsnContext& ctx, AsnBMPString& value,
                                                  const Asn16BitCharSet& set);
