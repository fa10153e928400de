// What a line says of a call, in all views.
#pragma once

#include <string>

#include "call_book.h"
#include "screen.h"

/// "4711 (10.0.0.1)", "10.0.0.1", "4711", or "?" if nothing is known. Text from the wire is
/// escaped.
std::string partyText(const std::string& name, const Address& host);

/// The same of a call's two ends. If no message told who calls whom, they are the first two hosts.
std::string fromText(const CallRecord& call);
std::string toText(const CallRecord& call);

/// "12.345 s"
std::string durationText(const CallRecord& call);

/// What follows the state of a call: why it ended, and its codecs: ": 17 user busy; g711Alaw64k".
std::string outcomeText(const CallRecord& call);

/// Good is what is over without a failure; bad what failed, was rejected or lost.
Style styleOf(CallState state);
