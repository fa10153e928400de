// What addresses are for, and whose call they belong to: as messages announce, as ports tell, as
// the user says.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "call_names.h"
#include "endpoint.h"
#include "message_facts.h"
#include "recent.h"

enum class Protocol { kUdp, kTcp };

/// What a flow is for, and its call if that is known.
struct Known {
    Purpose purpose = Purpose::kNone;
    CallNames call;
    bool isGuess = false;  // no message said so: datagrams there decoded as RAS
};

class Directory {
  public:
    /// overrides: ports whose purpose the user has told. They win over all else.
    explicit Directory(std::map<uint16_t, Purpose> overrides);

    /// Notes an address. `peer` is who received the announcement, and so who will connect: if two
    /// calls announce the same address, that tells which of them a stream belongs to.
    void announce(const Announcement& announcement, const Address& peer, const CallNames& call);

    /// Notes that both endpoints of a flow seem to speak RAS.
    void guessRas(const Flow& flow);

    /// Notes that a call is signalled between two hosts.
    void noteCall(const Flow& flow, const CallNames& call);

    /// What a flow is for, if that is known.
    std::optional<Known> find(Protocol protocol, const Flow& flow) const;

    /// The call signalled last between two hosts.
    const CallNames* callBetween(const Flow& flow) const;

  private:
    /// One who was told an address.
    struct Told {
        Address peer{};
        CallNames call;
    };
    struct Entry {
        Purpose purpose = Purpose::kNone;
        bool isGuess = false;
        Told last;
        std::vector<Told> others;  // other peers, oldest first
    };
    using Key = std::pair<Protocol, Endpoint>;

    std::optional<Known> findAnnounced(Protocol protocol, const Endpoint& endpoint,
                                       const Address& peer) const;

    std::map<uint16_t, Purpose> overrides_;
    Recent<Key, Entry> announced_;
    Recent<std::pair<Address, Address>, CallNames> calls_;
};
