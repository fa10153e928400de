// TCP conversations: which segment belongs to which, where they begin and end, what order their
// octets have. libtins puts segments in order. Its follower of whole streams is not used: it keeps
// each SYN and joins two conversations that have the same ports.
#pragma once

#include <tins/tcp_ip/data_tracker.h>

#include <array>
#include <list>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

#include "memory_budget.h"
#include "packet_reader.h"
#include "recent.h"

/// Who sent: the host that opened the conversation, or the other.
enum class Side { kClient, kServer };

inline Side otherSide(Side side) {
    return side == Side::kClient ? Side::kServer : Side::kClient;
}

/// Reads one conversation. Spans are valid during the call.
class StreamReader {
  public:
    StreamReader() = default;
    virtual ~StreamReader() = default;
    StreamReader(const StreamReader&) = delete;
    StreamReader& operator=(const StreamReader&) = delete;

    /// The next octets of a side, as one segment brought them. Returns false if no more of the
    /// conversation is wanted; the reader is destroyed then.
    virtual bool octets(Time time, Side side, const StreamPart& part) = 0;
    /// So many octets come next that the capture does not have; 0 if the side began before the
    /// capture, and this cannot be told.
    virtual void gap(Time time, Side side, size_t octets) = 0;
    /// Octets of a gap that has been told, which come after all: frames of a capture may be in
    /// another order than on the network.
    virtual void late(Time time, Side side, const StreamPart& part) = 0;
    /// No more comes: the conversation has ended, or the captures have.
    virtual void end(Time time) = 0;
};

class StreamListener {
  public:
    virtual ~StreamListener() = default;
    /// A conversation has its first octets. `flow` is from the client.
    virtual std::unique_ptr<StreamReader> open(const Flow& flow) = 0;
};

class TcpStreams {
  public:
    TcpStreams(StreamListener& listener, MemoryBudget& budget);
    ~TcpStreams();

    void segment(const Arrival& arrival, const Flow& flow, const Segment& segment);

    /// Ends all conversations.
    void end(Time time);

  private:
    /// Both endpoints, the smaller first.
    using Key = Flow;
    struct Hash {
        size_t operator()(const Key& key) const;
    };

    /// What the opening segments told. An attack leaves nothing else, so it is small and bounded.
    struct Opening {
        bool isReversed = false;          // the client is the second endpoint of the key
        std::array<bool, 2> isKnown{};    // by Side
        std::array<uint32_t, 2> first{};  // the sequence number of the first octet
    };

    /// What one side sends.
    struct Half {
        Tins::TCPIP::DataTracker order;
        bool hasBegun = false;
        bool isOpened = false;    // the capture has its SYN
        bool isFinished = false;  // and its FIN
        uint32_t first = 0;       // sequence number of the first octet
        uint32_t last = 0;        // and of the FIN
        size_t waiting = 0;       // octets after a gap, and what their runs cost
        /// The frames of what waits, by sequence number.
        std::vector<FrameRun> frames{};
        /// The gaps that were told last: the numbers of their first octet, and the one after their
        /// last.
        std::vector<std::pair<uint32_t, uint32_t>> gaps{};

        bool isComplete() const;
        void noteFrames(uint32_t sequence, const StreamPart& part);
        void takeFrames(uint32_t from, size_t size, std::vector<FrameRun>& runs);
    };

    /// A conversation with octets.
    struct Conversation {
        Key key;
        bool isReversed = false;
        std::array<Half, 2> halves{};
        std::unique_ptr<StreamReader> reader{};  // null: no more is wanted
        Time last = 0;

        Half& half(Side side) { return halves[side == Side::kClient ? 0 : 1]; }
        /// The side that the key's first endpoint is, or the second.
        Side sideOf(bool isFirst) const;
    };
    using Conversations = std::list<Conversation>;

    void opening(Time time, const Key& key, bool fromFirst, const Segment& segment);
    Conversations::iterator begin(const Key& key, bool fromFirst, const Segment& segment);
    Conversations::iterator payload(const Arrival& arrival, Conversations::iterator at,
                                    bool fromFirst, const Segment& segment);
    void takeLate(Time time, Conversation& conversation, Side side, uint32_t sequence,
                  const StreamPart& part);
    void takeLater(Time time, Conversation& conversation, Side side, uint32_t sequence,
                   const StreamPart& part);
    bool takeInOrder(Time time, Conversation& conversation, Side side, uint32_t sequence,
                     std::vector<uint8_t> octets);
    void deliver(Time time, Conversation& conversation, Side side, const StreamPart& part);
    void acknowledged(Time time, Conversation& conversation, Side side, uint32_t next);
    void skipGap(Time time, Conversation& conversation, Side side);
    void countWaiting(Half& half);
    void finish(Time time, Conversations::iterator at);
    void drop(Conversation& conversation);
    void remove(Time time, Conversations::iterator at);
    void limit(Time time);

    StreamListener& listener_;
    MemoryBudget& budget_;
    Recent<Key, Opening> openings_;
    std::vector<FrameRun> runs_;  // of the segment at hand, or of what is delivered
    Conversations read_;          // with a reader, the one heard last at the end
    Conversations unwanted_;      // without: those that are not read, and those that have ended
    std::unordered_map<Key, Conversations::iterator, Hash> conversations_;
};
