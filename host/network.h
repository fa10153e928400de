// From frames to what hosts sent each other: datagrams whole, streams in order. IP reassembly and
// TCP are libtins'.
#pragma once

#include <tins/ip_reassembler.h>
#include <tins/packet.h>
#include <tins/tcp_ip/stream_follower.h>

#include <map>
#include <tuple>
#include <vector>

#include "capture_file.h"
#include "endpoint.h"

/// One direction of a conversation.
struct Flow {
    Endpoint source;
    Endpoint destination;

    auto operator<=>(const Flow&) const = default;
    Flow reversed() const { return {destination, source}; }
};

/// Who is told. Spans are valid during the call.
class NetworkListener {
  public:
    virtual ~NetworkListener() = default;

    /// Whether a TCP stream is to be followed; asked for each of its segments.
    virtual bool wantsStream(const Flow& flow) = 0;
    virtual void datagram(Time time, const Flow& flow, std::span<const uint8_t> octets) = 0;
    /// The next octets of a stream.
    virtual void streamOctets(Time time, const Flow& flow, std::span<const uint8_t> octets) = 0;
    /// That many octets of a stream come next that the capture has not; 0 where the stream began
    /// before the capture, and nobody can tell.
    virtual void streamGap(Time time, const Flow& flow, size_t octets) = 0;
    /// No more comes: the stream has ended, or the captures have.
    virtual void streamEnd(Time time, const Flow& flow) = 0;
};

/// What could not be followed.
struct NetworkLosses {
    size_t cutFrames = 0;        // the capture has only a part of them
    size_t malformedFrames = 0;  // no IP packet where there should be one
    size_t openFragments = 0;    // IPv4 fragments whose others never came
    size_t ipv6Fragments = 0;    // never reassembled
};

class Network {
  public:
    explicit Network(NetworkListener& listener);

    /// Whether frames of that libpcap link type can be read.
    static bool knows(int linkType);

    void frame(int linkType, const Frame& frame);

    /// To be called when no more frames come: what streams hold back is given out.
    void end();

    const NetworkLosses& losses() const { return losses_; }

  private:
    using Stream = Tins::TCPIP::Stream;

    /// IPv4 fragments of one packet that wait for the rest.
    struct Fragments {
        size_t count = 0;
        Time first = 0;
    };
    /// As libtins tells packets apart: identification, addresses.
    using FragmentKey = std::tuple<uint16_t, Tins::IPv4Address, Tins::IPv4Address>;

    bool isWhole(Tins::PDU& packet);
    void packet(Tins::Packet& packet);
    void segment(const Flow& flow, Tins::Packet& packet);
    void follow(Stream& stream);
    void skipGap(const Flow& flow, Tins::TCPIP::Flow& from);
    void finish(Stream& stream);
    void forget(std::map<FragmentKey, Fragments>::iterator fragments);

    NetworkListener& listener_;
    Tins::IPv4Reassembler reassembler_;
    std::map<FragmentKey, Fragments> fragments_;  // those of reassembler_
    Tins::TCPIP::StreamFollower follower_;
    std::map<Tins::TCPIP::StreamIdentifier, Stream*> streams_;  // those of follower_
    Time now_ = 0;
    std::vector<uint8_t> ethernet_;  // a frame of another link type, in the form of Ethernet
    NetworkLosses losses_;
};
