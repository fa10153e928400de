// The reference reader: a second implementation of every reading primitive, for comparison with the
// run-time. It is written to be checked by eye, not to be fast: it reads one bit at a time and
// shares no code with the run-time. The members have the names of the primitives that they repeat.
// They return what is read and throw what fails, so a failed read stores nothing.
#pragma once

#include <cmath>
#include <limits>

#include "reference_numbers.h"

namespace reference {

/// What differs between bit and octet strings. Contents above the limit are always aligned.
struct StringKind {
    const char* label;
    uint32_t itemBits;
    uint32_t limit;
};
constexpr StringKind kBits{"BitString", 1, 16};
constexpr StringKind kOctets{"OctetString", 8, 2};

inline uint32_t powerOfTwo(uint32_t atLeast) {
    uint32_t power = 1;
    while (power < atLeast) power *= 2;
    return power;
}

/// An 8-bit character set. Without a permitted alphabet only NumericString looks characters up.
struct CharSet {
    CharSet(const std::string& alphabet, const char* text)
        : charSetBits(bitCount(alphabet.size())) {
        if (text == nullptr) {
            if (charSetBits < 5) *this = CharSet(alphabet, alphabet.c_str());
            return;
        }
        restricted = true;
        const std::string given = text;
        for (const char c : alphabet)
            if (given.find(c) != std::string::npos) permitted += c;
        unalignedBits = permitted.empty() ? 8 : bitCount(permitted.size());
        alignedBits = powerOfTwo(unalignedBits);
    }
    uint32_t charSetBits;
    uint32_t unalignedBits = 7;
    uint32_t alignedBits = 8;
    std::string permitted;
    bool restricted = false;
};

/// A 16-bit character set: a table of permitted codes, or codes counted from `lowest`.
struct CharSet16 {
    const std::vector<uint16_t>* table;
    uint32_t lowest;
    uint32_t unalignedBits;
    uint32_t alignedBits;
};

inline std::string codes(int first, int last) {
    std::string text;
    for (int code = first; code <= last; ++code) text += static_cast<char>(code);
    return text;
}
inline const std::string kNumericString = " 0123456789";
inline const std::string kPrintableString =
    " '()+,-./0123456789:=?ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
inline const std::string kVisibleString = codes(0x20, 0x7E);
inline const std::string kIA5String = codes(0x00, 0x5F);
inline const std::string kGeneralString = codes(0x00, 0x87) + codes(0x90, 0xFF);
inline const std::string k86CharString =
    " !\"%&'()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[]_abcdefghijklmnopqrstuvwxyz";

struct Reader : NumberReader {
    // --- bit, octet and character strings ---

    /// Whether contents of this length are aligned in the ALIGNED variant.
    static bool isAligned(const SizeChain& chain, uint32_t length, const StringKind& kind) {
        if (chain.empty() || length > kind.limit) return true;
        for (const Size& record : chain)
            if (record.lower <= length && length <= record.upper)
                return record.extended || record.lower != record.upper;
        throw kConstraint;
    }

    /// pd_BitString and pd_OctetString; the count is set also if the contents fail.
    Octets fixedString(uint32_t& count, uint32_t size, const StringKind& kind) {
        return logged([&] {
            const SizeChain chain = sizeConstraint;
            Octets octets;
            count = 0;
            for (;;) {
                const Length length = pd_Length();
                if (length.count != 0) {
                    count += length.count;
                    newField(kind.label);
                    if (aligned && isAligned(chain, length.count, kind)) pd_byteAlign();
                    const auto left = size - static_cast<uint32_t>(octets.size());
                    const Octets read = pd_octets(left, uint64_t{length.count} * kind.itemBits);
                    octets.insert(octets.end(), read.begin(), read.end());
                }
                closeField();
                if (length.form != kFragment) return octets;
            }
        });
    }

    /// pd_DynBitString and pd_DynOctetString.
    Octets dynString(uint32_t& count, const StringKind& kind) {
        return logged([&] { return wholeString(count, kind); });
    }
    Octets wholeString(uint32_t& count, const StringKind& kind) {
        const int64_t total = pd_GetComponentLength(kind.itemBits);
        return fixedString(count, static_cast<uint32_t>((total * kind.itemBits + 7) / 8), kind);
    }

    uint32_t beginText(const char* label) {
        const Length length = pd_Length();
        if (length.form != kOk) throw length.form;
        newField(label);
        alignIfAligned();
        return length.count;
    }

    std::string pd_ConstrainedString(const CharSet& set) {
        return logged([&] {
            const uint32_t b = aligned ? set.alignedBits : set.unalignedBits;
            std::string text;
            for (uint32_t left = beginText("CharString"); left > 0; --left) {
                const uint32_t value = pd_bits(b);
                if (b < set.charSetBits || set.charSetBits < 5) {
                    if (value >= set.permitted.size()) throw kConstraint;
                    text += set.permitted[value];
                } else {
                    text += static_cast<char>(value);
                    if (set.restricted && set.permitted.find(text.back()) == std::string::npos)
                        throw kConstraint;
                }
            }
            closeField();
            return text;
        });
    }

    /// pd_NumericString and the other types, by their alphabet.
    std::string typedString(const std::string& alphabet, const char* permitted) {
        return logged([&] { return pd_ConstrainedString(CharSet(alphabet, permitted)); });
    }

    std::vector<uint16_t> pd_16BitConstrainedString(const CharSet16& set) {
        return logged([&] {
            const uint32_t b = aligned ? set.alignedBits : set.unalignedBits;
            std::vector<uint16_t> text;
            for (uint32_t left = beginText("BMPString"); left > 0; --left) {
                const uint32_t value = pd_bits(b);
                if (set.table != nullptr && value >= set.table->size()) throw kConstraint;
                text.push_back(set.table != nullptr ? (*set.table)[value]
                                                    : static_cast<uint16_t>(value + set.lowest));
            }
            closeField();
            return text;
        });
    }

    std::vector<uint16_t> pd_BMPString(const std::vector<uint16_t>* permitted) {
        CharSet16 set{permitted, 0, 16, 16};
        if (permitted != nullptr) {
            set.unalignedBits = permitted->empty() ? 8 : bitCount(permitted->size());
            set.alignedBits = powerOfTwo(set.unalignedBits);
        }
        return logged([&] { return pd_16BitConstrainedString(set); });
    }

    // --- object identifiers, reals and open types ---

    static std::vector<uint32_t> asnDecObjIdContents(const Octets& octets, uint32_t length) {
        std::vector<uint32_t> arcs;
        int64_t remaining = length;
        size_t next = 0;
        while (remaining > 0) {
            uint32_t arc = 0;
            uint8_t octet = 0x80;
            while ((octet & 0x80) != 0) {
                if (next >= octets.size()) throw kEndOfData;
                octet = octets[next++];
                arc = arc * 128 + (octet & 0x7F);
                --remaining;
            }
            if (arcs.empty()) {
                arcs.push_back(std::min(arc / 40, 2U));
                arc -= 40 * arcs[0];
            }
            arcs.push_back(arc);
            if (arcs.size() > 128) throw kInvalidObjectId;
        }
        if (remaining != 0) throw kInvalidLength;
        return arcs;
    }

    std::vector<uint32_t> pd_ObjectId() {
        return logged([&] {
            const uint32_t length = pd_Length().count;
            newField("ObjectID");
            const Octets contents = pd_octets(300, uint64_t{length} * 8);
            closeField();
            return asnDecObjIdContents(contents, length);
        });
    }

    double pd_Real() {
        return logged([&] {
            const uint32_t length = pd_Length().count;
            newField("Real");
            if (uint64_t{byteIndex} + length > data->size()) throw kEndOfData;
            const double value =
                realContents({data->begin() + byteIndex, data->begin() + byteIndex + length});
            byteIndex += length;
            closeField();
            return value;
        });
    }

    /// Special values, and binary numbers that a double holds exactly. Others are unsettled.
    double realContents(const Octets& contents) {
        const double special[] = {std::numeric_limits<double>::infinity(),
                                  -std::numeric_limits<double>::infinity(),
                                  std::numeric_limits<double>::quiet_NaN(), -0.0};
        if (contents.empty()) return 0;
        const uint8_t first = contents[0];
        if (first >= 0x40 && first <= 0x43 && contents.size() == 1) return special[first & 3];
        const uint32_t base = first >> 4 & 3;
        const size_t mantissaAt = 2U + (first & 3U);
        unsettled = (first & 0x80) == 0 || base == 3 || mantissaAt > 3 ||
                    contents.size() <= mantissaAt || contents.size() > mantissaAt + 6;
        if (unsettled) return 0;
        int exponent = static_cast<int8_t>(contents[1]);
        if (mantissaAt == 3) exponent = exponent * 256 + contents[2];
        double mantissa = 0;
        for (size_t i = mantissaAt; i < contents.size(); ++i)
            mantissa = mantissa * 256 + contents[i];
        unsettled = mantissa == 0;
        if ((first & 0x40) != 0) mantissa = -mantissa;
        return std::ldexp(mantissa, exponent * (base == 0   ? 1
                                                : base == 1 ? 3
                                                            : 4) +
                                        (first >> 2 & 3));
    }

    Octets pd_OpenType(uint32_t& numocts) {
        return logged([&] { return wholeString(numocts, kOctets); });
    }

    void pd_OpenTypeExt(uint32_t& start, uint32_t& numocts) {
        logged([&] {
            const uint32_t from = byteIndex;
            newField("ext opt bits len");
            const uint64_t count = uint64_t{pd_SmallNonNegWholeNumber()} + 1;
            closeField();
            newField("ext opt bits");
            uint64_t ones = 0;
            for (uint64_t i = 0; i < count; ++i) ones += pd_bit();
            closeField();
            newField("ext elements");
            uint32_t ignored = 0;
            for (uint64_t i = 0; i < ones; ++i) (void)pd_OpenType(ignored);
            closeField();
            start = from;
            numocts = byteIndex - from;
        });
    }

    void pd_ChoiceOpenTypeExt(uint32_t& start, uint32_t& numocts) {
        logged([&] {
            const uint32_t from = byteIndex;
            newField("choice index");
            (void)pd_SmallNonNegWholeNumber();
            closeField();
            newField("choice element");
            uint32_t ignored = 0;
            (void)pd_OpenType(ignored);
            closeField();
            start = from;
            numocts = byteIndex - from;
        });
    }
};

}  // namespace reference
