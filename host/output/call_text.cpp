#include "call_text.h"

#include "escaped_text.h"
#include "text_format.h"

std::string partyText(const std::string& name, const Address& host) {
    std::string text;
    appendEscaped(text, name);
    if (host == Address{}) return text.empty() ? "?" : text;
    return text.empty() ? toString(host) : text + " (" + toString(host) + ")";
}

namespace {

/// The caller or the callee. `guess` is the position of its host in call.hosts if no host is known.
std::string sideText(const CallRecord& call, const std::string& name, const Address& host,
                     size_t guess) {
    const bool isTold = call.fromHost != Address{} || call.toHost != Address{};
    const bool isKnown = isTold || !name.empty() || guess >= call.hosts.size();
    return partyText(name, isKnown ? host : call.hosts[guess]);
}

}  // namespace

std::string fromText(const CallRecord& call) {
    return sideText(call, call.from, call.fromHost, 0);
}

std::string toText(const CallRecord& call) {
    return sideText(call, call.to, call.toHost, 1);
}

std::string durationText(const CallRecord& call) {
    std::string text;
    const Time milliseconds = (call.end - call.start) / 1000;
    appendDigits(text, milliseconds / 1000);
    text += '.';
    appendDigits(text, milliseconds % 1000, 3);
    return text + " s";
}

std::string outcomeText(const CallRecord& call) {
    std::string text;
    if (!call.why.empty()) text += ": " + call.why;
    if (!call.codecs.empty()) text += "; " + joinEscaped(call.codecs);
    return text;
}

Style styleOf(CallState state) {
    if (state == CallState::kFailed || state == CallState::kRejected) return Style::kBad;
    return state == CallState::kReleased || state == CallState::kConnected ? Style::kGood
                                                                           : Style::kStrong;
}
