#include "call_book.h"

#include <algorithm>
#include <array>

namespace {

constexpr size_t kMaxStreams = 16384;
constexpr size_t kMaxNameOctets = 128;

constexpr unsigned kNormalClearing = 16;
constexpr unsigned kNormalUnspecified = 31;
constexpr unsigned kNoUserResponding = 18;
constexpr unsigned kNoAnswer = 19;

/// Both directions of a flow have one key.
std::pair<Endpoint, Endpoint> keyOf(const Flow& flow) {
    return std::minmax(flow.source, flow.destination);
}

/// Sets a name that nobody has told yet.
void takeName(std::string& name, std::string_view told) {
    if (name.empty()) name = told.substr(0, kMaxNameOctets);
}

void addTo(std::vector<std::string>& list, const std::string& text, size_t limit) {
    if (list.size() < limit && std::find(list.begin(), list.end(), text) == list.end())
        list.push_back(text);
}

void noteHost(CallRecord& call, const Address& host) {
    if (call.hosts.size() < CallRecord::kMaxHosts &&
        std::find(call.hosts.begin(), call.hosts.end(), host) == call.hosts.end())
        call.hosts.push_back(host);
}

}  // namespace

std::string_view toString(CallState state) {
    constexpr std::array<std::string_view, 8> kNames = {"requested", "calling",   "proceeding",
                                                        "alerting",  "connected", "released",
                                                        "rejected",  "failed"};
    return kNames.at(static_cast<size_t>(state));
}

CallBook::CallBook(size_t limit)
    : limit_(limit), byStream_(kMaxStreams), earlyLosses_(kMaxStreams) {
}

CallRecord* CallBook::findCall(const CallNames& names) {
    const auto at = [&](const std::map<Guid, size_t>& map, const Guid& guid) -> CallRecord* {
        const auto found = guid == Guid{} ? map.end() : map.find(guid);
        return found == map.end() ? nullptr : &calls_[found->second - forgotten_ - 1];
    };
    if (CallRecord* const call = at(byIdentifier_, names.callIdentifier)) return call;
    CallRecord* const call = at(byConference_, names.conferenceID);
    // Calls of one conference differ in their identifiers.
    const bool isOther =
        call != nullptr && names.callIdentifier != Guid{} && call->names.callIdentifier != Guid{};
    return isOther ? nullptr : call;
}

/// Gives a call the identifiers that it lacks.
void CallBook::name(CallRecord& call, const CallNames& names) {
    if (call.names.callIdentifier == Guid{} && names.callIdentifier != Guid{}) {
        call.names.callIdentifier = names.callIdentifier;
        byIdentifier_[names.callIdentifier] = call.number;
    }
    if (names.conferenceID != Guid{}) {
        if (call.names.conferenceID == Guid{}) call.names.conferenceID = names.conferenceID;
        byConference_[names.conferenceID] = call.number;
    }
}

CallRecord& CallBook::callOf(const CapturedMessage& message) {
    CallRecord* call = findCall(message.call);
    if (call == nullptr) {
        if (calls_.size() >= limit_) {
            const CallRecord& oldest = calls_.front();
            if (take_) take_(oldest);
            byIdentifier_.erase(oldest.names.callIdentifier);
            const auto conference = byConference_.find(oldest.names.conferenceID);
            if (conference != byConference_.end() && conference->second == oldest.number)
                byConference_.erase(conference);
            calls_.pop_front();
            ++forgotten_;
        }
        call = &calls_.emplace_back();
        call->number = forgotten_ + calls_.size();
        call->start = message.time;
    }
    name(*call, message.call);
    return *call;
}

CallRecord* CallBook::note(const CapturedMessage& message, const MessageDetails& details) {
    if (message.call.isEmpty()) {
        noteEndpoint(message, details);
        return nullptr;
    }
    CallRecord& call = callOf(message);
    call.end = message.time;
    if (message.outcome != Outcome::kProposal) ++call.messages;
    if (message.outcome == Outcome::kRefused) ++call.refused;
    noteHost(call, message.flow.source.address);
    noteHost(call, message.flow.destination.address);
    if (message.transport == Transport::kTcp) {
        const auto key = keyOf(message.flow);
        if (const size_t* const early = earlyLosses_.find(key)) {
            call.losses += *early;
            earlyLosses_.put(key, 0);
        }
        byStream_.put(key, call.number);
    }
    if (message.outcome != Outcome::kRefused) follow(call, message, details);
    return &call;
}

CallRecord* CallBook::note(const CaptureRemark& remark) {
    const auto key = keyOf(remark.flow);
    const size_t* const number = byStream_.find(key);
    if (number == nullptr || *number <= forgotten_) {
        const size_t* const early = earlyLosses_.find(key);
        earlyLosses_.put(key, early != nullptr ? *early + 1 : 1);
        return nullptr;
    }
    CallRecord& call = calls_[*number - forgotten_ - 1];
    ++call.losses;
    return &call;
}

/// What a message changes in its call.
void CallBook::follow(CallRecord& call, const CapturedMessage& message,
                      const MessageDetails& details) {
    const std::string_view name = message.name;
    const Address& source = message.flow.source.address;
    const Address& destination = message.flow.destination.address;
    const auto reach = [&](CallState state, std::string_view why) {
        if (call.state >= state) return;
        call.state = state;
        call.why = why;
    };
    if (message.family == FamilyId::kUi) {
        takeName(call.from, details.text("from"));
        takeName(call.to, details.text("to"));
        if (name == "setup") {
            if (call.state > CallState::kConnected) call.state = CallState::kRequested;  // again
            if (call.state <= CallState::kRequested) call.fromHost = source;
            if (call.state <= CallState::kCalling) call.toHost = destination;
            reach(CallState::kCalling, "no reply to setup");
        } else if (name == "callProceeding" || name == "progress" || name == "setupAcknowledge") {
            reach(CallState::kProceeding, "not alerted");
        } else if (name == "alerting") {
            call.hasAlerted = true;
            reach(CallState::kAlerting, "not answered");
        } else if (name == "connect") {
            if (!call.connected) call.connected = message.time;
            reach(CallState::kConnected, "");
        } else if (name == "releaseComplete") {
            const int64_t* const cause = details.number("cause");
            if (call.isEnded() && call.cause) return;  // the first one tells
            if (cause != nullptr) call.cause = static_cast<unsigned>(*cause);
            call.reason = details.text("reason");
            const bool isNormal =
                !call.cause || *call.cause == kNormalClearing || *call.cause == kNormalUnspecified;
            const bool hasWords = call.cause == kNoUserResponding || call.cause == kNoAnswer;
            call.why.clear();
            if (!call.refusal.empty() && !call.hasMedia)
                call.why = call.refusal;
            else if (!call.connected && call.hasAlerted && !hasWords && isNormal)
                call.why = "not answered";
            if (!call.why.empty() && !details.summary.empty()) call.why += ": ";
            call.why += details.summary;
            const bool isGood =
                call.connected && isNormal && (call.refusal.empty() || call.hasMedia);
            call.state = isGood ? CallState::kReleased : CallState::kFailed;
            return;
        }
        if (name == "setup" || details.list("codecs") == nullptr) return;
        for (const std::string& codec : *details.list("codecs"))
            addTo(call.codecs, codec, CallRecord::kMaxCodecs);
        call.hasMedia = true;
    } else if (message.family == FamilyId::kRas) {
        if (name == "admissionRequest") {
            takeName(call.from, details.text("from"));
            takeName(call.to, details.text("to"));
            if (call.state == CallState::kRejected) call.state = CallState::kRequested;  // again
            if (call.state == CallState::kRequested) {
                if (call.fromHost == Address{}) call.fromHost = source;
                call.why = "no reply to admissionRequest";
            }
        } else if (name == "admissionConfirm" && call.state == CallState::kRequested) {
            call.why.clear();
        } else if (name == "admissionReject" || name == "locationReject") {
            call.refusal = std::string(name) + " " + details.summary;
            if (call.state != CallState::kRequested) return;
            call.state = CallState::kRejected;
            call.reason = details.text("reason");
            call.why = call.refusal;
        } else if (name == "disengageRequest" && !call.isEnded()) {
            const bool isOver = call.state == CallState::kRequested || call.connected;
            call.state = isOver ? CallState::kReleased : CallState::kFailed;
            call.reason = details.text("reason");
            call.why = "disengageRequest " + call.reason;
        }
    } else if (message.transport != Transport::kFastStart) {
        if (name == "openLogicalChannel") {
            if (call.offers.size() >= CallRecord::kMaxOffers)
                call.offers.erase(call.offers.begin());
            const int64_t* const channel = details.number("channel");
            call.offers.push_back(
                {source, channel != nullptr ? *channel : 0, std::string(details.text("codec"))});
        } else if (name == "openLogicalChannelAck" || name == "openLogicalChannelReject") {
            const int64_t* const channel = details.number("channel");
            const auto offer =
                std::find_if(call.offers.begin(), call.offers.end(), [&](const auto& waiting) {
                    return channel != nullptr && waiting.channel == *channel &&
                           waiting.from == destination;
                });
            const std::string codec = offer != call.offers.end() ? offer->codec : "";
            if (offer != call.offers.end()) call.offers.erase(offer);
            if (name == "openLogicalChannelAck") {
                call.hasMedia = true;
                if (!codec.empty()) addTo(call.codecs, codec, CallRecord::kMaxCodecs);
            } else {
                call.refusal = (codec.empty() ? std::string(name) : codec + " refused") + ": " +
                               std::string(details.text("reason"));
            }
        } else if (name == "terminalCapabilitySetReject") {
            call.refusal = std::string(name) + " " + details.summary;
        }
    }
}

/// A message outside calls is of the endpoint that asked, or that was asked by its gatekeeper.
void CallBook::noteEndpoint(const CapturedMessage& message, const MessageDetails& details) {
    const std::string_view name = message.name;
    const Address& source = message.flow.source.address;
    const Address& destination = message.flow.destination.address;
    const bool isAnswer = name.ends_with("Confirm") || name.ends_with("Reject") ||
                          name.ends_with("Ack") || name.ends_with("Nak") || name == "infoRequest" ||
                          name == "requestInProgress";
    const bool isRas = message.family == FamilyId::kRas;
    const Address& host = isRas && isAnswer ? destination : source;
    const auto found = byHost_.find(host);
    if (found == byHost_.end() && endpoints_.size() >= kMaxEndpoints) return;
    if (found == byHost_.end()) {
        byHost_[host] = endpoints_.size();
        endpoints_.emplace_back();
        endpoints_.back().host = host;
        endpoints_.back().start = message.time;
    }
    EndpointRecord& endpoint =
        found == byHost_.end() ? endpoints_.back() : endpoints_[found->second];
    endpoint.end = message.time;
    ++endpoint.messages;
    endpoint.refused += message.outcome == Outcome::kRefused;
    if (!isRas || message.outcome == Outcome::kRefused) return;
    if (isAnswer) endpoint.gatekeeper = source;
    if (const auto* const aliases = details.list("aliases"); aliases != nullptr)
        takeName(endpoint.alias, aliases->front());
    takeName(endpoint.identifier, details.text("endpointIdentifier"));
    constexpr std::pair<std::string_view, std::string_view> kStates[] = {
        {"gatekeeperRequest", "discovering"},  {"gatekeeperConfirm", "discovered"},
        {"gatekeeperReject", "rejected"},      {"registrationRequest", "registering"},
        {"registrationConfirm", "registered"}, {"registrationReject", "rejected"},
        {"unregistrationRequest", "leaving"},  {"unregistrationConfirm", "unregistered"},
    };
    for (const auto& [message_name, state] : kStates)
        if (name == message_name) endpoint.state = state;
    if (name.ends_with("Reject")) endpoint.why = std::string(name) + " " + details.summary;
    if (name.ends_with("Confirm")) endpoint.why.clear();
}
