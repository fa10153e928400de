// Updates a call from its messages.
#pragma once

#include "call_book.h"

/// Updates the state, the names, the codecs and the reason of the end. The message is not refused.
void followCall(CallRecord& call, const CapturedMessage& message, const MessageDetails& details);

/// Sets a name to text from the wire, unless it is already set.
void takeName(std::string& name, std::string_view told);
