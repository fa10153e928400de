// The alphabets of the known-multiplier 8-bit character strings (X.691, 07/2002, 27.5). Character
// sets are constants that are computed when the code is compiled.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>

#include "numbers.h"

/// The full alphabet of a character string type, in order.
struct AsnAlphabet {
    uint8_t codes[256];
    uint32_t size;
    uint32_t unalignedBits;  // bits per character without a permitted alphabet
    uint32_t alignedBits;
    bool indexed;  // without a permitted alphabet, characters are sent as indexes
};

/// A character set as one string uses it.
struct AsnCharSet {
    uint8_t permitted[256];  // the permitted characters, in the order of the full alphabet
    uint32_t count;          // the number of permitted characters
    bool restricted;         // no other character is accepted
    uint32_t charSetBits;    // bit count of the full alphabet's size
    uint32_t unalignedBits;  // bits per character, UNALIGNED
    uint32_t alignedBits;    // bits per character, ALIGNED
};

constexpr AsnAlphabet asnAlphabet(const char* codes, uint32_t unalignedBits, uint32_t alignedBits,
                                  bool indexed) {
    AsnAlphabet alphabet{{}, 0, unalignedBits, alignedBits, indexed};
    while (*codes != 0) alphabet.codes[alphabet.size++] = static_cast<uint8_t>(*codes++);
    return alphabet;
}

/// All codes up to `last` but those from `gapFrom` to `gapTo`.
constexpr AsnAlphabet asnCodeAlphabet(uint32_t last, uint32_t gapFrom, uint32_t gapTo) {
    AsnAlphabet alphabet{{}, 0, 7, 8, false};
    for (uint32_t code = 0; code <= last; ++code)
        if (code < gapFrom || code > gapTo)
            alphabet.codes[alphabet.size++] = static_cast<uint8_t>(code);
    return alphabet;
}

inline constexpr AsnAlphabet kAsnNumericString = asnAlphabet(" 0123456789", 4, 4, true);
inline constexpr AsnAlphabet kAsnPrintableString = asnAlphabet(
    " '()+,-./0123456789:=?ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz", 7, 8, false);
inline constexpr AsnAlphabet kAsnVisibleString = asnCodeAlphabet(0x7E, 0, 0x1F);
/// Ends at 0x5F. Without a permitted alphabet codes up to 0x7F are accepted all the same.
inline constexpr AsnAlphabet kAsnIA5String = asnCodeAlphabet(0x5F, 0x100, 0x100);
/// All 128 characters (T.50): for sets that are decoded as published.
inline constexpr AsnAlphabet kAsnIA5StringOf128 = asnCodeAlphabet(0x7F, 0x100, 0x100);
inline constexpr AsnAlphabet kAsnGeneralString = asnCodeAlphabet(0xFF, 0x88, 0x8F);
inline constexpr AsnAlphabet kAsn86CharString = asnAlphabet(
    " !\"%&'()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[]_abcdefghijklmnopqrstuvwxyz", 7, 8,
    false);
static_assert(kAsnPrintableString.size == 74 && kAsnVisibleString.size == 95 &&
              kAsnIA5String.size == 96 && kAsnGeneralString.size == 248 &&
              kAsn86CharString.size == 86);

/// Bits per character of a permitted alphabet in the UNALIGNED variant: as many as the number of
/// characters itself takes, not the largest index, so 16 characters take 5. An empty one takes 8.
constexpr uint32_t asnCharacterBits(uint32_t count) {
    return count != 0 ? asnBitCount(count) : 8;
}

/// The set that a permitted alphabet, given as text or null, leaves of an alphabet. If they share
/// no character, every character is refused.
constexpr AsnCharSet asnCharSet(const AsnAlphabet& alphabet, const char* permitted) {
    AsnCharSet set{{},
                   0,
                   permitted != nullptr,
                   asnBitCount(alphabet.size),
                   alphabet.unalignedBits,
                   alphabet.alignedBits};
    bool keep[256] = {};
    for (const char* c = permitted; c != nullptr && *c != 0; ++c)
        keep[static_cast<uint8_t>(*c)] = true;
    for (uint32_t i = 0; i < alphabet.size; ++i)
        if (permitted != nullptr ? keep[alphabet.codes[i]] : alphabet.indexed)
            set.permitted[set.count++] = alphabet.codes[i];
    if (permitted != nullptr) {
        set.unalignedBits = asnCharacterBits(set.count);
        set.alignedBits = std::bit_ceil(set.unalignedBits);
    }
    return set;
}

/// The same as published (X.691 27.5.2 and 27.5.4): 2^n characters take n bits, and are sent as
/// codes if these bits hold all of them. One character would take none.
constexpr AsnCharSet asnPublishedCharSet(const AsnAlphabet& alphabet, const char* permitted) {
    AsnCharSet set = asnCharSet(alphabet, permitted);
    if (permitted == nullptr) {
        std::copy_n(alphabet.codes, alphabet.size, set.permitted);
        set.count = alphabet.size;
    }
    set.unalignedBits = asnBitCount(set.count - 1);
    set.alignedBits = std::bit_ceil(set.unalignedBits);
    uint32_t largest = 0;
    for (uint32_t i = 0; i < set.count; ++i)
        largest = std::max<uint32_t>(largest, set.permitted[i]);
    set.charSetBits = asnBitCount(largest);
    return set;
}

/// The sets of the string types without a permitted alphabet.
inline constexpr AsnCharSet kAsnNumericStringSet = asnCharSet(kAsnNumericString, nullptr);
inline constexpr AsnCharSet kAsnPrintableStringSet = asnCharSet(kAsnPrintableString, nullptr);
inline constexpr AsnCharSet kAsnVisibleStringSet = asnCharSet(kAsnVisibleString, nullptr);
inline constexpr AsnCharSet kAsnIA5StringSet = asnCharSet(kAsnIA5String, nullptr);
inline constexpr AsnCharSet kAsnGeneralStringSet = asnCharSet(kAsnGeneralString, nullptr);

inline constexpr AsnCharSet kAsnNumericStringPublishedSet =
    asnPublishedCharSet(kAsnNumericString, nullptr);
inline constexpr AsnCharSet kAsnPrintableStringPublishedSet =
    asnPublishedCharSet(kAsnPrintableString, nullptr);
inline constexpr AsnCharSet kAsnVisibleStringPublishedSet =
    asnPublishedCharSet(kAsnVisibleString, nullptr);
inline constexpr AsnCharSet kAsnIA5StringOf128PublishedSet =
    asnPublishedCharSet(kAsnIA5StringOf128, nullptr);
