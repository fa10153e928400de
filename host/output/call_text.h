// The texts that all views show of a call.
#pragma once

#include <string>

#include "call_book.h"
#include "screen.h"

/// A name and a host: "4711 (10.0.0.1)", "10.0.0.1" or "4711"; "?" if neither is known. The name is
/// escaped.
std::string partyText(const std::string& name, const Address& host);

/// The same for the caller and the callee. If no message says which hosts these are, they are the
/// first two hosts.
std::string fromText(const CallRecord& call);
std::string toText(const CallRecord& call);

/// From the first message to the last: "12.345 s".
std::string durationText(const CallRecord& call);

/// What follows the state of a call: why it ended, and its codecs: ": 17 user busy; g711Alaw64k".
std::string outcomeText(const CallRecord& call);

/// Connected and released calls are good, failed and rejected calls are bad.
Style styleOf(CallState state);
