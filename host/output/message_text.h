// What a line says of a message, in all views.
#pragma once

#include <string>
#include <vector>

#include "details.h"
#include "message.h"

/// Appends the name, the summary, and how the message came: "setup 4711 -> 4712",
/// "openLogicalChannel 1 g711Alaw64k, fastStart".
void appendMessageText(std::string& text, const CapturedMessage& message,
                       const MessageDetails& details);

/// Cuts a text into lines of at most `width` characters, at blanks if there are any.
std::vector<std::string_view> wrapped(std::string_view text, size_t width);
