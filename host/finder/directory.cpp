#include "directory.h"

namespace {

constexpr uint16_t kRasDiscoveryPort = 1718;
constexpr uint16_t kRasPort = 1719;
constexpr uint16_t kSignallingPort = 1720;

/// Limits of what is remembered: addresses, hosts that an address was announced to, and pairs of
/// hosts. Beyond them the oldest are forgotten.
constexpr size_t kMaxAnnounced = 32768;
constexpr size_t kMaxTold = 16;
constexpr size_t kMaxHosts = 16384;

bool hasPort(const Flow& flow, uint16_t port) {
    return flow.source.port == port || flow.destination.port == port;
}

Protocol protocolOf(Purpose purpose) {
    return purpose == Purpose::kRas ? Protocol::kUdp : Protocol::kTcp;
}

}  // namespace

Directory::Directory(std::map<uint16_t, Purpose> overrides)
    : overrides_(std::move(overrides)), announced_(kMaxAnnounced), calls_(kMaxHosts) {
}

void Directory::announce(const Announcement& announcement, const Address& peer,
                         const CallNames& call) {
    const Key key{protocolOf(announcement.purpose), announcement.endpoint};
    Entry* const known = announced_.find(key);
    if (known == nullptr) {
        announced_.put(key, {announcement.purpose, false, {peer, call}, {}});
        return;
    }
    known->purpose = announcement.purpose;
    known->isGuess = false;
    if (known->last.peer != peer) {
        std::erase_if(known->others, [&](const Told& told) { return told.peer == peer; });
        if (known->others.size() == kMaxTold) known->others.erase(known->others.begin());
        known->others.push_back(known->last);
    }
    known->last = {peer, call};
}

void Directory::guessRas(const Flow& flow) {
    for (const Endpoint& endpoint : {flow.source, flow.destination})
        if (announced_.find({Protocol::kUdp, endpoint}) == nullptr)
            announced_.put({Protocol::kUdp, endpoint}, {Purpose::kRas, true, {}, {}});
}

void Directory::noteCall(const Flow& flow, const CallNames& call) {
    calls_.put(std::minmax(flow.source.address, flow.destination.address), call);
}

const CallNames* Directory::callBetween(const Flow& flow) const {
    return calls_.find(std::minmax(flow.source.address, flow.destination.address));
}

std::optional<Known> Directory::findAnnounced(Protocol protocol, const Endpoint& endpoint,
                                              const Address& peer) const {
    const Entry* const entry = announced_.find({protocol, endpoint});
    if (entry == nullptr) return {};
    if (entry->last.peer != peer)
        for (const Told& told : entry->others)
            if (told.peer == peer) return Known{entry->purpose, told.call, entry->isGuess};
    return Known{entry->purpose, entry->last.call, entry->isGuess};
}

std::optional<Known> Directory::find(Protocol protocol, const Flow& flow) const {
    if (!overrides_.empty()) {
        for (const Endpoint& endpoint : {flow.destination, flow.source}) {
            const auto told = overrides_.find(endpoint.port);
            if (told == overrides_.end()) continue;
            const Purpose purpose = told->second;
            if (purpose == Purpose::kNone || protocolOf(purpose) == protocol)
                return Known{.purpose = purpose, .call = {}};
        }
    }
    if (auto known = findAnnounced(protocol, flow.destination, flow.source.address)) return known;
    if (auto known = findAnnounced(protocol, flow.source, flow.destination.address)) return known;
    if (protocol == Protocol::kUdp) {
        if (hasPort(flow, kRasPort) || hasPort(flow, kRasDiscoveryPort))
            return Known{.purpose = Purpose::kRas, .call = {}};
    } else if (hasPort(flow, kSignallingPort)) {
        return Known{.purpose = Purpose::kSignalling, .call = {}};
    }
    return {};
}
