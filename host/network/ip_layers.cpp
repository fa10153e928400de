#include <algorithm>

#include "octets.h"
#include "packet_reader.h"

namespace {

constexpr unsigned kTcp = 6;
constexpr unsigned kUdp = 17;
constexpr unsigned kGre = 47;

constexpr unsigned kVxlanPorts[] = {4789, 8472};  // the registered port, and the older one of Linux
constexpr unsigned kGenevePort = 6081;

/// Whether a protocol carries no packets of other protocols: ICMP, IGMP, OSPF, PIM, VRRP.
bool isWithoutPackets(unsigned protocol) {
    constexpr unsigned kNumbers[] = {1, 2, 58, 59, 89, 103, 112};
    return std::find(std::begin(kNumbers), std::end(kNumbers), protocol) != std::end(kNumbers);
}

/// Whether a protocol number is that of an IPv6 extension header that can be skipped (RFC 8200,
/// section 4).
bool isExtension(unsigned protocol) {
    constexpr unsigned kNumbers[] = {0, 43, 60, 135, 139, 140};
    return std::find(std::begin(kNumbers), std::end(kNumbers), protocol) != std::end(kNumbers);
}

}  // namespace

PacketReader::Layer PacketReader::ip(std::span<const uint8_t> octets) {
    if (octets.empty()) return malformed();
    if (octets[0] >> 4 == 4) return ipv4(octets);
    if (octets[0] >> 4 == 6) return ipv6(octets);
    return malformed();
}

PacketReader::Layer PacketReader::ipv4(std::span<const uint8_t> octets) {
    if (octets.size() < 20) return malformed();
    const size_t header = (octets[0] & 15U) * 4;
    // The length is 0 in frames that a host captured before its network card segmented them.
    const size_t total = be16(octets, 2) != 0 ? be16(octets, 2) : octets.size();
    if (header < 20 || total < header || octets.size() < header) return malformed();
    const unsigned fragment = be16(octets, 6);
    const size_t offset = (fragment & 0x1FFF) * size_t{8};
    const bool more = (fragment & 0x2000) != 0;
    const unsigned protocol = octets[9];
    flow_.source.address = makeAddress(octets.subspan(12, 4));
    flow_.destination.address = makeAddress(octets.subspan(16, 4));
    const bool isCut = total > octets.size();
    auto payload = octets.first(std::min(total, octets.size())).subspan(header);
    if (offset != 0 || more) {
        if (isCut) return malformed();
        payload = fragments_.add(
            {flow_.source.address, flow_.destination.address, protocol << 16 | be16(octets, 4)},
            arrival_, offset, more, payload);
    }
    return {Registry::kIpProtocol, protocol, payload};
}

PacketReader::Layer PacketReader::ipv6(std::span<const uint8_t> octets) {
    if (octets.size() < 40) return malformed();
    size_t length = be16(octets, 4);
    if (length == 0) length = octets.size() - 40;  // a jumbogram, or not segmented yet
    const bool isCut = length > octets.size() - 40;
    unsigned protocol = octets[6];
    flow_.source.address = makeAddress(octets.subspan(8, 16));
    flow_.destination.address = makeAddress(octets.subspan(24, 16));
    octets = octets.subspan(40, std::min(length, octets.size() - 40));
    while (isExtension(protocol) || protocol == 44) {
        if (octets.size() < 8) return malformed();
        const unsigned now = protocol;
        protocol = octets[0];
        if (now != 44) {
            const size_t size = (octets[1] + size_t{1}) * 8;
            if (octets.size() < size) return malformed();
            octets = octets.subspan(size);
            continue;
        }
        const unsigned fragment = be16(octets, 2);
        const uint32_t identification = be32(octets, 4);
        const bool isAtomic = (fragment & ~6U) == 0;  // RFC 6946: the only fragment
        octets = octets.subspan(8);
        if (isAtomic) continue;
        if (isCut) return malformed();
        octets = fragments_.add({flow_.source.address, flow_.destination.address, identification},
                                arrival_, fragment & ~7U, (fragment & 1) != 0, octets);
        if (octets.empty()) return {};
    }
    return {Registry::kIpProtocol, protocol, octets};
}

PacketReader::Layer PacketReader::ofIpProtocol(const Layer& layer) {
    const auto octets = layer.octets;
    switch (layer.number) {
        case kTcp:
            return tcp(octets);
        case kUdp:
            return udp(octets);
        case 4:   // IPv4 in IP
        case 41:  // IPv6 in IP
            return ip(octets);
        case kGre:
            return gre(octets);
        case 51: {  // authentication header
            const size_t size = octets.size() >= 2 ? (octets[1] + size_t{2}) * 4 : 0;
            if (size < 12 || octets.size() < size) return malformed();
            return {Registry::kIpProtocol, octets[0], octets.subspan(size)};
        }
        case 137:  // MPLS
            return {Registry::kEtherType, 0x8847, octets};
        default:
            if (isWithoutPackets(layer.number)) return {};
            return notRead("packets of IP protocol", layer.number, "%u");
    }
}

/// GRE (RFC 2784, RFC 2890), and the version 1 of PPTP (RFC 2637).
PacketReader::Layer PacketReader::gre(std::span<const uint8_t> octets) {
    if (octets.size() < 4) return malformed();
    const unsigned flags = be16(octets, 0);
    const unsigned protocol = be16(octets, 2);
    const unsigned version = flags & 7;
    if (version > 1 || (flags & 0x4000) != 0)
        return notRead("GRE packets of form", flags, "0x%04x");
    const bool hasSequence = (flags & 0x1000) != 0;
    size_t header = 4;
    if ((flags & 0x8000) != 0) header += 4;  // checksum
    if ((flags & 0x2000) != 0) header += 4;  // key
    if (hasSequence) header += 4;
    if (version == 1 && (flags & 0x0080) != 0) header += 4;  // acknowledgement
    if (octets.size() < header) return malformed();
    const auto payload = octets.subspan(header);
    // ERSPAN type I has neither a sequence number nor a header of its own.
    if (protocol == 0x88BE && !hasSequence) return {Registry::kLinkType, 1, payload};
    return {Registry::kEtherType, protocol, payload};
}

PacketReader::Layer PacketReader::udp(std::span<const uint8_t> octets) {
    if (octets.size() < 8) return malformed();
    flow_.source.port = static_cast<uint16_t>(be16(octets, 0));
    flow_.destination.port = static_cast<uint16_t>(be16(octets, 2));
    const size_t length = be16(octets, 4) >= 8 ? be16(octets, 4) : octets.size();
    const auto payload = octets.first(std::min(length, octets.size())).subspan(8);
    const unsigned port = flow_.destination.port;
    const bool isVxlan =
        std::find(std::begin(kVxlanPorts), std::end(kVxlanPorts), port) != std::end(kVxlanPorts);
    if (isVxlan && payload.size() > 8 && (payload[0] & 0x08) != 0)
        return {Registry::kLinkType, 1, payload.subspan(8)};
    if (port == kGenevePort && payload.size() > 8 && payload[0] >> 6 == 0) {
        const size_t header = 8 + (payload[0] & 0x3FU) * 4;
        if (payload.size() < header) return malformed();
        return {Registry::kEtherType, be16(payload, 2), payload.subspan(header)};
    }
    if (!payload.empty()) listener_.datagram(arrival_, flow_, payload);
    return {};
}

PacketReader::Layer PacketReader::tcp(std::span<const uint8_t> octets) {
    if (octets.size() < 20) return malformed();
    const size_t header = (octets[12] >> 4) * size_t{4};
    if (header < 20 || octets.size() < header) return malformed();
    flow_.source.port = static_cast<uint16_t>(be16(octets, 0));
    flow_.destination.port = static_cast<uint16_t>(be16(octets, 2));
    const unsigned flags = octets[13];
    listener_.segment(arrival_, flow_,
                      {.sequence = be32(octets, 4),
                       .acknowledged = be32(octets, 8),
                       .syn = (flags & 2) != 0,
                       .ack = (flags & 16) != 0,
                       .fin = (flags & 1) != 0,
                       .rst = (flags & 4) != 0,
                       .payload = octets.subspan(header)});
    return {};
}
