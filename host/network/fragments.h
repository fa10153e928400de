// IP packets put together from their fragments, of IPv4 and IPv6. libtins does it for IPv4 alone.
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

    /// What fragments of one packet have in common.
    struct Key {
        Address source;
        Address destination;
        uint32_t identification;  // of IPv4 with the protocol, which is a part of it

        auto operator<=>(const Key&) const = default;
    };

    /// Takes a fragment; `more` says that it is not the last. Returns the packet's payload if it is
    /// whole with this fragment, and adds its frames to `arrival`, or else returns nothing. Both
    /// are valid until the next call.
    std::span<const uint8_t> add(const Key& key, Arrival& arrival, size_t offset, bool more,
                                 std::span<const uint8_t> octets);

    /// Gives up all packets that are not whole.
    void end();

  private:
    struct Packet {
        Key key;
        Time first = 0;
        size_t size = 0;  // of the packet; 0 if its last fragment is missing
        size_t held = 0;  // octets in parts
        std::map<size_t, std::vector<uint8_t>> parts{};
        std::vector<FrameId> frames{};  // of the parts
    };
    using Packets = std::list<Packet>;

    void remove(Packets::iterator packet);
    void giveUp(Packets::iterator packet);
    bool join(const Packet& packet);

    Unread& unread_;
    Packets packets_;  // oldest first
    std::map<Key, Packets::iterator> byKey_;
    size_t held_ = 0;  // octets in all packets, and what their parts cost
    std::vector<uint8_t> whole_;
    std::vector<FrameId> wholeFrames_;
};
