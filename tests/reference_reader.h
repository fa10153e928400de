// The reference reader: every reading primitive a second time, for comparison with the run-time. It
// is written to be checked by eye, not to be fast: it reads one bit at a time and shares nothing
// with the run-time. The members have the names of the primitives that they repeat. They return
// what is read and throw what fails, so a failed read stores nothing.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace reference {

using Octets = std::vector<uint8_t>;

enum Status : int32_t {
    kOk = 0,
    kFragment = 2,
    kEndOfData = -2,
    kInvalidObjectId = -4,
    kInvalidLength = -5,
    kTooLong = -17,
    kConstraint = -23,
    kRange = -24,
};

/// One record of a size constraint; a chain is a list of them, empty for no constraint.
struct Size {
    bool extended;
    uint32_t lower;
    uint32_t upper;
};
using SizeChain = std::vector<Size>;

struct Field {
    std::string name;
    int64_t bitOffset;
    int64_t bitCount;
    bool operator==(const Field&) const = default;
};

struct Length {
    uint32_t count;
    Status form;  // kOk or kFragment
};

/// What differs between bit and octet strings. Contents above the limit are always aligned.
struct StringKind {
    const char* label;
    uint32_t itemBits;
    uint32_t limit;
};
constexpr StringKind kBits{"BitString", 1, 16};
constexpr StringKind kOctets{"OctetString", 8, 2};

/// The smallest n from 0 to 32 for which the number is below 2^n.
inline uint32_t bitCount(uint64_t number) {
    uint32_t n = 0;
    while (n < 32 && number >= uint64_t{1} << n) ++n;
    return n;
}

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

struct Reader {
    const Octets* data = nullptr;
    uint32_t byteIndex = 0;
    int32_t bitOffset = 8;  // bits of the current octet not yet read: 8 .. 0
    bool aligned = false;
    bool traced = false;
    std::string* diagnostics = nullptr;  // null: the diagnostic switch is off
    SizeChain sizeConstraint = {};
    int32_t firstError = 0;
    std::vector<std::string> trail = {};  // the functions that logged a failure, at most 8
    std::vector<Field> fields = {};
    std::vector<std::string> nameStack = {};
    bool unsettled = false;  // the step led to a value that the reference reader does not know

    // --- failures, diagnostics, traced fields ---

    void log(Status status, const char* function) {
        if (firstError == 0) firstError = status;
        if (trail.size() < 8) trail.emplace_back(function);
    }

    [[noreturn]] void fail(Status status, const char* function = __builtin_FUNCTION()) {
        log(status, function);
        throw status;
    }

    /// Logs what fails in the body once more, under the name of the caller.
    template <class Body>
    auto logged(Body body, const char* function = __builtin_FUNCTION()) {
        try {
            return body();
        } catch (const Status status) {
            log(status, function);
            throw;
        }
    }

    [[gnu::format(printf, 2, 3)]] void diag(const char* format, ...) const {
        if (diagnostics == nullptr) return;
        char line[200];
        va_list values;
        va_start(values, format);
        std::vsnprintf(line, sizeof line, format, values);
        va_end(values);
        *diagnostics += line;
    }

    void newField(const char* label) {
        if (!traced) return;
        std::string name;
        for (const std::string& entry : nameStack) name += "." + entry;
        fields.push_back({name + " " + label, position(), 0});
        diag("pu_newField: name '%s', bitOffset %d, pField 0x\n", fields.back().name.c_str(),
             static_cast<int>(position()));
    }

    void setFieldOffset() {
        if (!traced || fields.empty()) return;
        fields.back().bitOffset = position();
        diag("field '%s' bit offset set to %d\n", fields.back().name.c_str(),
             static_cast<int>(fields.back().bitOffset));
    }

    void closeField() {
        if (!traced || fields.empty()) return;
        fields.back().bitCount = position() - fields.back().bitOffset;
        diag("field '%s' bit count set to %d\n", fields.back().name.c_str(),
             static_cast<int>(fields.back().bitCount));
    }

    // --- bits ---

    int64_t position() const { return int64_t{byteIndex} * 8 + 8 - bitOffset; }
    int64_t bitsLeft() const { return static_cast<int64_t>(data->size()) * 8 - position(); }
    uint32_t bitAt(int64_t at) const {
        return (*data)[static_cast<size_t>(at / 8)] >> (7 - at % 8) & 1U;
    }

    void pd_SetBitOffset(int64_t to) {
        byteIndex = static_cast<uint32_t>(to / 8);
        bitOffset = static_cast<int32_t>(8 - to % 8);
    }

    void pd_IncrBitIdx() {
        const uint32_t index = bitOffset > 0 ? byteIndex : byteIndex + 1;
        if (index >= data->size()) throw kEndOfData;
        byteIndex = index;
        bitOffset = bitOffset > 0 ? bitOffset - 1 : 7;
        diag("pd_IncrBitIdx: bitOffset = %d, byteIndex = %d\n", bitOffset, static_cast<int>(index));
    }

    uint8_t pd_bit() {
        pd_IncrBitIdx();
        const uint8_t value = (*data)[byteIndex] >> bitOffset & 1;
        diag("pd_bit: value = %d\n", value);
        return value;
    }

    uint32_t pd_bits(uint64_t nbits) {
        const auto wanted = static_cast<uint32_t>(nbits);
        diag("pd_bits: nbits = %d, nbytes = %d\n", static_cast<int>(wanted),
             static_cast<int>(((wanted - 1) >> 3) + 1));
        if (nbits == 0) return 0;
        const auto end = position() + static_cast<int64_t>(nbits);
        if (bitsLeft() < static_cast<int64_t>(nbits)) fail(kEndOfData);
        if (nbits >= static_cast<uint64_t>(bitOffset))
            diag("pd_bits: mask = %x, data[index] = %x\n", (1U << bitOffset) - 1,
                 (*data)[byteIndex]);
        uint32_t value = 0;
        for (int64_t at = position(); at < end; ++at) value = value << 1 | bitAt(at);
        pd_SetBitOffset(end);
        return value;
    }

    Octets pd_octets(uint32_t capacity, uint64_t nbits) {
        const uint64_t nbytes = (nbits + 7) / 8;
        const auto end = position() + static_cast<int64_t>(nbits);
        if (bitsLeft() < static_cast<int64_t>(nbits)) fail(kEndOfData);
        if (nbytes > capacity) fail(kTooLong);
        Octets octets(static_cast<size_t>(nbytes));
        for (size_t i = 0; i < nbits; ++i)
            if (bitAt(position() + static_cast<int64_t>(i)) != 0)
                octets[i / 8] = static_cast<uint8_t>(octets[i / 8] | 0x80 >> i % 8);
        if (bitOffset == 8)
            pd_moveBitCursor(static_cast<int64_t>(nbits));
        else if (nbits % 8 == 0)
            byteIndex += static_cast<uint32_t>(nbytes);  // bitOffset stays, also if it is 0
        else
            pd_SetBitOffset(end);
        return octets;
    }

    void pd_byteAlign() {
        if (bitOffset != 8) {
            ++byteIndex;
            bitOffset = 8;
            setFieldOffset();
        }
        if (byteIndex >= data->size()) throw kEndOfData;
    }
    void alignIfAligned() {
        if (aligned) pd_byteAlign();
    }

    void pd_moveBitCursor(int64_t nbits) {
        const auto tell = [&](const char* when) {
            diag("context %s move: bitOffset = %d, byteIndex = %d\n", when, bitOffset,
                 static_cast<int>(byteIndex));
        };
        diag("pd_moveBitCursor: bitOffset = %d\n", static_cast<int>(nbits));
        tell("before");
        if (position() + nbits < 0) throw kEndOfData;
        pd_SetBitOffset(position() + nbits);
        tell("after");
        if (byteIndex > data->size()) throw kEndOfData;
    }

    // --- whole numbers and lengths ---

    uint32_t pd_ConsWholeNumber(uint32_t rangeSize) {
        if (!aligned || rangeSize < 256) return pd_bits(bitCount(rangeSize - 1));
        const uint32_t octets = rangeSize == 256 ? 1 : rangeSize <= 65536 ? 2 : pd_bits(2) + 1;
        logged([&] { pd_byteAlign(); });
        return pd_bits(octets * 8);
    }

    int32_t pd_ConsInteger(int32_t lower, int32_t upper) {
        newField("ConsInteger");
        if (lower > upper) throw kRange;
        return logged([&] {
            auto word = static_cast<uint32_t>(lower);
            if (lower != upper) word += pd_ConsWholeNumber(static_cast<uint32_t>(upper) - word + 1);
            closeField();
            diag("pd_ConsInteger: decoded value is %d\n", static_cast<int>(word));
            return static_cast<int32_t>(word);
        });
    }

    uint32_t pd_ConsUnsigned(uint32_t lower, uint32_t upper) {
        newField("ConsUnsigned");
        return logged([&] {
            uint32_t rangeSize = upper - lower + 1;
            if (lower == 0 && upper == UINT32_MAX) rangeSize = UINT32_MAX;
            const uint32_t value = lower == upper ? lower : lower + pd_ConsWholeNumber(rangeSize);
            closeField();
            diag("pd_ConsUnsigned: decoded value is %u\n", value);
            return value;
        });
    }

    int32_t pd_ExtInteger(int32_t before, int32_t lower, int32_t upper) {
        return logged([&] {
            return pd_bit() == 0 ? pd_ConsInteger(lower, upper) : pd_UnconsInteger(before);
        });
    }

    /// `before` is the value if there are no octets.
    int32_t pd_UnconsInteger(int32_t before) {
        return logged([&] {
            diag("pd_UnconsInteger: start\n");
            const uint32_t n = pd_Length().count;
            diag("pd_UnconsInteger: nbytes is %d\n", static_cast<int>(n));
            newField("UnconsInteger");
            alignIfAligned();
            auto word = static_cast<uint32_t>(before);
            for (uint32_t i = 0; i < n; ++i) {
                const uint32_t octet = pd_octets(1, 8)[0];
                if (i == 0) word = octet < 128 ? 0 : UINT32_MAX;
                word = word * 256 + octet;
            }
            closeField();
            diag("pd_UnconsInteger: decoded value is %d\n", static_cast<int>(word));
            return static_cast<int32_t>(word);
        });
    }

    uint32_t pd_UnconsUnsigned() {
        return logged([&] {
            const uint64_t n = pd_Length().count;
            newField("UnconsUnsigned");
            alignIfAligned();
            const uint32_t value = pd_bits(n * 8);
            closeField();
            diag("pd_UnconsUnsigned: decoded value is %u\n", value);
            return value;
        });
    }

    uint32_t pd_SmallNonNegWholeNumber() {
        return logged([&] {
            if (pd_bit() == 0) return pd_bits(6);
            const uint64_t n = pd_Length().count;
            pd_byteAlign();
            return pd_bits(n * 8);
        });
    }

    Length pd_Length() {
        return logged([&] {
            const SizeChain chain = std::exchange(sizeConstraint, {});
            bool extended = false;
            for (const Size& record : chain) extended = extended || record.extended;
            if (extended) {
                newField("length extension");
                extended = pd_bit() != 0;
                closeField();
            }
            const auto is = [&](const Size& record) { return record.extended == extended; };
            const auto found = std::find_if(chain.begin(), chain.end(), is);
            const Size size = found != chain.end() ? *found : Size{extended, 0, UINT32_MAX};
            newField("length");
            try {
                const Length length = lengthWithin(size);
                closeField();
                return length;
            } catch (const Status) {
                closeField();
                throw;
            }
        });
    }

    Length lengthWithin(const Size& size) {
        if (size.upper < 65536) {
            if (size.lower == size.upper) return {size.lower, kOk};
            return {size.lower + pd_ConsWholeNumber(size.upper - size.lower + 1), kOk};
        }
        alignIfAligned();
        if (pd_bit() == 0) return {pd_bits(7), kOk};
        if (pd_bit() == 0) return {pd_bits(14), kOk};
        return {pd_bits(6) * 16384, kFragment};
    }

    int32_t pd_GetComponentLength(uint32_t itemBits) {
        Reader fork{data, byteIndex, bitOffset, aligned, false, diagnostics, sizeConstraint};
        return logged([&] {
            int64_t total = 0;
            Length length{0, kFragment};
            while (length.form == kFragment) {
                length = fork.pd_Length();
                total += length.count;
                if (length.form == kFragment)
                    fork.pd_moveBitCursor(int64_t{length.count} * itemBits);
            }
            // A total that the result cannot hold is one that the data cannot hold.
            if (total > INT32_MAX) throw kEndOfData;
            return static_cast<int32_t>(total);
        });
    }

    void pd_SetSizeConstraint(const SizeChain& chain) {
        if (sizeConstraint.empty()) {
            sizeConstraint = chain;
            return;
        }
        const Size pending = sizeConstraint.front();
        for (const Size& record : chain)
            if (record.lower >= pending.lower || record.upper <= pending.upper) return;
        throw kConstraint;
    }

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
