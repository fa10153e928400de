// What a message changes in its call.
#pragma once

#include "call_book.h"

/// Takes the state, the names, the codecs and the end of a call from a message.
void followCall(CallRecord& call, const CapturedMessage& message, const MessageDetails& details);

/// Sets a name that is still empty, to text from the wire.
void takeName(std::string& name, std::string_view told);
