// What is found in a capture, and who is told.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "frame.h"
#include "message_facts.h"
#include "q931.h"

/// How a message came.
enum class Transport {
    kUdp,
    kTcp,
    kTunnel,     // in h245Control or parallelH245Control of a call-signalling message
    kFastStart,  // in its fastStart: an H.245 OpenLogicalChannel, which is decoded as the request
};
std::string_view toString(Transport transport);

enum class Outcome {
    kDecoded,
    kRefused,  // it does not decode
    kBare,     // a Q.931 message that carries no H.225.0 message
};

/// One message found. The views are valid during the call.
struct CapturedMessage {
    Time time = 0;                         // when its last octets came
    std::span<const FrameId> frames = {};  // that carried its octets, each once, in order
    Flow flow;
    Transport transport = Transport::kUdp;
    FamilyId family = FamilyId::kRas;
    std::span<const uint8_t> octets;         // as they were sent
    std::span<const uint8_t> encoding = {};  // what was decoded: the octets; of a proposal in
                                             // fastStart, after the one that makes it a request
    Outcome outcome = Outcome::kDecoded;
    std::string_view name;
    CallNames call;                     // of the message, or of the stream that it came in
    std::string reason;                 // why it was refused
    const Q931Message* q931 = nullptr;  // what was around it; null if nothing was
    TamselDecoder* decoder = nullptr;   // holds the message, if it was decoded

    /// The number in its file of the frame that completed it, from 1; of all that carried its
    /// octets the last.
    uint32_t frame() const { return frames.empty() ? 0 : frames.back().number; }
};

/// What a stream holds besides messages, or lacks.
enum class Remark {
    kOctetsMissing,     // lost in the capture
    kOctetsPassedOver,  // no TPKT, or a part of one whose rest is missing
    kStartsMidway,      // the stream began before the capture
    kOctetsAfter,       // after a message, and no message themselves
};
constexpr size_t kRemarks = 4;

struct CaptureRemark {
    Time time = 0;
    Flow flow;
    Remark what = Remark::kOctetsMissing;
    size_t octets = 0;  // how many
};

class MessageSink {
  public:
    virtual ~MessageSink() = default;
    virtual void message(const CapturedMessage& message) = 0;
    virtual void remark(const CaptureRemark& remark) = 0;
};
