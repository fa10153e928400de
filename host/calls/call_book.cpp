#include "call_book.h"

#include <algorithm>
#include <array>

#include "call_progress.h"

namespace {

constexpr size_t kMaxStreams = 16384;

/// The key of a flow, which is the same in both directions.
std::pair<Endpoint, Endpoint> keyOf(const Flow& flow) {
    return std::minmax(flow.source, flow.destination);
}

void noteHost(CallRecord& call, const Address& host) {
    if (call.hosts.size() < CallRecord::kMaxHosts &&
        std::find(call.hosts.begin(), call.hosts.end(), host) == call.hosts.end())
        call.hosts.push_back(host);
}

/// Whether a RAS message comes from a gatekeeper: an answer, or infoRequest.
bool isOfGatekeeper(std::string_view name) {
    return name.ends_with("Confirm") || name.ends_with("Reject") || name.ends_with("Ack") ||
           name.ends_with("Nak") || name == "infoRequest" || name == "requestInProgress";
}

/// The state of an endpoint after a RAS message; empty if the message does not change it.
std::string_view stateAfter(std::string_view name) {
    constexpr std::pair<std::string_view, std::string_view> kStates[] = {
        {"gatekeeperRequest", "discovering"},  {"gatekeeperConfirm", "discovered"},
        {"gatekeeperReject", "rejected"},      {"registrationRequest", "registering"},
        {"registrationConfirm", "registered"}, {"registrationReject", "rejected"},
        {"unregistrationRequest", "leaving"},  {"unregistrationConfirm", "unregistered"},
    };
    for (const auto& [message, state] : kStates)
        if (name == message) return state;
    return {};
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
    // Several calls of one conference have different callIdentifiers.
    const bool isOther =
        call != nullptr && names.callIdentifier != Guid{} && call->names.callIdentifier != Guid{};
    return isOther ? nullptr : call;
}

/// Adds the identifiers that a call does not have yet.
void CallBook::name(CallRecord& call, const CallNames& names) {
    if (call.names.callIdentifier == Guid{} && names.callIdentifier != Guid{}) {
        call.names.callIdentifier = names.callIdentifier;
        byIdentifier_[names.callIdentifier] = call.number;
    }
    if (call.names.conferenceID == Guid{}) call.names.conferenceID = names.conferenceID;
    // Only the conferenceID that the call keeps is listed, because only that is removed with it.
    if (names.conferenceID != Guid{} && names.conferenceID == call.names.conferenceID)
        byConference_[names.conferenceID] = call.number;
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
        call->start = call->end = message.time;
    }
    name(*call, message.call);
    return *call;
}

CallRecord* CallBook::note(const CapturedMessage& message, const MessageDetails& details) {
    CallRecord& call = callOf(message);
    call.end = std::max(call.end, message.time);  // captures are not always in order
    ++call.messages;
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
    if (message.outcome != Outcome::kRefused) followCall(call, message, details);
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

/// The endpoint on a host, perhaps a new one; null if there is no room for it.
EndpointRecord* CallBook::endpointAt(const Address& host, Time time) {
    auto found = byHost_.find(host);
    if (found == byHost_.end()) {
        if (endpoints_.size() >= kMaxEndpoints) return nullptr;
        found = byHost_.emplace(host, endpoints_.size()).first;
        EndpointRecord& endpoint = endpoints_.emplace_back();
        endpoint.host = host;
        endpoint.start = time;
    }
    return &endpoints_[found->second];
}

/// The message belongs to the endpoint that asked, or that its gatekeeper asked.
EndpointRecord* CallBook::noteOutsideCalls(const CapturedMessage& message,
                                           const MessageDetails& details) {
    const bool isRas = message.family == FamilyId::kRas;
    const bool isFromGatekeeper = isRas && isOfGatekeeper(message.name);
    const Flow& flow = message.flow;
    EndpointRecord* const endpoint =
        endpointAt(isFromGatekeeper ? flow.destination.address : flow.source.address, message.time);
    if (endpoint == nullptr) return nullptr;
    endpoint->end = std::max(endpoint->end, message.time);
    ++endpoint->messages;
    endpoint->refused += message.outcome == Outcome::kRefused;
    if (!isRas || message.outcome == Outcome::kRefused) return endpoint;
    if (isFromGatekeeper) endpoint->gatekeeper = flow.source.address;
    if (const auto* const aliases = details.list("aliases"); aliases != nullptr)
        takeName(endpoint->alias, aliases->front());
    takeName(endpoint->identifier, details.text("endpointIdentifier"));
    if (const std::string_view state = stateAfter(message.name); !state.empty())
        endpoint->state = state;
    if (message.name.ends_with("Reject"))
        endpoint->why = std::string(message.name) + " " + details.summary;
    if (message.name.ends_with("Confirm")) endpoint->why.clear();
    return endpoint;
}
