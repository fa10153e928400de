// The base of the readers of hex text: a position in the text, its digits, and the messages found.
#pragma once

#include "hex_text.h"

class HexReader {
  public:
    explicit HexReader(std::string_view text) : text_(text) {}

    static bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

    /// The value of a hex digit, or -1.
    static int hexDigit(char c);

  protected:
    /// Throws BadHex, with the line and column of a position.
    [[noreturn]] void fail(size_t at, const std::string& what) const;

    /// The number of hex digits from a position on. The 0 of "0x" does not count.
    size_t digitsAt(size_t at) const;

    /// Skips "0x" or "\x", whose first character is given. Returns whether it was there.
    bool skipPrefix(char first);

    /// Reads hex digits as octets: pairs, or a single digit if `oneAlone`. Throws BadHex if there
    /// are none, or an odd number.
    void readDigits(bool oneAlone);

    /// Reads two digits. The caller has tested that they are there.
    void readPair();

    /// Appends an octet to the message that is open, or begins one.
    void add(int octet);
    /// The next octet begins a message.
    void endMessage();

    std::string_view text_;
    size_t at_ = 0;  // the position in text_
    std::vector<PastedMessage> messages_;

  private:
    bool isOpen_ = false;  // the last message may get more octets
    size_t counted_ = 0;   // a position in text_
    size_t line_ = 1;      // the number of the line at counted_
};
