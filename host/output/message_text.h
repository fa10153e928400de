// The texts that all views show of a message.
#pragma once

#include <string>
#include <vector>

#include "details.h"
#include "message.h"

/// Appends the name, the summary, the transport if it is special, and why the message was refused:
/// "setup 4711 -> 4712", "openLogicalChannel 1 g711Alaw64k, fastStart".
void appendMessageText(std::string& text, const CapturedMessage& message,
                       const MessageDetails& details);

/// Splits a text into lines of at most `width` characters, at blanks if possible. The lines are
/// parts of the text; there is at least one.
std::vector<std::string_view> wrapped(std::string_view text, size_t width);
