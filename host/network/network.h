// From frames to what hosts sent each other: datagrams whole, streams in order.
#pragma once

#include "packet_reader.h"
#include "tcp_streams.h"

/// Who is told. Spans are valid during the call.
class NetworkListener : public StreamListener {
  public:
    virtual void datagram(const Arrival& arrival, const Flow& flow,
                          std::span<const uint8_t> octets) = 0;
    /// A message that another program cut out of a stream and named. Returns false if that protocol
    /// is not known.
    virtual bool exported(const Arrival& arrival, const Flow& flow, std::string_view protocol,
                          std::span<const uint8_t> octets) = 0;
};

class Network : private PacketListener {
  public:
    Network(NetworkListener& listener, MemoryBudget& budget, Unread& unread)
        : listener_(listener), reader_(*this, unread), streams_(listener, budget) {}

    void frame(const Frame& frame) {
        now_ = frame.time;
        reader_.frame(frame);
    }

    /// To be called when no more frames come: what is held back is passed on.
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
    Time now_ = 0;
};
