// What is found in a capture: messages, and remarks on streams.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "frame.h"
#include "message_facts.h"
#include "q931.h"

/// How a message was transported.
enum class Transport {
    kUdp,
    kTcp,
    kTunnel,     // in h245Control or parallelH245Control of a call-signalling message
    kFastStart,  // in fastStart: an H.245 OpenLogicalChannel, which is decoded as that request
};
std::string_view toString(Transport transport);

enum class Outcome {
    kDecoded,
    kRefused,  // it does not decode
    kBare,     // a Q.931 message that carries no H.225.0 message
};

/// A message that was found. Spans, views and pointers are valid during the call.
struct CapturedMessage {
    Time time = 0;                         // of the frame that completed it
    std::span<const FrameId> frames = {};  // that carried its octets, each once, in order
    Flow flow;
    Transport transport = Transport::kUdp;
    FamilyId family = FamilyId::kRas;
    std::span<const uint8_t> octets;         // as they were sent
    std::span<const uint8_t> encoding = {};  // what was decoded: the octets, and for kFastStart the
                                             // octet before them that makes them a request
    Outcome outcome = Outcome::kDecoded;
    std::string_view name;
    CallNames call;                     // of the message, or of its stream; empty if unknown
    std::string reason;                 // why it was refused
    const Q931Message* q931 = nullptr;  // the Q.931 message around it; null if there is none
    TamselDecoder* decoder = nullptr;   // holds the value, if it was decoded; else null

    /// The number, in its file, of the last frame that carried octets of the message; from 1. 0 if
    /// no frame is known.
    uint32_t frame() const { return frames.empty() ? 0 : frames.back().number; }
};

/// What is wrong with a stream.
enum class Remark {
    kOctetsMissing,     // the capture does not have some octets
    kOctetsPassedOver,  // some octets are no TPKT, or a part of one whose rest is missing
    kStartsMidway,      // the stream began before the capture
    kOctetsAfter,       // some octets follow a message, and are no message
};
constexpr size_t kRemarks = 4;

struct CaptureRemark {
    Time time = 0;
    Flow flow;
    Remark what = Remark::kOctetsMissing;
    size_t octets = 0;  // their number; of kStartsMidway 0
};

/// Receives what is found, in the order in which it was completed.
class MessageSink {
  public:
    virtual ~MessageSink() = default;
    virtual void message(const CapturedMessage& message) = 0;
    virtual void remark(const CaptureRemark& remark) = 0;
};
