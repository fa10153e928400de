// Messages as hex text, in the forms that people paste. All rules are here.
//
// Text is what consists of printable ASCII characters, blanks, tabs and line ends (a byte order
// mark may precede it); any other input is the octets of one message. The form of a text is found
// in this order:
//
// 1. Hex dump, if the first line begins with an offset: 3 to 8 hex digits (0x may precede), then
//    either ':' and a blank, or blanks and octets of two digits each; in the second case the
//    offset must be 0. (xxd, hexdump -C, od -A x -t x1, tcpdump -XX, "as Hex Dump" of Wireshark.)
//    Each line: an offset, octets in groups of whole octets, perhaps the characters of these
//    octets. A gap of two or more blanks is allowed after the eighth octet. Otherwise what follows
//    it must be the characters of all octets of the line; '.' stands for any, and '|' or '>' '<'
//    may surround them. An offset must be the count of the octets before it. Offset 0 begins the
//    next message; empty lines are skipped.
// 2. C arrays, if there is a '{' and no backslash before it: each pair of braces is a message. All
//    elements are octets, 0x and one or two digits, with commas between. Comments are skipped, and
//    so is what is outside braces. (xxd -i, "as C Array" of Wireshark.)
// 3. Lines: each line is a message, unless the line before ends with a comma or a backslash, which
//    continue it; with `joined` all lines are one message. Hex digits are taken in pairs; 0x or \x
//    may precede them, 0x also a digit alone. Blanks, commas, colons and dashes are separators.
//    A part in quotes (b may precede) that contains a backslash is a string: \xHH, \n, \r, \t, \\,
//    \" and \' are octets, and so is any other character. Without a backslash it is hex digits.
//    ("as a Hex Stream" and "as Escaped String" of Wireshark.)
#pragma once

#include <cstddef>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

using Octets = std::vector<unsigned char>;

/// What is wrong with a text, and where: lines and columns count from 1.
struct BadHex : std::runtime_error {
    using runtime_error::runtime_error;
};

struct PastedMessage {
    Octets octets;
    size_t line;  // where it begins
};

/// Whether an input is text, to be read as hex, rather than octets.
bool isText(std::string_view input);

/// The messages of a text, none of which is empty. Throws BadHex.
std::vector<PastedMessage> parseMessages(std::string_view text, bool joined);

/// The octets of a text that is one message, on any number of lines. Throws BadHex.
Octets parseHex(std::string_view text);

/// Octets as hex digits in pairs, lower case, nothing between.
std::string formatHex(std::span<const unsigned char> octets);
