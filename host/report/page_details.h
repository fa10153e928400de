// What the page shows of a selected message: its octets, its dump, and the bits of each field.
#pragma once

#include <memory>
#include <string>

#include "message.h"

class PageDetails {
  public:
    explicit PageDetails(const TamselModules& modules);

    /// Appends a JSON object with three members. "octets" are in hex. "dump" has three elements for
    /// each line: the number of characters that its path has in common with the one before, the
    /// rest of the path, the value. "fields" has four elements for each field: the first two are
    /// those of "PATH WHAT", then the first bit and the number of bits. A refused message has the
    /// fields up to its failure; the last one has 0 bits.
    void append(std::string& json, const CapturedMessage& message);

  private:
    void appendFields(std::string& json, const CapturedMessage& message);

    const TamselModules& modules_;
    std::unique_ptr<TamselDecoder> tracer_;
};
