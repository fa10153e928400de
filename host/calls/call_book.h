// The calls of a capture, and what was said outside calls: gathered message by message.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "call_names.h"
#include "details.h"
#include "message.h"
#include "recent.h"

enum class CallState {
    kRequested,   // admission or a location was asked for
    kCalling,     // setup was sent
    kProceeding,  // the call is proceeding
    kAlerting,    // the called endpoint alerts its user
    kConnected,   // and not released in the capture
    kReleased,    // it was connected, and is over
    kRejected,    // the gatekeeper refused it
    kFailed,      // it ended without being connected, or no channel could be opened
};
/// "requested", "calling" and so on: as the list and JSON write them.
std::string_view toString(CallState state);

struct CallRecord {
    size_t number = 0;  // from 1, in order of the first message
    CallNames names;
    Time start = 0;
    Time end = 0;  // of the last message
    std::optional<Time> connected;
    std::string from;  // number or alias, as on the wire; empty if no message has told it
    std::string to;
    Address fromHost{};  // all zero if no host is known
    Address toHost{};
    CallState state = CallState::kRequested;
    std::string why;                  // why it ended, in words; text from the wire escaped
    std::optional<unsigned> cause;    // of Q.931
    std::string reason;               // of H.225.0: "calledPartyBusy"; empty if none
    std::vector<std::string> codecs;  // of channels that were acknowledged
    size_t messages = 0;
    size_t refused = 0;          // of them, those that did not decode
    size_t losses = 0;           // gaps, and octets that are no messages
    std::vector<Address> hosts;  // in order of appearance, at most kMaxHosts
    bool isShown = false;        // a message of it was selected
    bool isEnded() const { return state >= CallState::kReleased; }

    static constexpr size_t kMaxHosts = 64;
    static constexpr size_t kMaxCodecs = 16;

    // What it takes to know more when other messages come.
    /// A channel that waits for its acknowledgement.
    struct Offer {
        Address from{};
        int64_t channel = 0;
        std::string codec;
    };
    /// The codecs that a host told last.
    struct Side {
        Address host{};
        std::vector<std::string> codecs;
    };
    std::vector<Offer> offers;  // at most kMaxOffers
    std::vector<Side> sides;    // at most two
    std::string refusal;        // of a channel, of capabilities or of admission
    bool isReleased = false;    // by a releaseComplete
    bool isOffering = false;    // the last call-signalling message was a setup
    bool hasMedia = false;      // a channel was acknowledged
    bool hasAlerted = false;
    static constexpr size_t kMaxOffers = 32;
};

/// What one host said outside calls, or was told.
struct EndpointRecord {
    Address host{};
    std::string alias;       // of a registration, as on the wire
    std::string identifier;  // endpointIdentifier
    Address gatekeeper{};    // the one that answers it; all zero if none did
    Time start = 0;
    Time end = 0;
    std::string state;  // "registered", "rejected", "discovering"...
    std::string why;    // reason of the last reject
    size_t messages = 0;
    size_t refused = 0;    // of them, those that did not decode
    bool isShown = false;  // one of its messages was selected
};

/// Gathers calls and endpoints. Memory is bounded: of each call by the limits above, of all by
/// `limit`: if more calls are open, the oldest is given to `onForgotten` and forgotten.
class CallBook {
  public:
    static constexpr size_t kMaxCalls = 65536;
    static constexpr size_t kMaxEndpoints = 16384;

    explicit CallBook(size_t limit = kMaxCalls);

    /// Who takes the calls that there is no more room for, in order of their numbers.
    void onForgotten(std::function<void(const CallRecord&)> take) { take_ = std::move(take); }

    /// Notes a message of a call. Returns the call, valid until the next note.
    CallRecord* note(const CapturedMessage& message, const MessageDetails& details);

    /// Notes a message that belongs to no call. Returns its endpoint, which stays valid; null if
    /// there are kMaxEndpoints others.
    EndpointRecord* noteOutsideCalls(const CapturedMessage& message, const MessageDetails& details);

    /// Notes what a stream lacks. Returns the call of the stream's messages, or null.
    CallRecord* note(const CaptureRemark& remark);

    /// In order of their numbers.
    const std::deque<CallRecord>& calls() const { return calls_; }
    /// A call by its number; null if there is none, or it is forgotten.
    const CallRecord* find(size_t number) const {
        const bool isThere = number > forgotten_ && number - forgotten_ <= calls_.size();
        return isThere ? &calls_[number - forgotten_ - 1] : nullptr;
    }
    /// In order of their first messages.
    const std::deque<EndpointRecord>& endpoints() const { return endpoints_; }

    /// How many calls were forgotten.
    size_t forgotten() const { return forgotten_; }

  private:
    using Hosts = std::pair<Endpoint, Endpoint>;

    CallRecord& callOf(const CapturedMessage& message);
    CallRecord* findCall(const CallNames& names);
    void name(CallRecord& call, const CallNames& names);
    EndpointRecord* endpointAt(const Address& host, Time time);

    size_t limit_;
    size_t forgotten_ = 0;
    std::function<void(const CallRecord&)> take_;
    std::deque<CallRecord> calls_;  // calls_[0] has the number forgotten_ + 1
    std::map<Guid, size_t> byIdentifier_;
    std::map<Guid, size_t> byConference_;
    Recent<Hosts, size_t> byStream_;
    Recent<Hosts, size_t> earlyLosses_;  // remarks on streams that have no call yet
    std::deque<EndpointRecord> endpoints_;
    std::map<Address, size_t> byHost_;
};
