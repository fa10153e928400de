// Reads messages from hex text, in the forms that people paste. This comment has all rules.
//
// Text is what consists of printable ASCII characters, blanks, tabs and line ends (a byte order
// mark may precede it); any other input is the octets of one message. The form of a text is found
// in this order:
//
// 1. Hex dump, if the first line begins with an offset: 3 to 8 hex digits (0x may precede), then
//    either ':' and a blank, or blanks and octets of two digits each; in the second case the
//    offset must be 0. (xxd, hexdump -C, od -A x -t x1, tcpdump -XX, "as Hex Dump" of Wireshark.)
//    Each line: an offset, octets in groups of whole octets, perhaps the characters of these
//    octets. Two or more blanks may follow the eighth octet. Anywhere else the text after two
//    blanks must be the characters of all octets of the line; '.' matches any octet, and '|' '|' or
//    '>' '<' may surround the characters. An offset must be the number of octets before it. Offset
//    0 begins the next message; empty lines are skipped.
// 2. C arrays, if there is a '{' and no backslash before it: each pair of braces is a message. All
//    elements are octets, 0x and one or two digits, separated by commas. Comments and text outside
//    braces are skipped. (xxd -i, "as C Array" of Wireshark.)
// 3. Lines: each line is a message, unless the line before ends with a comma or a backslash: then
//    the message continues. With `joined` all lines are one message. Hex digits are read in pairs;
//    0x or \x may precede them, and 0x may also precede a single digit. Blanks, commas, colons and
//    dashes are separators. A part in quotes (b may precede) that contains a backslash is a string:
//    \xHH, \n, \r, \t, \\, \" and \' are one octet each, and so is any other character. A part in
//    quotes without a backslash contains hex digits.
//    ("as a Hex Stream" and "as Escaped String" of Wireshark.)
#pragma once

#include <cstddef>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

using Octets = std::vector<unsigned char>;

/// What is wrong with a text, with line and column, which count from 1.
struct BadHex : std::runtime_error {
    using runtime_error::runtime_error;
};

struct PastedMessage {
    Octets octets;
    size_t line;  // of its first octet, from 1
};

/// Whether an input is text, as defined above, and not the octets of a message.
bool isText(std::string_view input);

/// Reads the messages of a text. None of them is empty. Throws BadHex.
std::vector<PastedMessage> parseMessages(std::string_view text, bool joined);

/// Reads a text that is one message, on any number of lines; no octets if it has none. Throws
/// BadHex.
Octets parseHex(std::string_view text);

/// Octets as hex digits, lower case, with nothing between them.
std::string formatHex(std::span<const unsigned char> octets);
