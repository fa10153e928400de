// Text from the wire, escaped, so that it can be shown on a terminal and within a line.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "hex_digits.h"

/// Appends text as the dumps for terminals show it: an octet that is not printable ASCII becomes
/// \xNN, and a backslash is doubled.
inline void appendEscaped(std::string& text, std::string_view wire) {
    for (const char c : wire) {
        const auto octet = static_cast<unsigned char>(c);
        if (octet >= 0x20 && octet < 0x7F) {
            text += c;
            if (c == '\\') text += c;
            continue;
        }
        text += "\\x";
        appendHex(text, octet);
    }
}

/// Several texts, each escaped, with commas and blanks between them.
inline std::string joinEscaped(const std::vector<std::string>& texts) {
    std::string joined;
    for (const std::string& text : texts) {
        if (!joined.empty()) joined += ", ";
        appendEscaped(joined, text);
    }
    return joined;
}
