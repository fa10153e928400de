// TPKT (RFC 1006, section 6): messages in a TCP stream, each behind a header of 4 octets.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

/// One direction of a stream, cut into messages.
class TpktReader {
  public:
    /// Who is told, in order. Spans are valid during the call.
    struct Receiver {
        /// Each message, without its header.
        std::function<void(std::span<const uint8_t>)> message;
        /// How many octets were passed over: what is no TPKT, or a part of one.
        std::function<void(size_t)> lost;
    };

    /// Takes the next octets of the stream, and gives out the messages that are whole with them.
    void read(std::span<const uint8_t> octets, const Receiver& receiver);

    /// Octets are missing here, or the stream began before: gives up a message that is not whole,
    /// and looks for the next header.
    void skip(const Receiver& receiver);

  private:
    bool findHeader(const Receiver& receiver);

    std::vector<uint8_t> held_;  // from a header on, where in step
    bool inStep_ = true;
};
