// Finds the UDP and TCP packets in a frame, through its layers and tunnels: link_layers.cpp has the
// layers below IP, ip_layers.cpp the others. The layers are read in place. libtins is not used for
// this, because it does not know GRE, ERSPAN, VXLAN, PPP and exported PDUs, and copies at each
// layer.
#pragma once

#include <span>
#include <string_view>

#include "endpoint.h"
#include "fragments.h"
#include "frame.h"
#include "unread.h"

/// A TCP segment.
struct Segment {
    uint32_t sequence = 0;
    uint32_t acknowledged = 0;  // the acknowledgement number; valid if `ack`
    bool syn = false;
    bool ack = false;
    bool fin = false;
    bool rst = false;
    std::span<const uint8_t> payload;
};

/// Receives the packets. Spans are valid during the call.
class PacketListener {
  public:
    virtual ~PacketListener() = default;
    virtual void segment(const Arrival& arrival, const Flow& flow, const Segment& segment) = 0;
    virtual void datagram(const Arrival& arrival, const Flow& flow,
                          std::span<const uint8_t> payload) = 0;
    /// A message that another program exported, with the name of its protocol. Returns false if the
    /// listener does not know the protocol.
    virtual bool exported(const Arrival& arrival, const Flow& flow, std::string_view protocol,
                          std::span<const uint8_t> payload) = 0;
};

class PacketReader {
  public:
    PacketReader(PacketListener& listener, Unread& unread)
        : listener_(listener), unread_(unread), fragments_(unread) {}

    /// Whether frames of a link type can be read.
    static bool knows(unsigned linkType);

    /// Reads a frame. What cannot be read is counted in `unread`.
    void frame(const Frame& frame);

    /// Must be called after the last frame.
    void end() { fragments_.end(); }

  private:
    /// The registry of numbers that says what the octets of a layer are.
    enum class Registry { kLinkType, kEtherType, kPpp, kIpProtocol };

    /// The octets of the next layer; empty if the frame has no more layers.
    struct Layer {
        Registry registry = Registry::kLinkType;
        unsigned number = 0;  // in the registry; of kPpp not used
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
    FrameId frame_;    // the current frame
    Arrival arrival_;  // of the innermost packet; its frames include those of other fragments
    Flow flow_;        // of the innermost IP packet
};
