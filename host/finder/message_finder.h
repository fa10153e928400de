// Finds H.323 messages in datagrams and streams, decodes them, and follows the addresses that they
// announce.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "directory.h"
#include "message.h"
#include "network.h"

struct FinderOptions {
    /// Only messages of this call are passed on: the first hex digits of its identifier, in lower
    /// case. Empty for all.
    std::string call;
    /// The purposes of ports that the user has set.
    std::map<uint16_t, Purpose> ports;
    /// The modules that messages are decoded with.
    const TamselModules* modules = &kTamsel2009;
};

class Conversation;

class MessageFinder : public NetworkListener {
  public:
    /// sink, budget, unread: must outlive the finder.
    MessageFinder(MessageSink& sink, MemoryBudget& budget, Unread& unread, FinderOptions options);

    // NetworkListener
    void datagram(const Arrival& arrival, const Flow& flow,
                  std::span<const uint8_t> octets) override;
    bool exported(const Arrival& arrival, const Flow& flow, std::string_view protocol,
                  std::span<const uint8_t> octets) override;
    std::unique_ptr<StreamReader> open(const Flow& flow) override;

    /// Reads the content of a TPKT of call signalling, or of H.245. The conversation is null if
    /// there is none.
    void signalling(const Arrival& arrival, const Flow& flow, std::span<const uint8_t> octets,
                    Conversation* conversation);
    void h245(const Arrival& arrival, const Flow& flow, std::span<const uint8_t> octets,
              const CallNames& call, Conversation* conversation);

    /// Whether octets are exactly one message, of a name that the modules know.
    bool isExactly(FamilyId family, std::span<const uint8_t> octets);

    const Directory& directory() const { return directory_; }
    MessageSink& sink() { return sink_; }
    MemoryBudget& budget() { return budget_; }
    Unread& unread() { return unread_; }

    /// Whether the messages of a call are passed on.
    bool isWanted(const CallNames& call) const { return call_.empty() || isNamed(call, call_); }
    /// Whether only the messages of one call are passed on.
    bool wantsOneCall() const { return !call_.empty(); }

  private:
    /// Messages with the same endpoints and the same number belong to the same call. So a message
    /// without an identifier gets its call from an earlier one.
    struct Dialogue {
        Endpoint one;
        Endpoint other;
        uint32_t number;  // a RAS sequence number, or kCallReference and a call reference

        auto operator<=>(const Dialogue&) const = default;
    };

    /// A datagram that decoded as RAS, between endpoints that are not known to use RAS.
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
    // Of messages in the message that decoder_ holds, and of guesses.
    TamselDecoder carriedDecoder_;
    MessageFacts carriedFacts_;
    std::vector<uint8_t> proposal_;         // a proposal of fastStart, made a whole request
    Conversation* conversation_ = nullptr;  // of the current message; null for a datagram
};
