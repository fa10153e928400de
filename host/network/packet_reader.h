// From a frame to the UDP and TCP packets in it, through whatever layers and tunnels are between:
// link_layers.cpp has those below IP, ip_layers.cpp the others. The layers are read in place.
// libtins knows neither GRE, ERSPAN, VXLAN, PPP nor exported PDUs, and copies at each layer.
#pragma once

#include <span>
#include <string_view>

#include "endpoint.h"
#include "fragments.h"
#include "frame.h"
#include "unread.h"

/// What a TCP header says.
struct Segment {
    uint32_t sequence = 0;
    uint32_t acknowledged = 0;
    bool syn = false;
    bool ack = false;
    bool fin = false;
    bool rst = false;
    std::span<const uint8_t> payload;
};

/// Who is told. Spans are valid during the call.
class PacketListener {
  public:
    virtual ~PacketListener() = default;
    virtual void segment(const Arrival& arrival, const Flow& flow, const Segment& segment) = 0;
    virtual void datagram(const Arrival& arrival, const Flow& flow,
                          std::span<const uint8_t> payload) = 0;
    /// A message that another program cut out of a stream and named.
    /// Returns false if that protocol is not known.
    virtual bool exported(const Arrival& arrival, const Flow& flow, std::string_view protocol,
                          std::span<const uint8_t> payload) = 0;
};

class PacketReader {
  public:
    PacketReader(PacketListener& listener, Unread& unread)
        : listener_(listener), unread_(unread), fragments_(unread) {}

    /// Whether frames of that link type can be read.
    static bool knows(unsigned linkType);

    void frame(const Frame& frame);

    /// To be called when no more frames come.
    void end() { fragments_.end(); }

  private:
    /// The registry that tells what the octets of a layer are.
    enum class Registry { kLinkType, kEtherType, kPpp, kIpProtocol };

    /// The octets that are read next; none if the frame has no more layers.
    struct Layer {
        Registry registry = Registry::kLinkType;
        unsigned number = 0;
        std::span<const uint8_t> octets;
    };

    Layer next(const Layer& layer);
    Layer malformed();
    Layer notRead(std::string_view what, unsigned number, const char* format);

    // link_layers.cpp
    Layer ofLink(const Layer& layer);
    Layer ofEtherType(const Layer& layer);
    Layer ofPpp(const Layer& layer);
    Layer llc(std::span<const uint8_t> octets);
    Layer mpls(std::span<const uint8_t> octets);
    Layer exportedPdu(std::span<const uint8_t> octets);

    // ip_layers.cpp
    Layer ofIpProtocol(const Layer& layer);
    Layer ip(std::span<const uint8_t> octets);
    Layer ipv4(std::span<const uint8_t> octets);
    Layer ipv6(std::span<const uint8_t> octets);
    Layer gre(std::span<const uint8_t> octets);
    Layer udp(std::span<const uint8_t> octets);
    Layer tcp(std::span<const uint8_t> octets);

    PacketListener& listener_;
    Unread& unread_;
    Fragments fragments_;
    FrameId frame_;    // at hand
    Arrival arrival_;  // of the innermost packet: in that frame, and those of its fragments
    Flow flow_;        // of the innermost IP packet
};
