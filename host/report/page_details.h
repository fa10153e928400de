// What the page shows of one selected message: its dump, and which bits are whose.
#pragma once

#include <memory>
#include <string>

#include "message.h"

class PageDetails {
  public:
    explicit PageDetails(const TamselModules& modules);

    /// Appends a JSON object of three members. "octets" are in hex. "dump" has three elements a
    /// line: how many characters the path shares with the one before, the rest of it, the value.
    /// "fields" has four elements a field: the same of path and what was read, the first bit, how
    /// many. A refused message has the fields up to its failure, of which the last has 0 bits.
    void append(std::string& json, const CapturedMessage& message);

  private:
    void appendFields(std::string& json, const CapturedMessage& message);

    const TamselModules& modules_;
    std::unique_ptr<TamselDecoder> tracer_;
};
