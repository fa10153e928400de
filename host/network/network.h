// Turns frames into what hosts sent: whole datagrams, and TCP streams in order.
#pragma once

#include "packet_reader.h"
#include "tcp_streams.h"

/// Receives datagrams and streams. Spans are valid during the call.
class NetworkListener : public StreamListener {
  public:
    virtual void datagram(const Arrival& arrival, const Flow& flow,
                          std::span<const uint8_t> octets) = 0;
    /// A message that another program exported, with the name of its protocol. Returns false if the
    /// listener does not know the protocol.
    virtual bool exported(const Arrival& arrival, const Flow& flow, std::string_view protocol,
                          std::span<const uint8_t> octets) = 0;
};

class Network : private PacketListener {
  public:
    Network(NetworkListener& listener, MemoryBudget& budget, Unread& unread)
        : listener_(listener), reader_(*this, unread), streams_(listener, budget) {}

    /// Reads the next frame.
    void frame(const Frame& frame) {
        now_ = frame.time;
        reader_.frame(frame);
    }

    /// Must be called after the last frame. Passes on what is held.
    void end() {
        reader_.end();
        streams_.end(now_);
    }

  private:
    void segment(const Arrival& arrival, const Flow& flow, const Segment& segment) override {
        streams_.segment(arrival, flow, segment);
    }
    void datagram(const Arrival& arrival, const Flow& flow,
                  std::span<const uint8_t> payload) override {
        listener_.datagram(arrival, flow, payload);
    }
    bool exported(const Arrival& arrival, const Flow& flow, std::string_view protocol,
                  std::span<const uint8_t> payload) override {
        return listener_.exported(arrival, flow, protocol, payload);
    }

    NetworkListener& listener_;
    PacketReader reader_;
    TcpStreams streams_;
    Time now_ = 0;  // of the last frame
};
