#include "network.h"

#include <pcap/pcap.h>
#include <tins/ethernetII.h>
#include <tins/ip.h>
#include <tins/ipv6.h>
#include <tins/rawpdu.h>
#include <tins/tcp.h>
#include <tins/udp.h>

#include <algorithm>
#include <bit>

namespace {

using Tins::TCPIP::Stream;
using Tins::TCPIP::StreamIdentifier;

constexpr unsigned kIpv4 = 0x0800;  // EtherTypes
constexpr unsigned kIpv6 = 0x86DD;

/// libtins keeps fragments for ever. Packets in parts are given up after this time, and the oldest
/// also where there are more of them.
constexpr Time kFragmentLife = 30'000'000;
constexpr size_t kMaxFragmented = 4096;

/// A stream without a segment for so long is given up. Signalling is silent while people talk.
constexpr std::chrono::hours kStreamLife(24);

/// How a link type's header tells what it carries.
struct LinkHeader {
    int linkType;
    unsigned size;
    int protocolAt;  // where the EtherType stands; below 0 where IP's own version tells
};
constexpr LinkHeader kLinkHeaders[] = {
    {DLT_EN10MB, 14, 12}, {DLT_LINUX_SLL, 16, 14}, {DLT_LINUX_SLL2, 20, 0}, {DLT_RAW, 0, -1},
    {DLT_IPV4, 0, -1},    {DLT_IPV6, 0, -1},       {DLT_NULL, 4, -1},       {DLT_LOOP, 4, -1},
};

const LinkHeader* findLinkHeader(int linkType) {
    const auto* const found =
        std::find_if(std::begin(kLinkHeaders), std::end(kLinkHeaders),
                     [&](const LinkHeader& link) { return link.linkType == linkType; });
    return found != std::end(kLinkHeaders) ? found : nullptr;
}

Endpoint endpointOf(const Tins::IPv4Address& address, uint16_t port) {
    return makeEndpoint(std::bit_cast<std::array<uint8_t, 4>>(uint32_t{address}), port);
}

Endpoint endpointOf(const Tins::IPv6Address& address, uint16_t port) {
    return makeEndpoint({address.begin(), address.end()}, port);
}

/// UDP's or TCP's flow over the IP packet's addresses.
template <class Transport>
Flow flowOf(const Tins::PDU& packet, const Transport& transport) {
    if (const auto* ip = packet.find_pdu<Tins::IP>())
        return {endpointOf(ip->src_addr(), transport.sport()),
                endpointOf(ip->dst_addr(), transport.dport())};
    const auto& ip = packet.rfind_pdu<Tins::IPv6>();
    return {endpointOf(ip.src_addr(), transport.sport()),
            endpointOf(ip.dst_addr(), transport.dport())};
}

Flow clientFlow(const Stream& stream) {
    if (stream.is_v6())
        return {endpointOf(stream.client_addr_v6(), stream.client_port()),
                endpointOf(stream.server_addr_v6(), stream.server_port())};
    return {endpointOf(stream.client_addr_v4(), stream.client_port()),
            endpointOf(stream.server_addr_v4(), stream.server_port())};
}

/// How far a sequence number is ahead of another, round the clock.
int32_t ahead(uint32_t sequence, uint32_t of) {
    return static_cast<int32_t>(sequence - of);
}

/// The buffered segment that comes first behind the gap that a flow waits at.
auto behindGap(Tins::TCPIP::Flow& flow) {
    auto& buffered = flow.buffered_payload();
    return std::min_element(buffered.begin(), buffered.end(), [&](const auto& a, const auto& b) {
        return ahead(a.first, flow.sequence_number()) < ahead(b.first, flow.sequence_number());
    });
}

}  // namespace

Network::Network(NetworkListener& listener) : listener_(listener) {
    follower_.follow_partial_streams(true);
    follower_.stream_keep_alive(kStreamLife);
    follower_.new_stream_callback([this](Stream& stream) { follow(stream); });
    follower_.stream_termination_callback(
        [this](Stream& stream, Tins::TCPIP::StreamFollower::TerminationReason) { finish(stream); });
}

bool Network::knows(int linkType) {
    return findLinkHeader(linkType) != nullptr;
}

void Network::frame(int linkType, const Frame& frame) {
    const LinkHeader& link = *findLinkHeader(linkType);
    now_ = frame.time;
    if (frame.octets.size() < frame.length) ++losses_.cutFrames;
    std::span<const uint8_t> octets = frame.octets;
    if (octets.size() <= link.size) return;
    if (linkType != DLT_EN10MB) {
        unsigned protocol = octets[link.size] >> 4 == 6 ? kIpv6 : kIpv4;
        if (link.protocolAt >= 0) {
            const auto at = static_cast<size_t>(link.protocolAt);
            protocol = octets[at] * 256U + octets[at + 1];
        }
        ethernet_.assign(12, 0);  // two hardware addresses
        ethernet_.push_back(static_cast<uint8_t>(protocol >> 8));
        ethernet_.push_back(static_cast<uint8_t>(protocol));
        const auto rest = octets.subspan(link.size);
        ethernet_.insert(ethernet_.end(), rest.begin(), rest.end());
        octets = ethernet_;
    }
    try {
        Tins::Packet whole(
            new Tins::EthernetII(octets.data(), static_cast<uint32_t>(octets.size())),
            Tins::Timestamp(std::chrono::microseconds(now_)), Tins::Packet::own_pdu());
        if (isWhole(*whole.pdu())) packet(whole);
    } catch (const Tins::exception_base&) {
        ++losses_.malformedFrames;
    }
}

/// Whether a packet came in one, or is whole with this fragment.
bool Network::isWhole(Tins::PDU& packet) {
    const auto* ip = packet.find_pdu<Tins::IP>();
    if (ip == nullptr) {
        const auto* ipv6 = packet.find_pdu<Tins::IPv6>();
        const bool part = ipv6 != nullptr && ipv6->search_header(Tins::IPv6::FRAGMENT) != nullptr;
        losses_.ipv6Fragments += part;
        return ipv6 != nullptr && !part;
    }
    if (!ip->is_fragmented()) return true;
    const FragmentKey key(ip->id(), std::min(ip->src_addr(), ip->dst_addr()),
                          std::max(ip->src_addr(), ip->dst_addr()));
    auto open = fragments_.find(key);
    if (open != fragments_.end() && open->second.first + kFragmentLife < now_) {
        forget(open);
        open = fragments_.end();
    }
    if (reassembler_.process(packet) == Tins::IPv4Reassembler::REASSEMBLED) {
        if (open != fragments_.end()) fragments_.erase(open);
        return true;
    }
    if (open == fragments_.end()) {
        if (fragments_.size() == kMaxFragmented)
            forget(std::min_element(fragments_.begin(), fragments_.end(), [](auto& a, auto& b) {
                return a.second.first < b.second.first;
            }));
        open = fragments_.emplace(key, Fragments{.first = now_}).first;
    }
    ++open->second.count;
    return false;
}

void Network::forget(std::map<FragmentKey, Fragments>::iterator fragments) {
    const auto& [identification, one, other] = fragments->first;
    losses_.openFragments += fragments->second.count;
    reassembler_.remove_stream(identification, one, other);
    fragments_.erase(fragments);
}

void Network::packet(Tins::Packet& packet) {
    const Tins::PDU& pdu = *packet.pdu();
    if (const auto* tcp = pdu.find_pdu<Tins::TCP>()) {
        const Flow flow = flowOf(pdu, *tcp);
        if (listener_.wantsStream(flow)) segment(flow, packet);
    } else if (const auto* udp = pdu.find_pdu<Tins::UDP>()) {
        const auto* const payload = udp->find_pdu<Tins::RawPDU>();
        if (payload != nullptr) listener_.datagram(now_, flowOf(pdu, *udp), payload->payload());
    }
}

void Network::segment(const Flow& flow, Tins::Packet& packet) {
    const Tins::PDU& pdu = *packet.pdu();
    const auto& tcp = pdu.rfind_pdu<Tins::TCP>();
    const bool acknowledges = tcp.get_flag(Tins::TCP::ACK) != 0;
    const uint32_t acknowledged = tcp.ack_seq();
    const auto identifier = StreamIdentifier::make_identifier(pdu);
    const bool isBare = tcp.inner_pdu() == nullptr;
    // A bare acknowledgement tells the follower nothing.
    if (!isBare || tcp.flags() != Tins::TCP::ACK) follower_.process_packet(packet);

    // What a host acknowledges has reached it. Where the capture has it not, it will not come.
    const auto stream = streams_.find(identifier);
    if (stream == streams_.end() || !acknowledges) return;
    const bool byClient = clientFlow(*stream->second) == flow;
    Tins::TCPIP::Flow& other =
        byClient ? stream->second->server_flow() : stream->second->client_flow();
    while (!other.buffered_payload().empty() && ahead(acknowledged, behindGap(other)->first) > 0)
        skipGap(flow.reversed(), other);
}

void Network::follow(Stream& stream) {
    streams_[StreamIdentifier::make_identifier(stream)] = &stream;
    stream.client_data_callback([this](Stream& from) {
        listener_.streamOctets(now_, clientFlow(from), from.client_payload());
    });
    stream.server_data_callback([this](Stream& from) {
        listener_.streamOctets(now_, clientFlow(from).reversed(), from.server_payload());
    });
    if (stream.is_partial_stream()) {
        listener_.streamGap(now_, clientFlow(stream), 0);
        listener_.streamGap(now_, clientFlow(stream).reversed(), 0);
    }
    stream.stream_closed_callback([this](Stream& closed) { finish(closed); });
}

/// Gives up what a flow waits for, and hands it the segment behind.
void Network::skipGap(const Flow& flow, Tins::TCPIP::Flow& from) {
    const auto behind = behindGap(from);
    Tins::TCP segment;
    segment.seq(behind->first);
    segment.inner_pdu(new Tins::RawPDU(behind->second));
    const int32_t octets = ahead(segment.seq(), from.sequence_number());
    if (octets > 0) listener_.streamGap(now_, flow, static_cast<size_t>(octets));
    from.advance_sequence(segment.seq());
    from.process_packet(segment);
}

void Network::finish(Stream& stream) {
    const Flow flow = clientFlow(stream);
    while (!stream.client_flow().buffered_payload().empty()) skipGap(flow, stream.client_flow());
    while (!stream.server_flow().buffered_payload().empty())
        skipGap(flow.reversed(), stream.server_flow());
    listener_.streamEnd(now_, flow);
    listener_.streamEnd(now_, flow.reversed());
    streams_.erase(StreamIdentifier::make_identifier(stream));
}

void Network::end() {
    while (!streams_.empty()) finish(*streams_.begin()->second);
    while (!fragments_.empty()) forget(fragments_.begin());
}
