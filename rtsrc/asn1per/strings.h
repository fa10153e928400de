// Bit, octet and character strings (X.691, 07/2002, clauses 15, 16 and 27).
//
// Each reads its length with pd_Length, under the size constraint that was registered just before
// with pd_SetSizeConstraint. Every failure is logged, once by each pd_ function that it passes; the
// record may then hold a partial count. Memory "in the element heap" lives until asnFreeContext and
// is not freed otherwise.
#pragma once

#include <algorithm>
#include <cstring>

#include "charset.h"

/// BIT STRING and OCTET STRING of any size; `data` is in the element heap, null if the string is
/// empty. The first bit is the high-order bit of the first octet, unused low bits of the last octet
/// are 0.
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

/// A 16-bit character set: a table of permitted codes, or, with a null table, the codes from
/// `lowest` to `highest`.
struct Asn16BitCharSet {
    uint32_t count;  // codes in `table`
    const uint16_t* table;
    uint16_t lowest;
    uint16_t highest;
    uint32_t unalignedBits;  // bits per character
    uint32_t alignedBits;
};

/// A permitted alphabet of BMPString.
struct Asn16BitAlphabet {
    uint32_t count;
    const uint16_t* codes;
};

/// Read a string into a buffer of `size` octets and count its items, over all fragments. A null
/// buffer skips the contents. Return 0, -2, -17 if the string is longer than the buffer, or -23 if
/// no record of the size constraint covers the length of a short string.
[[nodiscard]] AsnStatus pd_BitString(AsnContext& ctx, uint32_t* numbits, uint8_t* buffer,
                                     uint32_t size);
[[nodiscard]] AsnStatus pd_OctetString(AsnContext& ctx, uint32_t* numocts, uint8_t* buffer,
                                       uint32_t size);

/// Read a string into the element heap. Return 0, -2, -23 or -12.
[[nodiscard]] AsnStatus pd_DynBitString(AsnContext& ctx, AsnDynBitStr& value);
[[nodiscard]] AsnStatus pd_DynOctetString(AsnContext& ctx, AsnDynOctStr& value);

/// The 8-bit character strings. `text` receives NUL-terminated text in the element heap;
/// `permitted` is the permitted alphabet as text, or null. Return 0, -2, -12, -23 for a character
/// outside the alphabet, or 2 for a fragmented string, which is not supported. Generated decoders
/// pass an AsnCharSet instead of a text.
[[nodiscard]] AsnStatus pd_NumericString(AsnContext& ctx, const char** text, const char* permitted);
[[nodiscard]] AsnStatus pd_PrintableString(AsnContext& ctx, const char** text,
                                           const char* permitted);
[[nodiscard]] AsnStatus pd_VisibleString(AsnContext& ctx, const char** text, const char* permitted);
[[nodiscard]] AsnStatus pd_IA5String(AsnContext& ctx, const char** text, const char* permitted);
/// In the UNALIGNED variant, without a permitted alphabet, every character of a non-empty string
/// fails with -23: a 7-bit index is read, but no character is permitted.
[[nodiscard]] AsnStatus pd_GeneralString(AsnContext& ctx, const char** text, const char* permitted);
[[nodiscard]] AsnStatus pd_86CharString(AsnContext& ctx, const char** text, const char* permitted);

/// The core of the six above.
[[nodiscard]] AsnStatus pd_ConstrainedString(AsnContext& ctx, const char** text,
                                             const AsnCharSet& set);

/// BMPString with a permitted alphabet, or null. Same statuses as the 8-bit strings.
[[nodiscard]] AsnStatus pd_BMPString(AsnContext& ctx, AsnBMPString& value,
                                     const Asn16BitAlphabet* permitted);
[[nodiscard]] AsnStatus pd_16BitConstrainedString(AsnContext& ctx, AsnBMPString& value,
                                                  const Asn16BitCharSet& set);

// --- the rules: bit and octet strings ---

/// What differs between BIT STRING and OCTET STRING.
struct AsnStringKind {
    const char* label;  // of the traced field
    uint32_t itemBits;
    uint32_t alignAbove;  // longer strings are aligned under any constraint
};
inline constexpr AsnStringKind kAsnBits{"BitString", 1, 16};
inline constexpr AsnStringKind kAsnOctets{"OctetString", 8, 2};

/// Moves to where contents of this length start in the ALIGNED variant (X.691 15.9 to 15.11, 16.6
/// to 16.8): to an octet boundary, except for short strings of a fixed size of the root. Returns 0,
/// -2, or -23 if no record covers the length; not logged.
template <bool Tracing, AsnRules rules>
[[nodiscard]] inline AsnStatus asnAlignContents(AsnReader<Tracing, rules> in,
                                                const AsnSizeConstraint* size, uint32_t length,
                                                uint32_t alignAbove) {
    if (size != nullptr && length <= alignAbove) {
        while (size != nullptr && (length < size->lower || length > size->upper)) size = size->next;
        if (size == nullptr) return kAsnConstraint;
        if (size->extended == 0 && size->lower == size->upper) return kAsnOk;
    }
    return pd_byteAlign(in);
}

/// Reads the contents of one fragment, of `length` items; a failure is logged for pd_BitString or
/// pd_OctetString.
///   size  the constraint of the string: the alignment depends on it
template <const AsnStringKind& kind, bool Tracing, AsnRules rules>
[[nodiscard]] ASN_INLINE AsnStatus asnFragment(AsnReader<Tracing, rules> in,
                                               const AsnSizeConstraint* size, uint32_t length,
                                               uint8_t* buffer, uint32_t capacity) {
    if (length != 0) {
        in.newField(kind.label);
        AsnStatus status = kAsnOk;
        if (in.ctx.aligned != 0) status = asnAlignContents(in, size, length, kind.alignAbove);
        if (status == kAsnOk)
            status = pd_octets(in, buffer, capacity, uint64_t{length} * kind.itemBits);
        if (status != kAsnOk) return in.log(AsnSource::strings, status);
    }
    in.setFieldCount();
    return kAsnOk;
}

/// The fragments after a first one of `count` items.
template <const AsnStringKind& kind, bool Tracing, AsnRules rules>
[[nodiscard, gnu::noinline]] AsnStatus asnMoreFragments(AsnReader<Tracing, rules> in,
                                                        const AsnSizeConstraint* size,
                                                        uint32_t* count, uint8_t* buffer,
                                                        uint32_t capacity) {
    AsnStatus form = kAsnFragment;
    while (form == kAsnFragment) {
        const uint32_t used = *count / (8 / kind.itemBits);  // octets of the buffer
        uint32_t length = 0;
        form = asnLength(in, nullptr, &length);
        if (form < 0) return in.log(AsnSource::strings, form);
        *count += length;
        const AsnStatus status = asnFragment<kind>(
            in, size, length, buffer != nullptr ? buffer + used : nullptr, capacity - used);
        if (status != kAsnOk) return status;
    }
    return kAsnOk;
}

/// A string, one fragment after the other; failures are logged for pd_BitString or pd_OctetString.
///   size  the constraint of the string, no longer pending
template <const AsnStringKind& kind, bool Tracing, AsnRules rules>
[[nodiscard]] ASN_INLINE AsnStatus asnString(AsnReader<Tracing, rules> in,
                                             const AsnSizeConstraint* size, uint32_t* count,
                                             uint8_t* buffer, uint32_t capacity) {
    uint32_t length = 0;
    *count = 0;
    AsnStatus form = asnLength(in, size, &length);
    if (form < 0) return in.log(AsnSource::strings, form);
    *count = length;
    const AsnStatus status = asnFragment<kind>(in, size, length, buffer, capacity);
    if (status != kAsnOk || form != kAsnFragment) return status;
    return asnMoreFragments<kind>(in, size, count, buffer, capacity);
}

/// pd_BitString and pd_OctetString: a string under the pending constraint.
template <const AsnStringKind& kind, bool Tracing, AsnRules rules>
[[nodiscard, gnu::noinline, gnu::flatten]] AsnStatus asnPendingString(AsnReader<Tracing, rules> in,
                                                                      uint32_t* count,
                                                                      uint8_t* buffer,
                                                                      uint32_t capacity) {
    return asnString<kind>(in, asnTakeSize(in.ctx), count, buffer, capacity);
}

/// The same after asnLookAhead.
template <const AsnStringKind& kind, bool Tracing, AsnRules rules>
[[nodiscard]] inline AsnStatus asnStringAfter(AsnReader<Tracing, rules> in,
                                              const AsnLookAhead& found, uint32_t* count,
                                              uint8_t* buffer, uint32_t total, uint32_t capacity) {
    if (Tracing || found.fragmented) return asnPendingString<kind>(in, count, buffer, capacity);
    *count = total;
    return asnFragment<kind>(in, found.size, total, buffer, capacity);
}

template <bool Tracing, AsnRules rules>
[[nodiscard]] inline AsnStatus pd_BitString(AsnReader<Tracing, rules> in, uint32_t* numbits,
                                            uint8_t* buffer, uint32_t size) {
    return asnPendingString<kAsnBits>(in, numbits, buffer, size);
}

template <bool Tracing, AsnRules rules>
[[nodiscard]] inline AsnStatus pd_OctetString(AsnReader<Tracing, rules> in, uint32_t* numocts,
                                              uint8_t* buffer, uint32_t size) {
    return asnPendingString<kAsnOctets>(in, numocts, buffer, size);
}

/// The same under a constraint of its own, which the compiler knows as a rule.
template <uint32_t capacity, bool Tracing, AsnRules rules>
[[nodiscard]] ASN_INLINE AsnStatus asnSizedOctets(AsnReader<Tracing, rules> in,
                                                  const AsnSizeConstraint& size, uint32_t* numocts,
                                                  uint8_t (&data)[capacity]) {
    return asnString<kAsnOctets>(in, &size, numocts, data, capacity);
}

/// pd_DynBitString and pd_DynOctetString. If data is missing, nothing is allocated: the contents
/// are then skipped up to the failure.
template <const AsnStringKind& kind, bool Tracing, AsnRules rules>
[[nodiscard]] AsnStatus asnDynString(AsnReader<Tracing, rules> in, uint32_t* count,
                                     uint8_t** data) {
    AsnLookAhead found;
    const int32_t total = asnLookAhead(in, kind.itemBits, found);
    if (total < 0) return in.log(AsnSource::strings, total);
    const int64_t nbits = int64_t{total} * kind.itemBits;
    const auto size = static_cast<uint32_t>((nbits + 7) / 8);
    uint8_t* buffer = nullptr;
    if (size != 0 && nbits <= asnBitsLeft(found.contents)) {
        buffer = static_cast<uint8_t*>(asnMemAllocRaw(in.ctx.memHeap, size));
        if (buffer == nullptr) return in.log(AsnSource::strings, kAsnNoMemory);
    }
    const AsnStatus status =
        asnStringAfter<kind>(in, found, count, buffer, static_cast<uint32_t>(total), size);
    if (status != kAsnOk) return in.log(AsnSource::strings, status);
    *data = buffer;
    return kAsnOk;
}

template <bool Tracing, AsnRules rules>
[[nodiscard]] inline AsnStatus pd_DynBitString(AsnReader<Tracing, rules> in, AsnDynBitStr& value) {
    return asnDynString<kAsnBits>(in, &value.numbits, &value.data);
}

template <bool Tracing, AsnRules rules>
[[nodiscard, gnu::noinline, gnu::flatten]] AsnStatus pd_DynOctetString(AsnReader<Tracing, rules> in,
                                                                       AsnDynOctStr& value) {
    return asnDynString<kAsnOctets>(in, &value.numocts, &value.data);
}

// --- the rules: character strings ---

/// The length and the alignment of a character string, and memory for its characters, of `size`
/// octets each and one more. Memory is allocated only for characters that are there: the first one
/// that is missing fails.
template <bool Tracing, AsnRules rules>
[[nodiscard]] AsnStatus asnBeginCharacters(AsnReader<Tracing, rules> in, const char* label,
                                           uint32_t bits, size_t size, uint32_t* count,
                                           void** memory) {
    AsnStatus status = pd_Length(in, count);
    if (status != kAsnOk) return status;
    in.newField(label);
    if (in.ctx.aligned != 0) status = pd_byteAlign(in);
    if (status != kAsnOk) return status;
    const int64_t there = std::max<int64_t>(asnBitsLeft(in.ctx), 0) / bits;
    *memory = asnMemAllocRaw(in.ctx.memHeap,
                             (static_cast<size_t>(std::min<int64_t>(*count, there)) + 1) * size);
    return *memory != nullptr ? kAsnOk : kAsnNoMemory;
}

/// One character of `bits` bits, as an index into the permitted ones or as its code. Returns 0, -2,
/// or -23, of which only -2 has been logged.
template <bool Tracing, AsnRules rules>
[[nodiscard]] ASN_INLINE AsnStatus asnCharacter(AsnReader<Tracing, rules> in, const AsnCharSet& set,
                                                uint32_t bits, bool indexed, uint8_t* character) {
    uint32_t code = 0;
    const AsnStatus status = pd_bits(in, &code, bits);
    if (status != kAsnOk) return status;
    if (indexed) {
        if (code >= set.count) return kAsnConstraint;
        code = set.permitted[code];
    } else if (set.restricted &&
               (set.count == 0 ||
                std::memchr(set.permitted, static_cast<int>(code), set.count) == nullptr)) {
        return kAsnConstraint;
    }
    *character = static_cast<uint8_t>(code);
    return kAsnOk;
}

template <bool Tracing, AsnRules rules>
[[nodiscard]] AsnStatus pd_ConstrainedString(AsnReader<Tracing, rules> in, const char** text,
                                             const AsnCharSet& set) {
    const uint32_t bits = in.ctx.aligned != 0 ? set.alignedBits : set.unalignedBits;
    const bool indexed = bits < set.charSetBits || set.charSetBits < 5;
    uint32_t count = 0;
    void* memory = nullptr;
    AsnStatus status = asnBeginCharacters(in, "CharString", bits, 1, &count, &memory);
    if (status != kAsnOk) return in.log(AsnSource::strings, status);
    auto* const characters = static_cast<uint8_t*>(memory);
    for (uint32_t i = 0; i < count; ++i) {
        status = asnCharacter(in, set, bits, indexed, &characters[i]);
        if (status != kAsnOk) return in.log(AsnSource::strings, status);
    }
    characters[count] = 0;
    *text = reinterpret_cast<const char*>(characters);
    in.setFieldCount();
    return kAsnOk;
}

/// A typed entry: pd_ConstrainedString and its own place in the trail.
template <bool Tracing, AsnRules rules>
[[nodiscard]] AsnStatus asnTypedString(AsnReader<Tracing, rules> in, const char** text,
                                       const AsnCharSet& set) {
    const AsnStatus status = pd_ConstrainedString(in, text, set);
    return status == kAsnOk ? status : in.log(AsnSource::strings, status);
}

template <bool Tracing, AsnRules rules>
[[nodiscard]] inline AsnStatus pd_NumericString(AsnReader<Tracing, rules> in, const char** text,
                                                const AsnCharSet& set = kAsnNumericStringSet) {
    return asnTypedString(in, text, set);
}

template <bool Tracing, AsnRules rules>
[[nodiscard]] inline AsnStatus pd_PrintableString(AsnReader<Tracing, rules> in, const char** text,
                                                  const AsnCharSet& set = kAsnPrintableStringSet) {
    return asnTypedString(in, text, set);
}

template <bool Tracing, AsnRules rules>
[[nodiscard]] inline AsnStatus pd_VisibleString(AsnReader<Tracing, rules> in, const char** text,
                                                const AsnCharSet& set = kAsnVisibleStringSet) {
    return asnTypedString(in, text, set);
}

template <bool Tracing, AsnRules rules>
[[nodiscard]] inline AsnStatus pd_IA5String(AsnReader<Tracing, rules> in, const char** text,
                                            const AsnCharSet& set = kAsnIA5StringSet) {
    return asnTypedString(in, text, set);
}

template <bool Tracing, AsnRules rules>
[[nodiscard]] inline AsnStatus pd_GeneralString(AsnReader<Tracing, rules> in, const char** text,
                                                const AsnCharSet& set = kAsnGeneralStringSet) {
    return asnTypedString(in, text, set);
}

template <bool Tracing, AsnRules rules>
[[nodiscard]] AsnStatus pd_16BitConstrainedString(AsnReader<Tracing, rules> in, AsnBMPString& value,
                                                  const Asn16BitCharSet& set) {
    const uint32_t bits = in.ctx.aligned != 0 ? set.alignedBits : set.unalignedBits;
    uint32_t count = 0;
    void* memory = nullptr;
    AsnStatus status = asnBeginCharacters(in, "BMPString", bits, sizeof(uint16_t), &count, &memory);
    if (status != kAsnOk) return in.log(AsnSource::strings, status);
    auto* const characters = static_cast<uint16_t*>(memory);
    for (uint32_t i = 0; i < count; ++i) {
        uint32_t code = 0;
        status = pd_bits(in, &code, bits);
        if (status != kAsnOk) return in.log(AsnSource::strings, status);
        if (set.table != nullptr && code >= set.count)
            return in.log(AsnSource::strings, kAsnConstraint);
        characters[i] =
            static_cast<uint16_t>(set.table != nullptr ? set.table[code] : code + set.lowest);
    }
    value = {count, characters};
    in.setFieldCount();
    return kAsnOk;
}

template <bool Tracing, AsnRules rules>
[[nodiscard]] AsnStatus pd_BMPString(AsnReader<Tracing, rules> in, AsnBMPString& value,
                                     const Asn16BitAlphabet* permitted) {
    Asn16BitCharSet set{0, nullptr, 0, 0xFFFF, 16, 16};
    if (permitted != nullptr) {
        static constexpr uint16_t kNoCodes[1] = {};
        const uint16_t* const table = permitted->count != 0 ? permitted->codes : kNoCodes;
        const uint32_t bits = asnCharacterBits(permitted->count);
        set = {permitted->count, table, 0, 0xFFFF, bits, std::bit_ceil(bits)};
    }
    const AsnStatus status = pd_16BitConstrainedString(in, value, set);
    return status == kAsnOk ? status : in.log(AsnSource::strings, status);
}

static_assert(__LINE__ < 1000, "the trail lines of two sources would overlap");
