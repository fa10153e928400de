// What the readers of hex text share: a position in the text, digits, and the messages found.
#pragma once

#include "hex_text.h"

class HexReader {
  public:
    explicit HexReader(std::string_view text) : text_(text) {}

    static bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

    /// The value of a hex digit, or -1.
    static int hexDigit(char c);

  protected:
    /// Throws BadHex with the line and column of that place.
    [[noreturn]] void fail(size_t at, const std::string& what) const;

    /// How many hex digits there are at a place; the 0 of "0x" is none.
    size_t digitsAt(size_t at) const;

    /// Skips "0x" or "\x", by its first character, and tells whether it was there.
    bool skipPrefix(char first);

    /// Takes hex digits, at least one, as octets: in pairs, or one alone if that is allowed.
    void readDigits(bool oneAlone);

    /// Takes two digits, which are there.
    void readPair();

    void add(int octet);
    void endMessage();

    std::string_view text_;
    size_t at_ = 0;
    std::vector<PastedMessage> messages_;

  private:
    bool isOpen_ = false;  // the last message may get more octets
    size_t counted_ = 0;   // up to here the line ends are counted,
    size_t line_ = 1;      // this is the line there
};
