#include "conversation.h"

#include "stream_start.h"

namespace {

/// Limits of what is held of a conversation: octets, segments and remarks.
constexpr size_t kMaxHeld = 65536;
constexpr size_t kMaxHeldSegments = 256;
constexpr size_t kMaxRemarks = 16;

/// Segments of a conversation that began before the capture, until it is foreign.
constexpr size_t kMaxSegmentsMidway = 16;

/// Octets that a held part costs in addition to its own.
constexpr size_t kHeldCost = 64;

}  // namespace

Conversation::Conversation(MessageFinder& finder, const Flow& flow)
    : finder_(finder), flow_(flow), client_(finder.budget()), server_(finder.budget()) {
    if (const auto known = finder_.directory().find(Protocol::kTcp, flow_)) start(*known);
}

Conversation::~Conversation() {
    release();
}

void Conversation::release() {
    finder_.budget().giveBack(heldOctets_);
    heldOctets_ = 0;
    held_.clear();
}

void Conversation::hold(Held held) {
    const size_t cost = held.octets.size() + held.runs.size() * sizeof(FrameRun) + kHeldCost;
    heldOctets_ += cost;
    finder_.budget().take(cost);
    held_.push_back(std::move(held));
}

bool Conversation::octets(Time time, Side side, const StreamPart& part) {
    if (!known_)
        if (const auto known = finder_.directory().find(Protocol::kTcp, flow_)) start(*known);
    if (!known_) {
        hold({.time = time,
              .side = side,
              .octets = {part.octets.begin(), part.octets.end()},
              .runs = {part.runs.begin(), part.runs.end()}});
        bool isForeign = false;
        const auto known = judge(side, isForeign);
        if (isForeign) return false;
        if (known) start(*known);
        const bool isTooMuch =
            heldOctets_ > kMaxHeld || held_.size() > kMaxHeldSegments || finder_.budget().isSpent();
        if (!known && isTooMuch) {
            if (hasTpkts_) finder_.unread().count("TCP streams of TPKTs that no message announced");
            return false;
        }
        return true;
    }
    if (known_->purpose == Purpose::kNone) return false;
    read(time, side, part);
    return true;
}

/// Finds out from the held octets of a side what the conversation is for. Returns nothing if that
/// is not known yet; `isForeign` tells whether it is certainly no H.323.
std::optional<Known> Conversation::judge(Side side, bool& isForeign) {
    std::vector<uint8_t> octets;
    bool isMidway = false;
    for (const Held& held : held_) {
        if (held.side != side) continue;
        isMidway |= held.isGap;
        octets.insert(octets.end(), held.octets.begin(), held.octets.end());
    }
    if (isMidway) {
        // The start of the stream was not captured, but the newest segment may start with a TPKT.
        octets = held_.back().octets;
        isForeign = held_.size() > kMaxSegmentsMidway && !hasTpkts_;
        if (!TpktReader::isConfirmed(octets, TpktContent::kAny)) return {};
    }
    const StreamStart found = lookAtStart(octets);
    if (!isMidway) isForeign = found.kind == StreamStart::kForeign;
    if (found.kind == StreamStart::kSignalling)
        return Known{.purpose = Purpose::kSignalling, .call = {}};
    if (found.kind != StreamStart::kOther) return {};
    hasTpkts_ = true;
    const CallNames* const call = finder_.directory().callBetween(flow_);
    if (call == nullptr || !finder_.isExactly(FamilyId::kH245, found.message)) return {};
    return Known{.purpose = Purpose::kH245, .call = *call};
}

/// Begins to read the conversation: its purpose is known now. Reads what is held.
void Conversation::start(const Known& known) {
    known_ = known;
    if (known.purpose == Purpose::kSignalling)
        for (const Side side : {Side::kClient, Side::kServer})
            tpktOf(side).setContent(TpktContent::kQ931);
    isWanted_ = known.purpose == Purpose::kH245 && finder_.isWanted(known.call);
    for (const auto held = std::move(held_); const Held& piece : held) {
        if (known.purpose == Purpose::kNone) break;
        if (piece.isGap)
            gap(piece.time, piece.side, piece.gap);
        else
            read(piece.time, piece.side, {piece.octets, piece.runs});
    }
    release();
}

void Conversation::read(Time time, Side side, const StreamPart& part) {
    now_ = time;
    side_ = side;
    tpktOf(side).read(part, *this);
}

void Conversation::gap(Time time, Side side, size_t octets) {
    if (!known_) {
        hold({.time = time, .side = side, .isGap = true, .gap = octets});
        return;
    }
    if (known_->purpose == Purpose::kNone) return;
    remark(time, side, octets > 0 ? Remark::kOctetsMissing : Remark::kStartsMidway, octets);
    now_ = time;
    side_ = side;
    tpktOf(side).gap(octets, *this);
}

/// Octets of a reported gap are read only if they consist of whole TPKTs.
void Conversation::late(Time time, Side side, const StreamPart& part) {
    if (!known_ || known_->purpose == Purpose::kNone) return;
    auto octets = part.octets;
    size_t whole = 0;
    while (const size_t length = wholeTpkt(octets.subspan(whole))) whole += length;
    if (whole != octets.size()) return;
    now_ = time;
    side_ = side;
    std::vector<FrameId> frames;
    findFrames(frames, part.runs, 0, octets.size());
    while (const size_t length = wholeTpkt(octets)) {
        tpkt(octets.first(length).subspan(kTpktHeader), frames);
        octets = octets.subspan(length);
    }
}

void Conversation::end(Time time) {
    if (!known_)
        if (const auto known = finder_.directory().find(Protocol::kTcp, flow_)) start(*known);
    if (!known_ && hasTpkts_)
        finder_.unread().count("TCP streams of TPKTs that no message announced");
    if (!known_) return;
    for (const Side side : {Side::kClient, Side::kServer}) {
        now_ = time;
        side_ = side;
        tpktOf(side).gap(0, *this);
    }
}

void Conversation::tpkt(std::span<const uint8_t> message, std::span<const FrameId> frames) {
    if (message.empty()) return;  // keeps the connection alive
    const Arrival arrival{now_, frames};
    if (known_->purpose == Purpose::kSignalling)
        finder_.signalling(arrival, flowOf(side_), message, this);
    else
        finder_.h245(arrival, flowOf(side_), message, known_->call, this);
}

void Conversation::wanted() {
    if (isWanted_) return;
    isWanted_ = true;
    for (const CaptureRemark& remark : remarks_) finder_.sink().remark(remark);
    remarks_.clear();
}

void Conversation::lost(size_t octets) {
    remark(now_, side_, Remark::kOctetsPassedOver, octets);
}

/// If the finder looks for one call, only remarks about the conversations of this call are passed
/// on. A later message may show that the conversation belongs to it, so remarks are kept until
/// then.
void Conversation::remark(Time time, Side side, Remark what, size_t octets) {
    const CaptureRemark remark{time, flowOf(side), what, octets};
    if (isWanted_ || !finder_.wantsOneCall())
        finder_.sink().remark(remark);
    else if (remarks_.size() < kMaxRemarks)
        remarks_.push_back(remark);
}
