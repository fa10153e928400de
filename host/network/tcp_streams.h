// Reassembles TCP streams: which segments belong to a conversation, where it begins and ends, and
// the order of its octets. libtins puts segments in order. Its stream follower is not used, because
// it never forgets a SYN and joins two conversations that use the same ports.
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

/// A side of a conversation. The client is the host that opened it.
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

    /// The next octets of a side, those of one segment. Returns false if no more of the
    /// conversation is wanted. Then the reader is destroyed.
    virtual bool octets(Time time, Side side, const StreamPart& part) = 0;
    /// So many octets are missing next; 0 if the side began before the capture, so that the number
    /// is unknown.
    virtual void gap(Time time, Side side, size_t octets) = 0;
    /// Octets of a gap that was reported. A capture may have frames in another order than the
    /// network.
    virtual void late(Time time, Side side, const StreamPart& part) = 0;
    /// The conversation has ended, or the captures have. The reader is destroyed after this.
    virtual void end(Time time) = 0;
};

class StreamListener {
  public:
    virtual ~StreamListener() = default;
    /// Makes the reader of a conversation, before its first octets. `flow` is from the client.
    virtual std::unique_ptr<StreamReader> open(const Flow& flow) = 0;
};

class TcpStreams {
  public:
    TcpStreams(StreamListener& listener, MemoryBudget& budget);
    ~TcpStreams();

    /// Takes a segment.
    void segment(const Arrival& arrival, const Flow& flow, const Segment& segment);

    /// Ends all conversations.
    void end(Time time);

  private:
    /// The endpoints of a conversation, the smaller one first.
    using Key = Flow;
    struct Hash {
        size_t operator()(const Key& key) const;
    };

    /// What the SYN segments of a conversation say. It is small, because a SYN flood fills the map
    /// of these.
    struct Opening {
        bool isReversed = false;          // the client is the second endpoint of the key
        std::array<bool, 2> isKnown{};    // by Side
        std::array<uint32_t, 2> first{};  // the sequence number of the first octet
    };

    /// What one side sends.
    struct Half {
        Tins::TCPIP::DataTracker order;
        bool hasBegun = false;    // `first` is known
        bool isOpened = false;    // the capture has its SYN
        bool isFinished = false;  // the capture has its FIN
        uint32_t first = 0;       // the sequence number of the first octet
        uint32_t last = 0;        // the sequence number of the FIN
        size_t waiting = 0;       // octets that wait after a gap, with the cost of their runs
        /// The frames of the octets that wait. Their positions are sequence numbers.
        std::vector<FrameRun> frames{};
        /// The last gaps that were reported: the sequence numbers of the first octet, and of the
        /// octet after the last.
        std::vector<std::pair<uint32_t, uint32_t>> gaps{};

        bool isComplete() const;
        void noteFrames(uint32_t sequence, const StreamPart& part);
        void takeFrames(uint32_t from, size_t size, std::vector<FrameRun>& runs);
    };

    /// A conversation in which octets were sent.
    struct Conversation {
        Key key;
        bool isReversed = false;                 // the client is the second endpoint of the key
        std::array<Half, 2> halves{};            // client, server
        std::unique_ptr<StreamReader> reader{};  // null: no more is wanted
        Time last = 0;                           // of the last segment

        Half& half(Side side) { return halves[side == Side::kClient ? 0 : 1]; }
        /// The side of the first endpoint of the key, or of the second.
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
    std::vector<FrameRun> runs_;  // of the current segment, or of what is delivered
    Conversations read_;          // those with a reader; the one with the last segment is last
    Conversations unwanted_;      // those without a reader: not wanted, or ended
    std::unordered_map<Key, Conversations::iterator, Hash> conversations_;
};
