// Writes a JSON value as text.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

/// Appends a value on one line, in ASCII. All other characters are escaped as \uXXXX, so that no
/// control character reaches a terminal, and no line separator (U+2028) a reader of lines. Invalid
/// UTF-8 becomes U+FFFD, one for each octet or incomplete character.
void appendJson(std::string& text, const nlohmann::ordered_json& value);
