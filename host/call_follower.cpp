#include "call_follower.h"

#include <algorithm>

#include "q931.h"

namespace {

constexpr uint16_t kRasDiscoveryPort = 1718;
constexpr uint16_t kRasPort = 1719;
constexpr uint16_t kSignallingPort = 1720;

/// More calls at one time than any capture holds; with more announced, the oldest are forgotten.
constexpr size_t kMaxAnnounced = 65536;

bool hasPort(const Flow& flow, uint16_t port) {
    return flow.source.port == port || flow.destination.port == port;
}

}  // namespace

std::string_view toString(Transport transport) {
    switch (transport) {
        case Transport::kUdp:
            return "udp";
        case Transport::kTcp:
            return "tcp";
        case Transport::kTunnel:
            return "tunnel";
        default:
            return "fastStart";
    }
}

CallFollower::CallFollower(MessageDumper& dumper, MessageSink& sink, std::string call)
    : dumper_(dumper),
      sink_(sink),
      call_(std::move(call)),
      announced_(kMaxAnnounced),
      wanted_(kMaxAnnounced) {
}

/// What a flow is for: an announced address tells, or else the port.
std::optional<CallFollower::Announced> CallFollower::announcedFor(Protocol protocol,
                                                                  const Flow& flow) const {
    for (const Endpoint& endpoint : {flow.destination, flow.source})
        if (const Announced* announced = announced_.find({protocol, endpoint})) return *announced;
    const bool udp = protocol == Protocol::kUdp;
    if (udp && (hasPort(flow, kRasPort) || hasPort(flow, kRasDiscoveryPort)))
        return Announced{.purpose = Purpose::kForRas};
    if (!udp && hasPort(flow, kSignallingPort))
        return Announced{.purpose = Purpose::kForSignalling};
    return {};
}

void CallFollower::datagram(Time time, const Flow& flow, std::span<const uint8_t> octets) {
    if (announcedFor(Protocol::kUdp, flow))
        message({time, flow, Transport::kUdp, &kRas, octets}, false, {});
}

bool CallFollower::wantsStream(const Flow& flow) {
    return announcedFor(Protocol::kTcp, flow).has_value();
}

/// The state of a stream; as announced when it begins, for the address may be another call's later.
CallFollower::Reading& CallFollower::readingOf(const Flow& flow) {
    const auto [at, isNew] = readings_.try_emplace(flow);
    if (isNew) at->second.announced = announcedFor(Protocol::kTcp, flow).value_or(Announced{});
    return at->second;
}

void CallFollower::streamOctets(Time time, const Flow& flow, std::span<const uint8_t> octets) {
    Reading& reading = readingOf(flow);
    reading.tpkt.read(octets, receiver(time, flow, reading.announced));
}

void CallFollower::streamGap(Time time, const Flow& flow, size_t octets) {
    const auto what = octets > 0 ? Remark::kOctetsMissing : Remark::kStartsMidway;
    sink_.remark({time, flow, what, octets});
    Reading& reading = readingOf(flow);
    reading.tpkt.skip(receiver(time, flow, reading.announced));
}

void CallFollower::streamEnd(Time time, const Flow& flow) {
    const auto found = readings_.find(flow);
    if (found == readings_.end()) return;
    found->second.tpkt.skip(receiver(time, flow, found->second.announced));
    readings_.erase(found);
}

TpktReader::Receiver CallFollower::receiver(Time time, const Flow& flow,
                                            const Announced& announced) {
    return {
        .message =
            [=, this](std::span<const uint8_t> octets) {
                if (octets.empty()) return;  // keeps the connection alive
                if (announced.purpose == Purpose::kForSignalling)
                    signalling(time, flow, octets);
                else
                    message({time, flow, Transport::kTcp, &kH245, octets}, announced.wanted, {});
            },
        .lost =
            [=, this](size_t octets) {
                sink_.remark({time, flow, Remark::kOctetsPassedOver, octets});
            },
    };
}

/// One TPKT of a call-signalling stream. What is no Q.931 there may be H.245.
void CallFollower::signalling(Time time, const Flow& flow, std::span<const uint8_t> octets) {
    CapturedMessage found{time, flow, Transport::kTcp, &kUi, octets};
    if (!startsQ931(octets)) {
        found.family = &kH245;
        message(found, false, {});
        return;
    }
    const auto q931 = readQ931(octets);
    if (!q931) {
        sink_.message(found);
    } else if (q931->userUser.empty()) {
        sink_.remark({time, flow, Remark::kNoUserUser});
    } else {
        found.octets = q931->userUser;
        message(found, false, std::to_string(q931->callReference));
    }
}

/// Dumps a message, passes it on and follows it.
///   wanted  whether it belongs to the call that is looked for, unless it tells itself
///   number  the call reference that it came with, if any
void CallFollower::message(CapturedMessage message, bool wanted, const std::string& number) {
    message.dump = dumper_.dump(*message.family, message.octets, true);
    MessageFacts facts;
    if (message.dump) {
        facts = readFacts(*message.family, *message.dump);
        message.name = facts.name;
        message.call = facts.callIdentifier.empty() ? facts.conferenceID : facts.callIdentifier;
    }
    if (message.family != &kH245)
        wanted = isWanted(facts, message.flow, number.empty() ? facts.sequenceNumber : number);
    if (wanted || call_.empty()) sink_.message(message);

    for (const Announcement& announcement : facts.announcements) {
        const bool ras = announcement.purpose == Purpose::kForRas;
        announced_.put({ras ? Protocol::kUdp : Protocol::kTcp, announcement.endpoint},
                       {announcement.purpose, wanted});
    }
    for (const Octets& proposal : facts.fastStart)
        if (wanted || call_.empty())
            sink_.message({message.time, message.flow, Transport::kFastStart, &kH245, proposal,
                           std::nullopt, "openLogicalChannel", message.call});
    for (const Octets& tunnelled : facts.h245Control)
        this->message({message.time, message.flow, Transport::kTunnel, &kH245, tunnelled}, wanted,
                      {});
}

/// Whether a message belongs to the call that is looked for: its identifiers tell, or an earlier
/// message of the same dialogue did.
bool CallFollower::isWanted(const MessageFacts& facts, const Flow& flow,
                            const std::string& number) {
    if (call_.empty()) return true;
    const Dialogue dialogue{std::min(flow.source, flow.destination),
                            std::max(flow.source, flow.destination), number};
    if (facts.callIdentifier.empty() && facts.conferenceID.empty()) {
        const bool* const known = wanted_.find(dialogue);
        return known != nullptr && *known;
    }
    const bool wanted =
        facts.callIdentifier.starts_with(call_) || facts.conferenceID.starts_with(call_);
    if (!number.empty()) wanted_.put(dialogue, wanted);
    return wanted;
}
