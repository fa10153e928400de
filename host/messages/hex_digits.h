// Octets as hex digits, lower case.
#pragma once

#include <cstdint>
#include <span>
#include <string>

/// Appends the two digits of an octet.
inline void appendHex(std::string& text, uint8_t octet) {
    text += "0123456789abcdef"[octet >> 4];
    text += "0123456789abcdef"[octet & 15];
}

/// Appends the digits of octets, with nothing between them.
inline void appendHex(std::string& text, std::span<const uint8_t> octets) {
    for (const uint8_t octet : octets) appendHex(text, octet);
}
