// The calls of a capture, and the endpoints that sent messages outside calls.
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
    kConnected,   // the call was connected, and the capture does not have its end
    kReleased,    // the call was connected, and has ended
    kRejected,    // the gatekeeper rejected the call
    kFailed,      // the call ended without being connected, or no channel could be opened
};
/// "requested", "calling" and so on, as in the list and in JSON.
std::string_view toString(CallState state);

struct CallRecord {
    size_t number = 0;  // from 1, in order of the first message
    CallNames names;
    Time start = 0;
    Time end = 0;  // of the last message
    std::optional<Time> connected;
    std::string from;  // number or alias, as on the wire; empty if no message has it
    std::string to;
    Address fromHost{};  // all zero if no host is known
    Address toHost{};
    CallState state = CallState::kRequested;
    std::string why;                  // why it ended; text from the wire is escaped
    std::optional<unsigned> cause;    // of Q.931
    std::string reason;               // of H.225.0: "calledPartyBusy"; empty if none
    std::vector<std::string> codecs;  // of channels that were acknowledged
    size_t messages = 0;
    size_t refused = 0;          // messages that did not decode
    size_t losses = 0;           // remarks: gaps, and octets that are no messages
    std::vector<Address> hosts;  // in order of appearance, at most kMaxHosts
    bool isShown = false;        // a message of the call was selected
    bool isEnded() const { return state >= CallState::kReleased; }

    static constexpr size_t kMaxHosts = 64;
    static constexpr size_t kMaxCodecs = 16;

    // For call_progress.h:

    /// A channel that waits for its acknowledgement.
    struct Offer {
        Address from{};       // the host that opens it
        int64_t channel = 0;  // the logical channel number
        std::string codec;
    };
    /// The last capabilities of a host.
    struct Side {
        Address host{};
        std::vector<std::string> codecs;
    };
    std::vector<Offer> offers;  // at most kMaxOffers
    std::vector<Side> sides;    // at most two
    std::string refusal;        // the last one of a channel, of capabilities or of admission
    bool isReleased = false;    // by a releaseComplete
    bool isOffering = false;    // the last call-signalling message was a setup
    bool hasMedia = false;      // a channel was acknowledged
    bool hasAlerted = false;
    static constexpr size_t kMaxOffers = 32;
};

/// An endpoint, and the messages outside calls that it sent or received.
struct EndpointRecord {
    Address host{};
    std::string alias;       // the first one of a registration, as on the wire
    std::string identifier;  // endpointIdentifier
    Address gatekeeper{};    // the last one that answered; all zero if none did
    Time start = 0;
    Time end = 0;
    std::string state;  // "registered", "rejected", "discovering"...
    std::string why;    // reason of the last reject
    size_t messages = 0;
    size_t refused = 0;    // messages that did not decode
    bool isShown = false;  // a message of the endpoint was selected
};

/// Collects calls and endpoints from messages. Its memory is bounded by the limits above and below.
class CallBook {
  public:
    static constexpr size_t kMaxCalls = 65536;
    static constexpr size_t kMaxEndpoints = 16384;

    /// limit: of calls. If there are more, the oldest is forgotten.
    explicit CallBook(size_t limit = kMaxCalls);

    /// Sets the function that receives each call before it is forgotten, in order of their numbers.
    void onForgotten(std::function<void(const CallRecord&)> take) { take_ = std::move(take); }

    /// Notes a message of a call. Returns the call, valid until the next note.
    CallRecord* note(const CapturedMessage& message, const MessageDetails& details);

    /// Notes a message that belongs to no call. Returns its endpoint, which stays valid; null if
    /// there are kMaxEndpoints others.
    EndpointRecord* noteOutsideCalls(const CapturedMessage& message, const MessageDetails& details);

    /// Notes a remark on a stream. Returns the call of the stream, or null if it is not known yet.
    CallRecord* note(const CaptureRemark& remark);

    /// The calls that are not forgotten, in order of their numbers.
    const std::deque<CallRecord>& calls() const { return calls_; }
    /// A call by its number; null if there is none, or it is forgotten.
    const CallRecord* find(size_t number) const {
        const bool isThere = number > forgotten_ && number - forgotten_ <= calls_.size();
        return isThere ? &calls_[number - forgotten_ - 1] : nullptr;
    }
    /// The endpoints, in order of their first messages.
    const std::deque<EndpointRecord>& endpoints() const { return endpoints_; }

    /// The number of calls that were forgotten.
    size_t forgotten() const { return forgotten_; }

  private:
    using Hosts = std::pair<Endpoint, Endpoint>;  // the smaller one first

    CallRecord& callOf(const CapturedMessage& message);
    CallRecord* findCall(const CallNames& names);
    void name(CallRecord& call, const CallNames& names);
    EndpointRecord* endpointAt(const Address& host, Time time);

    size_t limit_;
    size_t forgotten_ = 0;
    std::function<void(const CallRecord&)> take_;
    std::deque<CallRecord> calls_;  // calls_[0] has the number forgotten_ + 1
    // The numbers of calls:
    std::map<Guid, size_t> byIdentifier_;
    std::map<Guid, size_t> byConference_;
    Recent<Hosts, size_t> byStream_;

    Recent<Hosts, size_t> earlyLosses_;  // counts of remarks on streams whose call is not known
    std::deque<EndpointRecord> endpoints_;
    std::map<Address, size_t> byHost_;  // positions in endpoints_
};
