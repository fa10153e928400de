// Messages as hex text.
#pragma once

#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "message_dump.h"

/// What is wrong with a text, and where: lines and columns count from 1.
struct BadHex : std::runtime_error {
    using runtime_error::runtime_error;
};

/// Whether an input is text, to be read as hex, rather than octets.
bool isText(std::string_view input);

/// Hex digits in pairs; blanks, colons and "0x" between pairs are passed over. Throws BadHex.
Octets parseHex(std::string_view text);

/// Octets as hex digits in pairs, lower case, nothing between.
std::string formatHex(std::span<const unsigned char> octets);
