// Finds H.323 messages in what a network carries, decodes them, and follows where they lead.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "directory.h"
#include "message.h"
#include "network.h"

struct FinderOptions {
    /// The only call to pass on: how its identifier starts, in lower-case hex. Empty for all.
    std::string call;
    /// What the user says of ports.
    std::map<uint16_t, Purpose> ports;
    /// What messages are decoded with.
    const TamselModules* modules = &kTamsel2009;
};

class Conversation;

class MessageFinder : public NetworkListener {
  public:
    MessageFinder(MessageSink& sink, MemoryBudget& budget, Unread& unread, FinderOptions options);

    // NetworkListener
    void datagram(const Arrival& arrival, const Flow& flow,
                  std::span<const uint8_t> octets) override;
    bool exported(const Arrival& arrival, const Flow& flow, std::string_view protocol,
                  std::span<const uint8_t> octets) override;
    std::unique_ptr<StreamReader> open(const Flow& flow) override;

    /// The content of one TPKT, and the conversation that it is of.
    void signalling(const Arrival& arrival, const Flow& flow, std::span<const uint8_t> octets,
                    Conversation* conversation);
    void h245(const Arrival& arrival, const Flow& flow, std::span<const uint8_t> octets,
              const CallNames& call, Conversation* conversation);

    /// Whether octets are exactly one message, of a kind that is known.
    bool isExactly(FamilyId family, std::span<const uint8_t> octets);

    const Directory& directory() const { return directory_; }
    MessageSink& sink() { return sink_; }
    MemoryBudget& budget() { return budget_; }
    Unread& unread() { return unread_; }

    /// Whether a call is looked for, and whether this is it.
    bool isWanted(const CallNames& call) const { return call_.empty() || isNamed(call, call_); }
    bool wantsOneCall() const { return !call_.empty(); }

  private:
    /// What may tell a message's call if the message does not: two endpoints, and a call reference
    /// or a RAS sequence number.
    struct Dialogue {
        Endpoint one;
        Endpoint other;
        uint32_t number;

        auto operator<=>(const Dialogue&) const = default;
    };

    /// A datagram that decoded as RAS at an address that is not known for it.
    struct Guess {
        Time time = 0;
        Flow flow;
        uint32_t sequenceNumber = 0;
        std::vector<FrameId> frames;
        std::vector<uint8_t> octets;
    };

    void guess(const Arrival& arrival, const Flow& flow, std::span<const uint8_t> octets);
    void ras(const Arrival& arrival, const Flow& flow, std::span<const uint8_t> octets);
    bool isMessage(FamilyId family, std::span<const uint8_t> octets);
    void messages(const CapturedMessage& found);
    void message(CapturedMessage& message);
    void decode(CapturedMessage& message, TamselDecoder& decoder, MessageFacts& facts);
    void identify(CapturedMessage& message);
    void carried(const CapturedMessage& message);
    void pass(const CapturedMessage& message);

    MessageSink& sink_;
    MemoryBudget& budget_;
    Unread& unread_;
    const TamselModules& modules_;
    std::string call_;
    Directory directory_;
    Recent<Dialogue, CallNames> dialogues_;
    Recent<std::pair<Endpoint, Endpoint>, Guess> guesses_;
    TamselDecoder decoder_;
    MessageFacts facts_;
    TamselDecoder carriedDecoder_;  // of messages in a message, whose octets decoder_ holds
    MessageFacts carriedFacts_;
    std::vector<uint8_t> proposal_;         // the request that a proposal of fastStart is
    Conversation* conversation_ = nullptr;  // of the message at hand; null for a datagram
};
