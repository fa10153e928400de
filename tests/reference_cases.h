// Random cases for the comparison with the reference reader: octets, and arguments of primitives.
#pragma once

#include <cstdint>
#include <vector>

#include "asn1per/asn1per.h"
#include "reference_reader.h"

/// The choices that make up a case: from a seed, or from the octets of a fuzzer (then 0s).
class Choices {
  public:
    explicit Choices(uint64_t seed) : state_(seed) {}
    Choices(const uint8_t* octets, size_t count) : octets_(octets), count_(count) {}

    uint64_t word();
    uint32_t below(uint32_t limit) { return static_cast<uint32_t>(word() % limit); }
    bool oneIn(uint32_t n) { return below(n) == 0; }
    template <class T, size_t n>
    T pick(const T (&list)[n]) {
        return list[below(n)];
    }

  private:
    uint64_t state_ = 0;
    const uint8_t* octets_ = nullptr;
    size_t count_ = 0;
};

/// What any primitive may be called with.
struct Arguments {
    uint32_t nbits = 0;
    uint32_t capacity = 0;
    uint32_t rangeSize = 0;
    int32_t lower = 0;
    int32_t upper = 0;
    int64_t distance = 0;
    uint32_t itemBits = 0;
    const char* permitted = nullptr;
    reference::SizeChain chain;
    std::vector<AsnSizeConstraint> records;  // the same chain
    bool restricted = false;                 // the 16-bit codes are a permitted alphabet
    std::vector<uint16_t> codes;
    Asn16BitAlphabet codes16{};
    const Asn16BitAlphabet* permitted16() const { return restricted ? &codes16 : nullptr; }
    uint32_t width = 0;
    uint16_t lowest = 0;
    uint32_t length = 0;
    size_t textSize = 0;  // of the text that the reference reader read
};

/// Octets with plausible encodings from bit `start` on: numbers, bitmaps, lengths and contents.
reference::Octets makeOctets(Choices& choices, bool aligned, uint32_t start);

/// Fills arguments for any primitive.
void makeArguments(Choices& c, Arguments& a);
