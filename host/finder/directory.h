// What addresses are used for, and for which call: from --port, from the messages that announce
// them, and from the registered ports.
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

/// What a flow is used for, and its call if that is known.
struct Known {
    Purpose purpose = Purpose::kNone;
    CallNames call;
    bool isGuess = false;  // not announced by a message, but datagrams of it decoded as RAS
};

class Directory {
  public:
    /// overrides: the purposes of ports that the user has set. They take precedence.
    explicit Directory(std::map<uint16_t, Purpose> overrides);

    /// Notes an announced address, and its call.
    ///   peer  the host that received the announcement, and that will connect. If two calls
    ///   announce
    ///         the same address, the peer tells to which of them a stream belongs.
    void announce(const Announcement& announcement, const Address& peer, const CallNames& call);

    /// Notes that both endpoints of a flow seem to use RAS.
    void guessRas(const Flow& flow);

    /// Notes a call that is signalled between the hosts of a flow.
    void noteCall(const Flow& flow, const CallNames& call);

    /// What a flow is used for; nothing if that is not known.
    std::optional<Known> find(Protocol protocol, const Flow& flow) const;

    /// The call that was signalled last between the hosts of a flow; null if there is none. Valid
    /// until the next noteCall.
    const CallNames* callBetween(const Flow& flow) const;

  private:
    /// A host that an address was announced to, and for which call.
    struct Told {
        Address peer{};
        CallNames call;
    };
    struct Entry {
        Purpose purpose = Purpose::kNone;
        bool isGuess = false;
        Told last;                 // the last announcement
        std::vector<Told> others;  // announcements to other hosts, oldest first
    };
    using Key = std::pair<Protocol, Endpoint>;

    std::optional<Known> findAnnounced(Protocol protocol, const Endpoint& endpoint,
                                       const Address& peer) const;

    std::map<uint16_t, Purpose> overrides_;
    Recent<Key, Entry> announced_;
    Recent<std::pair<Address, Address>, CallNames> calls_;
};
