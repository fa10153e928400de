// A JSON value as text.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

/// Appends a value on one line: as ASCII, with everything else as \uXXXX. That keeps control
/// characters from terminals, and readers of lines find none within a value (U+2028). What is
/// no UTF-8 becomes U+FFFD, one for each octet or beginning of a character.
void appendJson(std::string& text, const nlohmann::ordered_json& value);
