// Random values of any type, as a term for Erlang's codec and as the dump that is expected.
#pragma once

#include <random>
#include <string>

#include "../../gen/model.h"
#include "asn1per/dump.h"

class ValueMaker {
  public:
    explicit ValueMaker(uint32_t seed) : random_(seed) {}

    /// Makes a value and adds its dump. The dump shows later additions as a program shows them that
    /// does not know them.
    std::string make(const Type& type, AsnDump& dump);

  private:
    std::string makeSequence(const Type& type, AsnDump& dump);
    std::string makeChoice(const Type& type, AsnDump& dump);
    std::string makeList(const Type& type, AsnDump& dump);
    std::string makeLeaf(const Type& type, AsnDump& dump);
    std::string makeText(const Type& type, AsnDump& dump);
    std::string makeOctets(const Type& type, AsnDump& dump, uint32_t most);
    std::string makeIdentifier(AsnDump& dump);
    int64_t makeInteger(const Type& type);

    uint32_t below(uint32_t count) { return static_cast<uint32_t>(random_() % count); }
    bool oneIn(uint32_t count) { return below(count) == 0; }
    uint32_t length(const Type& type, uint32_t usual);

    std::mt19937 random_;
    int depth_ = 0;
};
