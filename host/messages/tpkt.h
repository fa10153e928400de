// TPKT (RFC 1006, section 6): each message of a TCP stream follows a header of 4 octets.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "frame_runs.h"
#include "memory_budget.h"

constexpr size_t kTpktHeader = 4;

/// The length of the TPKT at the start of some octets, with its header; 0 if there is no whole one.
size_t wholeTpkt(std::span<const uint8_t> octets);

/// Receives the messages of a stream, in order. Spans are valid during the call.
class TpktReceiver {
  public:
    virtual ~TpktReceiver() = default;
    /// A message, without its header, and the frames that carried it.
    virtual void tpkt(std::span<const uint8_t> message, std::span<const FrameId> frames) = 0;
    /// So many octets were passed over: they are no TPKT, or a part of one.
    virtual void lost(size_t octets) = 0;
};

/// What a stream's TPKTs contain.
enum class TpktContent { kAny, kQ931 };

/// Splits one side of a stream into messages. The reader is synchronized if it knows where the next
/// header is. If it does not, because octets are missing or the stream began before the capture, it
/// accepts a header only if the octets after it confirm it: the length leads to another header or
/// to the end of a segment, and in call signalling Q.931 follows the header.
class TpktReader {
  public:
    explicit TpktReader(MemoryBudget& budget) : budget_(budget) {}
    ~TpktReader() { release(); }
    TpktReader(const TpktReader&) = delete;
    TpktReader& operator=(const TpktReader&) = delete;

    void setContent(TpktContent content) { content_ = content; }

    /// Reads the next octets of the stream, those of one segment, and passes on the messages that
    /// are complete with them.
    void read(const StreamPart& segment, TpktReceiver& receiver);

    /// So many octets are missing here; 0 if the number is unknown. A message that is not complete
    /// is given up.
    void gap(size_t octets, TpktReceiver& receiver);

    /// Whether octets begin with a confirmed header.
    static bool isConfirmed(std::span<const uint8_t> octets, TpktContent content);

  private:
    enum class Verdict { kNo, kMaybe, kYes };

    static Verdict judge(std::span<const uint8_t> octets, TpktContent content);
    size_t readSome(const StreamPart& part, size_t at, size_t newFrom, TpktReceiver& receiver);
    size_t seek(std::span<const uint8_t> octets, size_t newFrom);
    void hold(const StreamPart& part, size_t from);
    void release();
    size_t cost() const { return held_.size() + runs_.size() * sizeof(FrameRun); }

    MemoryBudget& budget_;
    TpktContent content_ = TpktContent::kAny;
    bool isSynchronized_ = true;
    size_t toSkip_ = 0;               // octets that are left of a message with a gap
    std::vector<uint8_t> held_;       // from a header on, or from the first candidate on
    std::vector<FrameRun> runs_;      // of held_
    std::vector<FrameId> frames_;     // of the current message
    std::vector<size_t> candidates_;  // if not synchronized: positions of possible headers in held_
};
