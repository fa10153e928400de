// Reassembles IPv4 and IPv6 packets from their fragments. libtins does this only for IPv4.
#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <span>
#include <vector>

#include "endpoint.h"
#include "frame.h"
#include "unread.h"

class Fragments {
  public:
    explicit Fragments(Unread& unread) : unread_(unread) {}

    /// What all fragments of a packet have in common.
    struct Key {
        Address source;
        Address destination;
        uint32_t identification;  // IPv4: with the protocol in the upper 16 bits

        auto operator<=>(const Key&) const = default;
    };

    /// Takes a fragment. If it completes its packet, returns the payload of the packet, and sets
    /// the frames of `arrival` to all frames of the packet; both are valid until the next call.
    /// Otherwise returns nothing.
    ///   offset  of the fragment in the payload, in octets
    ///   more    whether another fragment follows it
    std::span<const uint8_t> add(const Key& key, Arrival& arrival, size_t offset, bool more,
                                 std::span<const uint8_t> octets);

    /// Gives up all packets that are not complete.
    void end();

  private:
    struct Packet {
        Key key;
        Time first = 0;
        size_t size = 0;  // octets of the payload; 0 until the last fragment has come
        size_t held = 0;  // octets in parts
        std::map<size_t, std::vector<uint8_t>> parts{};  // by offset
        std::vector<FrameId> frames{};                   // of the parts
    };
    using Packets = std::list<Packet>;

    void remove(Packets::iterator packet);
    void giveUp(Packets::iterator packet);
    bool join(const Packet& packet);

    Unread& unread_;
    Packets packets_;  // oldest first
    std::map<Key, Packets::iterator> byKey_;
    size_t held_ = 0;             // octets in all packets, with the costs of their parts
    std::vector<uint8_t> whole_;  // the payload returned last, and its frames
    std::vector<FrameId> wholeFrames_;
};
