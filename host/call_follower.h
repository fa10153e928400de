// Finds H.323 messages in what a network carries, dumps them, and follows where the dumps lead.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "dump_reader.h"
#include "message_dump.h"
#include "network.h"
#include "recent.h"
#include "tpkt.h"

/// How a message came.
enum class Transport {
    kUdp,
    kTcp,
    kTunnel,     // in a call-signalling message's h245Control
    kFastStart,  // in its fastStart: an H.245 OpenLogicalChannel, which is no whole message
};
std::string_view toString(Transport transport);

/// One message found.
struct CapturedMessage {
    Time time = 0;
    Flow flow;
    Transport transport = Transport::kUdp;
    const Family* family = nullptr;
    std::span<const uint8_t> octets;
    std::optional<std::string_view> dump = {};  // none: refused, or not dumped (kFastStart)
    std::string_view name = {};                 // "setup"; empty where refused
    std::string_view call = {};                 // its call's identifier in hex, where it has one

    bool isRefused() const { return !dump && transport != Transport::kFastStart; }
};

/// What a stream holds besides messages, or lacks.
enum class Remark {
    kOctetsMissing,     // lost in the capture
    kOctetsPassedOver,  // no TPKT, or a part of one whose rest is missing
    kStartsMidway,      // the stream began before the capture
    kNoUserUser,        // a Q.931 message that carries no H.225.0 message
};
constexpr size_t kRemarks = 4;

struct CaptureRemark {
    Time time = 0;
    Flow flow;
    Remark what = Remark::kOctetsMissing;
    size_t octets = 0;  // for the first two
};

/// Where messages go. What is passed is valid during the call.
class MessageSink {
  public:
    virtual ~MessageSink() = default;
    virtual void message(const CapturedMessage& message) = 0;
    virtual void remark(const CaptureRemark& remark) = 0;
};

class CallFollower : public NetworkListener {
  public:
    /// call: the identifier of the only call to pass on, in lower-case hex, or how it starts; empty
    /// for all.
    CallFollower(MessageDumper& dumper, MessageSink& sink, std::string call);

    // NetworkListener
    bool wantsStream(const Flow& flow) override;
    void datagram(Time time, const Flow& flow, std::span<const uint8_t> octets) override;
    void streamOctets(Time time, const Flow& flow, std::span<const uint8_t> octets) override;
    void streamGap(Time time, const Flow& flow, size_t octets) override;
    void streamEnd(Time time, const Flow& flow) override;

  private:
    /// What an announced address is for, and whether the call that is looked for announced it.
    struct Announced {
        Purpose purpose = Purpose::kForRas;
        bool wanted = false;
    };
    /// What may tell a message's call where the message does not: two endpoints, and a call
    /// reference or a RAS sequence number.
    struct Dialogue {
        Endpoint one;
        Endpoint other;
        std::string number;

        auto operator<=>(const Dialogue&) const = default;
    };
    /// One direction of a stream that is read.
    struct Reading {
        Announced announced;
        TpktReader tpkt;
    };

    /// UDP and TCP have ports of their own.
    enum class Protocol { kUdp, kTcp };

    Reading& readingOf(const Flow& flow);
    std::optional<Announced> announcedFor(Protocol protocol, const Flow& flow) const;
    void signalling(Time time, const Flow& flow, std::span<const uint8_t> octets);
    void message(CapturedMessage message, bool wanted, const std::string& number);
    bool isWanted(const MessageFacts& facts, const Flow& flow, const std::string& number);
    TpktReader::Receiver receiver(Time time, const Flow& flow, const Announced& announced);

    MessageDumper& dumper_;
    MessageSink& sink_;
    std::string call_;
    Recent<std::pair<Protocol, Endpoint>, Announced> announced_;
    Recent<Dialogue, bool> wanted_;  // of the call that is looked for
    std::map<Flow, Reading> readings_;
};
