#include <algorithm>
#include <array>
#include <cstdio>

#include "link_types.h"
#include "octets.h"
#include "packet_reader.h"

namespace {

constexpr unsigned kEthernet = 1;
constexpr unsigned kExportedPdu = 252;
constexpr unsigned kIpv4 = 0x0800;  // EtherTypes
constexpr unsigned kIpv6 = 0x86DD;
constexpr unsigned kTransparentEthernet = 0x6558;
constexpr size_t kEthernetHeader = 14;

/// Layers of a frame, at most. A frame with more of them is hostile: no network nests so deep.
constexpr int kMaxLayers = 32;

/// The header of a link type.
struct LinkHeader {
    /// What the header is followed by, or where it says that.
    enum Payload { kEtherTypeAt, kIpVersion, kPppProtocol, kPppoe };

    unsigned linkType;
    Payload payload;
    size_t size;        // octets
    size_t protocolAt;  // the position of the EtherType, if `payload` is kEtherTypeAt
};
constexpr LinkHeader kLinkHeaders[] = {
    {kEthernet, LinkHeader::kEtherTypeAt, 14, 12},
    {113, LinkHeader::kEtherTypeAt, 16, 14},  // Linux cooked
    {276, LinkHeader::kEtherTypeAt, 20, 0},   // Linux cooked, version 2
    {104, LinkHeader::kEtherTypeAt, 4, 2},    // Cisco HDLC
    {0, LinkHeader::kIpVersion, 4, 0},        // BSD loopback
    {108, LinkHeader::kIpVersion, 4, 0},      // OpenBSD loopback
    {12, LinkHeader::kIpVersion, 0, 0},       // IP without a link layer: five numbers
    {14, LinkHeader::kIpVersion, 0, 0},
    {101, LinkHeader::kIpVersion, 0, 0},
    {228, LinkHeader::kIpVersion, 0, 0},
    {229, LinkHeader::kIpVersion, 0, 0},
    {9, LinkHeader::kPppProtocol, 0, 0},           // PPP
    {50, LinkHeader::kPppProtocol, 0, 0},          // PPP in HDLC framing
    {166, LinkHeader::kPppProtocol, 4, 0},         // pppd, with the direction before it
    {204, LinkHeader::kPppProtocol, 1, 0},         // PPP, with the direction before it
    {51, LinkHeader::kPppoe, 0, 0},                // PPP over Ethernet
    {kExportedPdu, LinkHeader::kIpVersion, 0, 0},  // has tags instead of a header
};

const LinkHeader* findLinkHeader(unsigned linkType) {
    const auto* const found =
        std::find_if(std::begin(kLinkHeaders), std::end(kLinkHeaders),
                     [&](const LinkHeader& link) { return link.linkType == linkType; });
    return found != std::end(kLinkHeaders) ? found : nullptr;
}

/// Whether an EtherType never carries IP, so that its frames need not be counted as not read.
bool isWithoutIp(unsigned etherType) {
    constexpr unsigned kNames[] = {0x0806, 0x8035, 0x8863, 0x888E, 0x88CC, 0x9000};
    return std::find(std::begin(kNames), std::end(kNames), etherType) != std::end(kNames);
}

}  // namespace

bool PacketReader::knows(unsigned linkType) {
    return findLinkHeader(linkType) != nullptr;
}

void PacketReader::frame(const Frame& frame) {
    frame_ = frame.id;
    arrival_ = {frame.time, {&frame_, 1}};
    flow_ = {};
    if (frame.octets.size() < frame.length)
        unread_.count("frames that the capture has only a part of");
    Layer layer{Registry::kLinkType, frame.linkType, frame.octets};
    int layers = 0;
    while (!layer.octets.empty() && layers++ < kMaxLayers) layer = next(layer);
    if (!layer.octets.empty()) unread_.count("frames of more than 32 layers");
}

PacketReader::Layer PacketReader::next(const Layer& layer) {
    switch (layer.registry) {
        case Registry::kLinkType:
            return ofLink(layer);
        case Registry::kEtherType:
            return ofEtherType(layer);
        case Registry::kPpp:
            return ofPpp(layer);
        default:
            return ofIpProtocol(layer);
    }
}

PacketReader::Layer PacketReader::malformed() {
    unread_.count("frames with a malformed or cut header");
    return {};
}

PacketReader::Layer PacketReader::notRead(std::string_view what, unsigned number,
                                          const char* format) {
    std::array<char, 16> text{};
    const int size = std::snprintf(text.data(), text.size(), format, number);
    unread_.count(std::string(what) + " " + std::string(text.data(), static_cast<size_t>(size)));
    return {};
}

PacketReader::Layer PacketReader::ofLink(const Layer& layer) {
    const LinkHeader* const link = findLinkHeader(layer.number);
    if (link == nullptr) {
        unread_.count("frames of link type " + linkTypeName(layer.number));
        return {};
    }
    if (layer.number == kExportedPdu) return exportedPdu(layer.octets);
    if (layer.octets.size() <= link->size) return malformed();
    const auto payload = layer.octets.subspan(link->size);
    switch (link->payload) {
        case LinkHeader::kEtherTypeAt:
            return {Registry::kEtherType, be16(layer.octets, link->protocolAt), payload};
        case LinkHeader::kPppProtocol:
            return {Registry::kPpp, 0, payload};
        case LinkHeader::kPppoe:
            return {Registry::kEtherType, 0x8864, payload};
        default:
            return {Registry::kEtherType, payload[0] >> 4 == 6 ? kIpv6 : kIpv4, payload};
    }
}

PacketReader::Layer PacketReader::ofEtherType(const Layer& layer) {
    const auto octets = layer.octets;
    switch (layer.number) {
        case kIpv4:
        case kIpv6:
            return ip(octets);
        case 0x8100:  // VLAN tags
        case 0x88A8:
        case 0x9100:
        case 0x9200:
            if (octets.size() < 4) return malformed();
            return {Registry::kEtherType, be16(octets, 2), octets.subspan(4)};
        case 0x8847:  // MPLS, unicast and multicast
        case 0x8848:
            return mpls(octets);
        case 0x8864: {  // PPPoE session
            if (octets.size() < 8) return malformed();
            const size_t length = be16(octets, 4);
            return {Registry::kPpp, 0, octets.subspan(6, std::min(length, octets.size() - 6))};
        }
        case 0x880B:  // PPP, in GRE
            return {Registry::kPpp, 0, octets};
        case kTransparentEthernet:
            return {Registry::kLinkType, kEthernet, octets};
        case 0x88BE:  // ERSPAN type II
            if (octets.size() < 8) return malformed();
            return {Registry::kLinkType, kEthernet, octets.subspan(8)};
        case 0x22EB: {  // ERSPAN type III; if its last bit is set, 8 octets more follow
            const size_t header = octets.size() >= 12 && (octets[11] & 1) != 0 ? 20 : 12;
            if (octets.size() < header) return malformed();
            return {Registry::kLinkType, kEthernet, octets.subspan(header)};
        }
        default:
            if (isWithoutIp(layer.number)) return {};
            if (layer.number < 0x600) return llc(octets);
            return notRead("frames of EtherType", layer.number, "0x%04x");
    }
}

/// IEEE 802.2: such frames have a length in place of the EtherType.
PacketReader::Layer PacketReader::llc(std::span<const uint8_t> octets) {
    if (octets.size() < 3) return malformed();
    if (octets[0] == 0x42) return {};  // spanning tree
    const bool isSnap = octets[0] == 0xAA && octets[1] == 0xAA && octets[2] == 3;
    if (!isSnap) return notRead("frames of LLC service", octets[0], "0x%02x");
    if (octets.size() < 8) return malformed();
    if (be16(octets, 3) == 0 && (octets[5] == 0 || octets[5] == 0xF8))
        return {Registry::kEtherType, be16(octets, 6), octets.subspan(8)};
    return notRead("frames of SNAP protocol", be16(octets, 6), "0x%04x");
}

/// A stack of labels. They do not say what they carry, so it is guessed from the first octet.
PacketReader::Layer PacketReader::mpls(std::span<const uint8_t> octets) {
    bool isLast = false;
    while (!isLast) {
        if (octets.size() < 5) return malformed();
        isLast = (octets[2] & 1) != 0;
        octets = octets.subspan(4);
    }
    const unsigned version = octets[0] >> 4;
    if (version == 4 || version == 6) return ip(octets);
    // A pseudowire that carries Ethernet. It may have a control word, which begins with 0.
    if (version == 0 && octets.size() > 4) octets = octets.subspan(4);
    if (octets.size() < kEthernetHeader) return malformed();
    return {Registry::kLinkType, kEthernet, octets};
}

/// PPP from its protocol field on. In HDLC framing two octets precede that field.
PacketReader::Layer PacketReader::ofPpp(const Layer& layer) {
    auto octets = layer.octets;
    if (octets.size() >= 2 && octets[0] == 0xFF && octets[1] == 0x03) octets = octets.subspan(2);
    if (octets.size() < 2) return malformed();
    const bool isShort = (octets[0] & 1) != 0;  // a compressed protocol field: one octet
    const unsigned protocol = isShort ? octets[0] : be16(octets, 0);
    octets = octets.subspan(isShort ? 1 : 2);
    switch (protocol) {
        case 0x0021:  // IPv4 and IPv6
        case 0x0057:
            return octets.empty() ? malformed() : ip(octets);
        case 0x0281:  // MPLS
        case 0x0283:
            return mpls(octets);
        default:
            if (protocol >= 0x8000) return {};  // control protocols carry no packets
            return notRead("frames of PPP protocol", protocol, "0x%04x");
    }
}

/// A message that another program exported. Tags before it name its protocol and its addresses.
PacketReader::Layer PacketReader::exportedPdu(std::span<const uint8_t> octets) {
    std::string_view protocol;
    while (octets.size() >= 4) {
        const unsigned tag = be16(octets, 0);
        const size_t length = be16(octets, 2);
        octets = octets.subspan(4);
        if (octets.size() < length) return malformed();
        const auto value = octets.first(length);
        octets = octets.subspan(length);
        if (tag == 0) break;
        const bool isAddress = length == 4 || length == 16;
        if (tag == 12)
            protocol = {reinterpret_cast<const char*>(value.data()), value.size()};
        else if ((tag == 20 || tag == 22) && isAddress)
            flow_.source.address = makeAddress(value);
        else if ((tag == 21 || tag == 23) && isAddress)
            flow_.destination.address = makeAddress(value);
        else if (tag == 25 && length == 4)
            flow_.source.port = static_cast<uint16_t>(be32(value, 0));
        else if (tag == 26 && length == 4)
            flow_.destination.port = static_cast<uint16_t>(be32(value, 0));
    }
    protocol = protocol.substr(0, protocol.find('\0'));
    if (protocol == "ip" || protocol == "ipv6") return octets.empty() ? malformed() : ip(octets);
    if (protocol.starts_with("eth")) return {Registry::kLinkType, kEthernet, octets};
    if (!octets.empty() && !listener_.exported(arrival_, flow_, protocol, octets)) {
        std::string name(protocol.substr(0, 20));
        for (char& c : name)
            if (c < '!' || c > '~') c = '?';
        unread_.count("exported PDUs of protocol " + name);
    }
    return {};
}
