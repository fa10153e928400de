#include "call_progress.h"

#include <algorithm>

#include "escaped_text.h"

namespace {

constexpr size_t kMaxNameOctets = 128;
constexpr size_t kMaxWhyOctets = 512;

// Causes of Q.850.
constexpr unsigned kNormalClearing = 16;
constexpr unsigned kNoUserResponding = 18;
constexpr unsigned kNoAnswer = 19;
constexpr unsigned kNormalUnspecified = 31;

void addTo(std::vector<std::string>& list, std::string_view text) {
    if (!text.empty() && list.size() < CallRecord::kMaxCodecs &&
        std::find(list.begin(), list.end(), text) == list.end())
        list.emplace_back(text);
}

void reach(CallRecord& call, CallState state, std::string_view why) {
    if (call.state >= state) return;
    call.state = state;
    call.why = why;
}

/// Why there was no media: what was refused, or that the hosts have no common codec. Empty if there
/// was media, or if the reason is not known.
std::string whyNoMedia(const CallRecord& call) {
    if (call.hasMedia) return {};
    if (!call.refusal.empty() || call.sides.size() < 2) return call.refusal;
    const auto& one = call.sides[0].codecs;
    const auto& other = call.sides[1].codecs;
    const bool isCommon = std::any_of(one.begin(), one.end(), [&](const std::string& codec) {
        return std::find(other.begin(), other.end(), codec) != other.end();
    });
    return isCommon ? "" : "no common codec: " + joinEscaped(one) + " and " + joinEscaped(other);
}

/// The first releaseComplete of a call says why it ended.
void release(CallRecord& call, const MessageDetails& details) {
    if (call.isReleased) return;
    call.isReleased = true;
    if (const int64_t* const told = details.number("cause"))
        call.cause = static_cast<unsigned>(*told);
    call.reason = details.text("reason").substr(0, kMaxNameOctets);
    const unsigned cause = call.cause.value_or(kNormalClearing);
    const bool isNormal = cause == kNormalClearing || cause == kNormalUnspecified;
    const bool isNoAnswer = cause == kNoUserResponding || cause == kNoAnswer;
    call.why = whyNoMedia(call);
    if (call.why.empty() && !call.connected && call.hasAlerted && !isNoAnswer)
        call.why = isNormal ? "not answered" : "";
    const bool isGood = call.connected && isNormal && call.why.empty();
    call.state = isGood ? CallState::kReleased : CallState::kFailed;
    if (!call.why.empty() && !details.summary.empty()) call.why += "; ";
    call.why.append(details.summary, 0, kMaxWhyOctets);
}

void followSignalling(CallRecord& call, const CapturedMessage& message,
                      const MessageDetails& details) {
    const std::string_view name = message.name;
    const Address& source = message.flow.source.address;
    call.isOffering = name == "setup";
    if (name == "setup") {
        // The names of setup replace those of RAS.
        if (call.state == CallState::kRequested) {
            if (!details.text("from").empty()) call.from.clear();
            if (!details.text("to").empty()) call.to.clear();
        }
        takeName(call.from, details.text("from"));
        takeName(call.to, details.text("to"));
        if (call.isEnded()) {  // the caller or a gatekeeper tries again
            call.state = CallState::kRequested;
            call.isReleased = false;
            call.cause.reset();
            call.reason.clear();
        }
        if (call.state <= CallState::kRequested) call.fromHost = source;
        if (call.state <= CallState::kCalling) call.toHost = message.flow.destination.address;
        reach(call, CallState::kCalling, "no reply to setup");
    } else if (name == "callProceeding" || name == "progress" || name == "setupAcknowledge") {
        reach(call, CallState::kProceeding, "not alerted");
    } else if (name == "alerting") {
        call.hasAlerted = true;
        reach(call, CallState::kAlerting, "not answered");
    } else if (name == "connect") {
        if (!call.connected) call.connected = message.time;
        reach(call, CallState::kConnected, "");
    } else if (name == "releaseComplete") {
        release(call, details);
    }
}

void followRas(CallRecord& call, const CapturedMessage& message, const MessageDetails& details) {
    const std::string_view name = message.name;
    if (name == "admissionRequest") {
        takeName(call.from, details.text("from"));
        takeName(call.to, details.text("to"));
        if (call.state == CallState::kRejected) call.state = CallState::kRequested;  // again
        if (call.state != CallState::kRequested) return;
        if (call.fromHost == Address{}) call.fromHost = message.flow.source.address;
        call.why = "no reply to admissionRequest";
    } else if (name == "admissionConfirm" && call.state == CallState::kRequested) {
        call.why.clear();
    } else if (name == "admissionReject" || name == "locationReject") {
        call.refusal.assign(name).append(" ").append(details.summary, 0, kMaxWhyOctets);
        if (call.state != CallState::kRequested) return;
        call.state = CallState::kRejected;
        call.reason = details.text("reason").substr(0, kMaxNameOctets);
        call.why = call.refusal;
    } else if (name == "disengageRequest" && !call.isEnded()) {
        const bool isOver = call.state == CallState::kRequested || call.connected;
        call.state = isOver ? CallState::kReleased : CallState::kFailed;
        call.reason = details.text("reason").substr(0, kMaxNameOctets);
        call.why = "disengageRequest " + call.reason;
    }
}

/// A channel was acknowledged or refused. Returns the codec that was offered, and removes the
/// offer.
std::string takeOffer(CallRecord& call, const Address& from, const int64_t* channel) {
    const auto offer = std::find_if(call.offers.begin(), call.offers.end(), [&](const auto& one) {
        return channel != nullptr && one.channel == *channel && one.from == from;
    });
    if (offer == call.offers.end()) return {};
    std::string codec = std::move(offer->codec);
    call.offers.erase(offer);
    return codec;
}

void noteCapabilities(CallRecord& call, const Address& host,
                      const std::vector<std::string>& codecs) {
    auto side = std::find_if(call.sides.begin(), call.sides.end(),
                             [&](const auto& one) { return one.host == host; });
    if (side == call.sides.end()) {
        if (call.sides.size() == 2) return;
        side = call.sides.insert(side, CallRecord::Side{host, {}});
    }
    side->codecs.clear();
    for (const std::string& codec : codecs) addTo(side->codecs, codec);
}

void followH245(CallRecord& call, const CapturedMessage& message, const MessageDetails& details) {
    const std::string_view name = message.name;
    const Address& source = message.flow.source.address;
    const int64_t* const channel = details.number("channel");
    if (message.transport == Transport::kFastStart) {
        if (call.isOffering || message.outcome != Outcome::kDecoded) return;
        addTo(call.codecs, details.text("codec"));  // the called endpoint's choice
        call.hasMedia = true;
    } else if (name == "openLogicalChannel") {
        if (call.offers.size() >= CallRecord::kMaxOffers) call.offers.erase(call.offers.begin());
        call.offers.push_back({source, channel != nullptr ? *channel : 0,
                               std::string(details.text("codec").substr(0, kMaxNameOctets))});
    } else if (name == "openLogicalChannelAck") {
        addTo(call.codecs, takeOffer(call, message.flow.destination.address, channel));
        call.hasMedia = true;
    } else if (name == "openLogicalChannelReject") {
        call.refusal.clear();
        appendEscaped(call.refusal, takeOffer(call, message.flow.destination.address, channel));
        call.refusal += call.refusal.empty() ? "channel refused: " : " refused: ";
        call.refusal += details.text("reason").substr(0, kMaxNameOctets);
    } else if (name == "terminalCapabilitySet") {
        if (const auto* const codecs = details.list("codecs"))
            noteCapabilities(call, source, *codecs);
    } else if (name == "terminalCapabilitySetReject") {
        call.refusal.assign(name).append(" ").append(details.summary, 0, kMaxWhyOctets);
    }
}

}  // namespace

void takeName(std::string& name, std::string_view told) {
    if (name.empty()) name = told.substr(0, kMaxNameOctets);
}

void followCall(CallRecord& call, const CapturedMessage& message, const MessageDetails& details) {
    if (message.family == FamilyId::kUi)
        followSignalling(call, message, details);
    else if (message.family == FamilyId::kRas)
        followRas(call, message, details);
    else
        followH245(call, message, details);
}
