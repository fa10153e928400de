#include "fragments.h"

#include <algorithm>

namespace {

/// A packet that is not complete after this time is given up. The oldest packet is given up if
/// there are more packets or octets than these.
constexpr Time kPacketLife = 30'000'000;
constexpr size_t kMaxPackets = 4096;
constexpr size_t kMaxOctets = 4 << 20;

constexpr size_t kMaxPacket = 65535;  // octets

/// Octets that a part costs in addition to its own.
constexpr size_t kPartCost = 96;

}  // namespace

std::span<const uint8_t> Fragments::add(const Key& key, Arrival& arrival, size_t offset, bool more,
                                        std::span<const uint8_t> octets) {
    if (octets.empty() || offset + octets.size() > kMaxPacket || (more && octets.size() % 8 != 0)) {
        unread_.count("malformed IP fragments");
        return {};
    }
    auto known = byKey_.find(key);
    if (known != byKey_.end() && known->second->first + kPacketLife < arrival.time) {
        giveUp(known->second);
        known = byKey_.end();
    }
    if (known == byKey_.end()) {
        packets_.push_back({.key = key, .first = arrival.time});
        known = byKey_.emplace(key, std::prev(packets_.end())).first;
    }
    Packet& packet = *known->second;
    const auto [part, isNew] = packet.parts.try_emplace(offset);
    if (isNew) {
        part->second.assign(octets.begin(), octets.end());
        packet.held += octets.size();
        packet.frames.insert(packet.frames.end(), arrival.frames.begin(), arrival.frames.end());
        held_ += octets.size() + kPartCost + arrival.frames.size_bytes();
    }
    if (!more) packet.size = offset + octets.size();
    if (packet.size > 0 && packet.held >= packet.size && join(packet)) {
        arrival.frames = wholeFrames_;
        remove(known->second);
        return whole_;
    }
    while (packets_.size() > kMaxPackets || held_ > kMaxOctets) giveUp(packets_.begin());
    return {};
}

/// Writes a packet to whole_. Returns false if a part is missing. If parts overlap, the octets of
/// the part with the smaller offset are used.
bool Fragments::join(const Packet& packet) {
    whole_.clear();
    for (const auto& [offset, octets] : packet.parts) {
        if (offset > whole_.size()) return false;
        const size_t known = whole_.size() - offset;
        if (known < octets.size())
            whole_.insert(whole_.end(), octets.begin() + static_cast<std::ptrdiff_t>(known),
                          octets.end());
    }
    if (whole_.size() < packet.size) return false;
    whole_.resize(packet.size);
    wholeFrames_ = packet.frames;
    std::sort(wholeFrames_.begin(), wholeFrames_.end());
    wholeFrames_.erase(std::unique(wholeFrames_.begin(), wholeFrames_.end()), wholeFrames_.end());
    return true;
}

void Fragments::remove(Packets::iterator packet) {
    held_ -=
        packet->held + packet->parts.size() * kPartCost + packet->frames.size() * sizeof(FrameId);
    byKey_.erase(packet->key);
    packets_.erase(packet);
}

void Fragments::giveUp(Packets::iterator packet) {
    unread_.count("IP fragments without the rest of their packet", packet->parts.size());
    remove(packet);
}

void Fragments::end() {
    while (!packets_.empty()) giveUp(packets_.begin());
}
