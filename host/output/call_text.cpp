#include "call_text.h"

#include "escaped_text.h"
#include "text_format.h"

std::string partyText(const std::string& name, const Address& host) {
    std::string text;
    appendEscaped(text, name);
    if (host == Address{}) return text.empty() ? "?" : text;
    return text.empty() ? toString(host) : text + " (" + toString(host) + ")";
}

std::string durationText(const CallRecord& call) {
    std::string text;
    const Time milliseconds = (call.end - call.start) / 1000;
    appendDigits(text, milliseconds / 1000);
    text += '.';
    appendDigits(text, milliseconds % 1000, 3);
    return text + " s";
}

std::string codecsText(const CallRecord& call) {
    std::string text;
    for (const std::string& codec : call.codecs) {
        if (!text.empty()) text += ", ";
        appendEscaped(text, codec);
    }
    return text;
}

Style styleOf(CallState state) {
    if (state == CallState::kFailed || state == CallState::kRejected) return Style::kBad;
    return state == CallState::kReleased || state == CallState::kConnected ? Style::kGood
                                                                           : Style::kStrong;
}
