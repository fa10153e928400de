// TPKT (RFC 1006, section 6): messages in a TCP stream, each after a header of 4 octets.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "frame_runs.h"
#include "memory_budget.h"

constexpr size_t kTpktHeader = 4;

/// The length of the TPKT that octets start with, its header included; 0 if no whole one is there.
size_t wholeTpkt(std::span<const uint8_t> octets);

/// Who is told, in order. Spans are valid during the call.
class TpktReceiver {
  public:
    virtual ~TpktReceiver() = default;
    /// Each message, without its header, and the frames that carried it.
    virtual void tpkt(std::span<const uint8_t> message, std::span<const FrameId> frames) = 0;
    /// How many octets were passed over: what is no TPKT, or a part of one.
    virtual void lost(size_t octets) = 0;
};

/// What a stream's TPKTs contain.
enum class TpktContent { kAny, kQ931 };

/// Cuts one side of a stream into messages. It is in step while it knows where the next header is.
/// If it does not, because octets are missing or the stream began before the capture, it believes a
/// header only if what follows confirms it: the length leads to another header or to the end of a
/// segment, and in call signalling Q.931 follows.
class TpktReader {
  public:
    explicit TpktReader(MemoryBudget& budget) : budget_(budget) {}
    ~TpktReader() { release(); }
    TpktReader(const TpktReader&) = delete;
    TpktReader& operator=(const TpktReader&) = delete;

    void setContent(TpktContent content) { content_ = content; }

    /// Takes the next octets of the stream, as one segment brought them, and passes on the messages
    /// that are complete with them.
    void read(const StreamPart& segment, TpktReceiver& receiver);

    /// So many octets are missing here; 0 if that is unknown. A message that is not complete is
    /// given up.
    void gap(size_t octets, TpktReceiver& receiver);

    /// Whether octets are the beginning of a stream, or of a segment, of TPKTs: a header,
    /// confirmed.
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
    bool isInStep_ = true;
    size_t toSkip_ = 0;               // of a message that a gap has cut
    std::vector<uint8_t> held_;       // in step: from a header on; else from the first candidate on
    std::vector<FrameRun> runs_;      // of held_
    std::vector<FrameId> frames_;     // of the message at hand
    std::vector<size_t> candidates_;  // positions in held_ that may be headers; not in step
};
