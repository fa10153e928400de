// The basis of the reference reader: the cursor, reports of failures, bits, whole numbers, lengths.
#pragma once

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
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

/// The smallest n from 0 to 32 for which the number is below 2^n.
inline uint32_t bitCount(uint64_t number) {
    uint32_t n = 0;
    while (n < 32 && number >= uint64_t{1} << n) ++n;
    return n;
}

struct NumberReader {
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
    bool unsettled = false;  // the reference reader does not know the value of this step

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
        NumberReader fork{data, byteIndex, bitOffset, aligned, false, diagnostics, sizeConstraint};
        return logged([&] {
            int64_t total = 0;
            Length length{0, kFragment};
            while (length.form == kFragment) {
                length = fork.pd_Length();
                total += length.count;
                if (length.form == kFragment)
                    fork.pd_moveBitCursor(int64_t{length.count} * itemBits);
            }
            // If the result cannot hold the total, the data cannot hold it either.
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
};

}  // namespace reference
