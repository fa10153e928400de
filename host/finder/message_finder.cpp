#include "message_finder.h"

#include <algorithm>
#include <array>

#include "conversation.h"

namespace {

constexpr size_t kMaxDialogues = 65536;

/// Is added to a call reference in a Dialogue. It is greater than any RAS sequence number.
constexpr uint32_t kCallReference = 1U << 16;

constexpr std::string_view kMaybeRas = "UDP datagrams that may be RAS, without an answer";
constexpr size_t kMaxGuesses = 4096;
constexpr size_t kMaxGuessed = 2048;  // octets of one

/// The first octet of a MultimediaSystemControlMessage that is an openLogicalChannel: no extension,
/// request, no extension, the fourth of the requests. The OpenLogicalChannel follows at the octet
/// boundary (X.691 22).
constexpr uint8_t kOpenLogicalChannel = 0x03;

/// Why a message did not decode, and at which of its octets.
///   added  the number of octets that were decoded before those of the message
std::string reasonOf(const TamselDecoder& decoder, size_t octets, size_t added) {
    std::array<char, 200> text{};
    asnErrorText(decoder.errors(), text.data(), text.size());
    return std::string(text.data()) + " (status " + std::to_string(decoder.status()) +
           ") at octet " + std::to_string(decoder.bitPosition() / 8 - static_cast<int64_t>(added)) +
           " of " + std::to_string(octets);
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

MessageFinder::MessageFinder(MessageSink& sink, MemoryBudget& budget, Unread& unread,
                             FinderOptions options)
    : sink_(sink),
      budget_(budget),
      unread_(unread),
      modules_(*options.modules),
      call_(std::move(options.call)),
      directory_(std::move(options.ports)),
      dialogues_(kMaxDialogues),
      guesses_(kMaxGuesses) {
}

std::unique_ptr<StreamReader> MessageFinder::open(const Flow& flow) {
    return std::make_unique<Conversation>(*this, flow);
}

void MessageFinder::datagram(const Arrival& arrival, const Flow& flow,
                             std::span<const uint8_t> octets) {
    const auto known = directory_.find(Protocol::kUdp, flow);
    if (known && known->purpose == Purpose::kNone) return;
    if (known && !known->isGuess)
        ras(arrival, flow, octets);
    else if (isExactly(FamilyId::kRas, octets))
        known ? ras(arrival, flow, octets) : guess(arrival, flow, octets);
}

void MessageFinder::ras(const Arrival& arrival, const Flow& flow, std::span<const uint8_t> octets) {
    messages({.time = arrival.time,
              .frames = arrival.frames,
              .flow = flow,
              .octets = octets,
              .name = {},
              .call = {},
              .reason = {}});
}

/// A datagram decoded as RAS, but one in a few thousand datagrams of other protocols does. It is
/// accepted if it names H.225.0 as its protocol, or if it answers another one: it has the same
/// sequence number. Its facts are in carriedFacts_.
void MessageFinder::guess(const Arrival& arrival, const Flow& flow,
                          std::span<const uint8_t> octets) {
    const auto hosts = std::minmax(flow.source, flow.destination);
    const uint32_t number = carriedFacts_.sequenceNumber;
    const Guess* const before = guesses_.find(hosts);
    const bool isAnswer = before != nullptr && before->flow == flow.reversed() &&
                          before->sequenceNumber == number && !carriedFacts_.isRequest;
    if (!isAnswer && !carriedFacts_.isOfH323) {
        unread_.count(kMaybeRas);
        if (octets.size() <= kMaxGuessed)
            guesses_.put(hosts, {arrival.time,
                                 flow,
                                 number,
                                 {arrival.frames.begin(), arrival.frames.end()},
                                 {octets.begin(), octets.end()}});
        return;
    }
    directory_.guessRas(flow);
    if (isAnswer) {
        unread_.takeBack(kMaybeRas);
        ras({before->time, before->frames}, before->flow, before->octets);
    }
    ras(arrival, flow, octets);
}

bool MessageFinder::exported(const Arrival& arrival, const Flow& flow, std::string_view protocol,
                             std::span<const uint8_t> octets) {
    if (protocol == "h225.ras") {
        ras(arrival, flow, octets);
    } else if (protocol == "h245") {
        h245(arrival, flow, octets, {}, nullptr);
    } else if (protocol == "q931") {
        signalling(arrival, flow, octets, nullptr);
    } else if (protocol == "tpkt") {
        if (octets.size() > kTpktHeader)
            signalling(arrival, flow, octets.subspan(kTpktHeader), nullptr);
    } else {
        return false;
    }
    return true;
}

/// Whether octets start with a message of a name that the modules know. Its facts are in
/// carriedFacts_ then.
bool MessageFinder::isMessage(FamilyId family, std::span<const uint8_t> octets) {
    if (carriedDecoder_.decode(familyOf(modules_, family), octets, true) != kAsnOk) return false;
    readFacts(modules_, family, carriedDecoder_, carriedFacts_);
    return !carriedFacts_.name.empty();
}

bool MessageFinder::isExactly(FamilyId family, std::span<const uint8_t> octets) {
    return isMessage(family, octets) && carriedDecoder_.octets() == octets.size();
}

void MessageFinder::h245(const Arrival& arrival, const Flow& flow, std::span<const uint8_t> octets,
                         const CallNames& call, Conversation* conversation) {
    conversation_ = conversation;
    messages({.time = arrival.time,
              .frames = arrival.frames,
              .flow = flow,
              .transport = Transport::kTcp,
              .family = FamilyId::kH245,
              .octets = octets,
              .name = {},
              .call = call,
              .reason = {}});
    conversation_ = nullptr;
}

/// If the content of a TPKT in call signalling is no Q.931, it may be H.245.
void MessageFinder::signalling(const Arrival& arrival, const Flow& flow,
                               std::span<const uint8_t> octets, Conversation* conversation) {
    if (!startsQ931(octets)) {
        h245(arrival, flow, octets, {}, conversation);
        return;
    }
    Q931Message q931;
    const bool isWhole = readQ931(octets, q931);
    CapturedMessage found{.time = arrival.time,
                          .frames = arrival.frames,
                          .flow = flow,
                          .transport = Transport::kTcp,
                          .family = FamilyId::kUi,
                          .octets = octets,
                          .name = {},
                          .call = {},
                          .reason = {},
                          .q931 = &q931};
    conversation_ = conversation;
    if (isWhole && !q931.userUser.empty()) {
        found.octets = q931.userUser;
        messages(found);
    } else {
        const std::string name = q931.name();
        found.name = name;
        found.outcome = isWhole ? Outcome::kBare : Outcome::kRefused;
        if (!isWhole) found.reason = "Q.931 that ends within an information element";
        facts_ = {};
        identify(found);
        pass(found);
    }
    conversation_ = nullptr;
}

/// Decodes the octets of a datagram or TPKT, which may be several messages.
void MessageFinder::messages(const CapturedMessage& found) {
    CallNames call;
    for (auto rest = found.octets; !rest.empty();) {
        const bool isFirst = rest.size() == found.octets.size();
        if (!isFirst && !isMessage(found.family, rest)) {
            if (isWanted(call))
                sink_.remark({found.time, found.flow, Remark::kOctetsAfter, rest.size()});
            break;
        }
        CapturedMessage message = found;
        message.octets = rest;
        this->message(message);
        call = message.call;
        if (message.outcome != Outcome::kDecoded) break;
        rest = rest.subspan(message.octets.size());
    }
}

/// Decodes one message, passes it on and follows its announcements. `message.octets` becomes the
/// octets that the message took.
void MessageFinder::message(CapturedMessage& message) {
    decode(message, decoder_, facts_);
    identify(message);
    pass(message);
    if (message.outcome != Outcome::kDecoded) return;
    for (const Announcement& announcement : facts_.announcements)
        directory_.announce(announcement, message.flow.destination.address, message.call);
    if (message.family == FamilyId::kUi) directory_.noteCall(message.flow, message.call);
    if (!facts_.fastStart.empty() || !facts_.h245Control.empty()) carried(message);
}

void MessageFinder::decode(CapturedMessage& message, TamselDecoder& decoder, MessageFacts& facts) {
    message.encoding = message.octets;
    if (message.transport == Transport::kFastStart) {
        proposal_.assign(1, kOpenLogicalChannel);
        proposal_.insert(proposal_.end(), message.octets.begin(), message.octets.end());
        message.encoding = proposal_;
    }
    const size_t added = message.encoding.size() - message.octets.size();
    const AsnStatus status =
        decoder.decode(familyOf(modules_, message.family), message.encoding, true);
    readFacts(modules_, message.family, decoder, facts);
    if (status == kAsnOk) {
        message.decoder = &decoder;
        message.encoding = message.encoding.first(
            std::clamp<size_t>(decoder.octets(), 1, message.encoding.size()));
        message.octets = message.octets.first(message.encoding.size() - added);
    } else {
        message.outcome = Outcome::kRefused;
        message.reason = reasonOf(decoder, message.octets.size(), added);
        if (message.q931 != nullptr) facts.alternative = message.q931->name();
    }
    message.name = facts.name.empty() ? std::string_view(facts.alternative) : facts.name;
}

/// Sets the call of a message: the message names it, or an earlier message of the dialogue did.
void MessageFinder::identify(CapturedMessage& message) {
    const bool hasNumber = message.q931 != nullptr || facts_.sequenceNumber > 0;
    if (message.family == FamilyId::kH245 || !hasNumber) {
        if (!facts_.call.isEmpty()) message.call = facts_.call;
        return;
    }
    const Dialogue dialogue{std::min(message.flow.source, message.flow.destination),
                            std::max(message.flow.source, message.flow.destination),
                            message.q931 != nullptr ? kCallReference | message.q931->callReference
                                                    : facts_.sequenceNumber};
    const CallNames* const known = dialogues_.find(dialogue);
    if (facts_.call.isEmpty()) {
        // A request without a call begins another dialogue, which has the same number.
        if (known != nullptr && !facts_.isRequest) message.call = *known;
        if (known != nullptr && facts_.isRequest) dialogues_.put(dialogue, {});
        return;
    }
    message.call = facts_.call;
    if (known != nullptr) message.call.complete(*known);
    dialogues_.put(dialogue, message.call);
}

/// Decodes the H.245 messages that a call-signalling message carries, and passes them on.
void MessageFinder::carried(const CapturedMessage& message) {
    const auto take = [&](Transport transport, std::span<const uint8_t> octets) {
        CapturedMessage found{.time = message.time,
                              .frames = message.frames,
                              .flow = message.flow,
                              .transport = transport,
                              .family = FamilyId::kH245,
                              .octets = octets,
                              .name = {},
                              .call = message.call,
                              .reason = {}};
        decode(found, carriedDecoder_, carriedFacts_);
        pass(found);
        const size_t after = octets.size() - found.octets.size();
        if (after > 0 && isWanted(found.call))
            sink_.remark({found.time, found.flow, Remark::kOctetsAfter, after});
    };
    for (const auto proposal : facts_.fastStart) take(Transport::kFastStart, proposal);
    for (const auto tunnelled : facts_.h245Control) take(Transport::kTunnel, tunnelled);
}

void MessageFinder::pass(const CapturedMessage& message) {
    if (!isWanted(message.call)) return;
    if (conversation_ != nullptr) conversation_->wanted();
    sink_.message(message);
}
