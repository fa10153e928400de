// Reads hex dumps, whose lines have an offset, octets and characters. hex_text.h has the rules.
#pragma once

#include "hex_reader.h"

class HexDumpReader : HexReader {
  public:
    using HexReader::HexReader;

    /// Whether the first line of a text begins with an offset. Throws BadHex if the line looks like
    /// the middle of a dump.
    static bool isDump(std::string_view text);

    /// Reads the whole text. Throws BadHex.
    std::vector<PastedMessage> read();

  private:
    struct Offset {
        size_t value = 0;
        size_t end = 0;  // the position after the offset and its colon
        enum { kNone, kBeforePairs, kWithColon } kind = kNone;
    };

    size_t lineEnd() const;
    Offset offsetAt(size_t at) const;
    void readLine(const Offset& offset);
    bool areCharacters(size_t at, size_t end, size_t octets) const;
    static bool agrees(std::string_view text, std::span<const unsigned char> octets);

    size_t next_ = 0;  // the offset that the next line must have
};
