// Text from the wire, for terminals and lines.
#pragma once

#include <string>
#include <string_view>

/// Appends text as dumps for terminals have it: what is not printable ASCII as \xNN, a backslash as
/// two.
inline void appendEscaped(std::string& text, std::string_view wire) {
    for (const char c : wire) {
        const auto octet = static_cast<unsigned char>(c);
        if (octet >= 0x20 && octet < 0x7F) {
            text += c;
            if (c == '\\') text += c;
            continue;
        }
        text += "\\x";
        text += "0123456789abcdef"[octet >> 4];
        text += "0123456789abcdef"[octet & 15];
    }
}
