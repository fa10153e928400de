#include "tcp_streams.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace {

constexpr size_t kMaxOpenings = 16384;
constexpr size_t kMaxRead = 32768;
constexpr size_t kMaxUnwanted = 16384;

/// A conversation without a segment for this time is given up. It is long, because there is no
/// signalling while people talk.
constexpr Time kConversationLife = Time{24} * 3600 * 1'000'000;

/// A segment whose sequence number is further away belongs to another conversation on these ports.
constexpr int32_t kMaxDistance = 1 << 24;

/// Octets and segments of one side that wait after a gap, at most.
constexpr size_t kMaxWaiting = 1 << 20;
constexpr size_t kMaxSegmentsWaiting = 512;

/// Gaps of one side that are remembered, because late octets may fill them. A late segment that
/// splits a gap makes one more.
constexpr size_t kMaxGaps = 4;

/// A SYN that the capture has after the octets belongs to them if it is at most so far before them.
constexpr int32_t kMaxLate = 1 << 16;

/// How far a sequence number is ahead of another. Sequence numbers wrap around.
int32_t ahead(uint32_t sequence, uint32_t of) {
    return static_cast<int32_t>(sequence - of);
}

/// The first of the segments that wait after a gap.
auto afterGap(Tins::TCPIP::DataTracker& order) {
    auto& waiting = order.buffered_payload();
    return std::min_element(waiting.begin(), waiting.end(), [&](const auto& a, const auto& b) {
        return ahead(a.first, order.sequence_number()) < ahead(b.first, order.sequence_number());
    });
}

}  // namespace

size_t TcpStreams::Hash::operator()(const Key& key) const {
    std::array<char, 36> octets;
    char* to = octets.data();
    for (const Endpoint& endpoint : {key.source, key.destination}) {
        to = std::copy(endpoint.address.begin(), endpoint.address.end(), to);
        *to++ = static_cast<char>(endpoint.port >> 8);
        *to++ = static_cast<char>(endpoint.port);
    }
    return std::hash<std::string_view>()({octets.data(), octets.size()});
}

TcpStreams::TcpStreams(StreamListener& listener, MemoryBudget& budget)
    : listener_(listener), budget_(budget), openings_(kMaxOpenings) {
}

TcpStreams::~TcpStreams() = default;

bool TcpStreams::Half::isComplete() const {
    return isFinished && (!hasBegun || ahead(last, order.sequence_number()) <= 0);
}

Side TcpStreams::Conversation::sideOf(bool isFirst) const {
    return isFirst != isReversed ? Side::kClient : Side::kServer;
}

void TcpStreams::segment(const Arrival& arrival, const Flow& flow, const Segment& segment) {
    const Time time = arrival.time;
    limit(time);
    const bool fromFirst = flow.source < flow.destination;
    const Key key = fromFirst ? flow : flow.reversed();
    if (segment.syn) opening(time, key, fromFirst, segment);
    const auto known = conversations_.find(key);
    if (known == conversations_.end() && segment.payload.empty()) return;
    auto at = known != conversations_.end() ? known->second : begin(key, fromFirst, segment);
    at->last = time;
    auto& list = at->reader ? read_ : unwanted_;
    list.splice(list.end(), list, at);
    if (!segment.payload.empty()) at = payload(arrival, at, fromFirst, segment);
    if (!at->reader) return;

    const Side side = at->sideOf(fromFirst);
    if (segment.ack) acknowledged(time, *at, otherSide(side), segment.acknowledged);
    if (segment.fin && at->reader) {
        Half& half = at->half(side);
        half.isFinished = true;
        half.last = segment.sequence + static_cast<uint32_t>(segment.payload.size());
    }
    const bool isComplete = at->halves[0].isComplete() && at->halves[1].isComplete();
    if (at->reader && (segment.rst || isComplete)) finish(time, at);
}

/// A SYN, of a new conversation or of a known one.
void TcpStreams::opening(Time time, const Key& key, bool fromFirst, const Segment& segment) {
    const uint32_t first = segment.sequence + 1;
    if (const auto known = conversations_.find(key); known != conversations_.end()) {
        Conversation& conversation = *known->second;
        const Half& half = conversation.half(conversation.sideOf(fromFirst));
        if (half.isOpened && half.first == first) return;
        // The capture may have a SYN after the octets.
        const int32_t late = ahead(half.first, first);
        if (!half.isOpened && half.hasBegun && late >= 0 && late <= kMaxLate) return;
        if (!half.hasBegun && segment.ack) return;
        remove(time, known->second);
    }
    Opening opening;
    const Side side = segment.ack ? Side::kServer : Side::kClient;
    opening.isReversed = fromFirst != (side == Side::kClient);
    const size_t sender = side == Side::kClient ? 0 : 1;
    opening.isKnown.at(sender) = true;
    opening.first.at(sender) = first;
    if (segment.ack) {  // it also has the client's number
        opening.isKnown[0] = true;
        opening.first[0] = segment.acknowledged;
    } else if (const Opening* const answered = openings_.find(key);
               answered != nullptr && answered->isKnown[0] && answered->first[0] == first) {
        return;
    }
    openings_.put(key, opening);
}

/// Begins a conversation with its first octets.
TcpStreams::Conversations::iterator TcpStreams::begin(const Key& key, bool fromFirst,
                                                      const Segment& segment) {
    Opening opening{.isReversed = !fromFirst};
    if (const Opening* const found = openings_.find(key)) {
        const Side side = fromFirst != found->isReversed ? Side::kClient : Side::kServer;
        const size_t sender = side == Side::kClient ? 0 : 1;
        const int32_t distance = ahead(segment.sequence, found->first.at(sender));
        if (found->isKnown.at(sender) && std::abs(int64_t{distance}) <= kMaxDistance) {
            opening = *found;
            // The client's first segment acknowledges the SYN of the server.
            if (side == Side::kClient && !opening.isKnown[1] && segment.ack && distance == 0) {
                opening.isKnown[1] = true;
                opening.first[1] = segment.acknowledged;
            }
            openings_.put(key, {});
        }
    }
    const auto at = read_.insert(read_.end(), {.key = key, .isReversed = opening.isReversed});
    for (size_t i = 0; i < 2; ++i) {
        Half& half = at->halves.at(i);
        half.hasBegun = half.isOpened = opening.isKnown.at(i);
        half.first = opening.first.at(i);
        half.order.sequence_number(half.first);
    }
    conversations_[key] = at;
    at->reader = listener_.open(opening.isReversed ? key.reversed() : key);
    return at;
}

/// Takes the octets of a segment. Returns their conversation, which is a new one if the ports are
/// used again.
TcpStreams::Conversations::iterator TcpStreams::payload(const Arrival& arrival,
                                                        Conversations::iterator at, bool fromFirst,
                                                        const Segment& segment) {
    const Time time = arrival.time;
    const uint32_t sequence = segment.sequence + (segment.syn ? 1 : 0);
    const auto size = static_cast<uint32_t>(segment.payload.size());
    if (const Half& half = at->half(at->sideOf(fromFirst));
        half.hasBegun &&
        std::abs(int64_t{ahead(sequence, half.order.sequence_number())}) > kMaxDistance) {
        const Key key = at->key;
        remove(time, at);  // the ports are used again, and the SYN was not captured
        at = begin(key, fromFirst, segment);
        at->last = time;
    }
    const Side side = at->sideOf(fromFirst);
    Half& half = at->half(side);
    if (!half.hasBegun) {
        half.hasBegun = true;
        half.first = sequence;
        half.order.sequence_number(sequence);
        if (at->reader) at->reader->gap(time, side, 0);
    }
    const int32_t distance = ahead(sequence, half.order.sequence_number());
    const bool isNext = distance == 0 && half.waiting == 0;
    if (isNext || (!at->reader && ahead(sequence + size, half.order.sequence_number()) > 0))
        half.order.sequence_number(sequence + size);
    if (!at->reader) return at;
    runs_.clear();
    for (const FrameId frame : arrival.frames) runs_.push_back({frame, 0, size});
    const StreamPart part{segment.payload, runs_};
    if (isNext)
        deliver(time, *at, side, part);
    else if (ahead(sequence + size, half.order.sequence_number()) > 0)
        takeLater(time, *at, side, sequence, part);
    else if (!half.gaps.empty())
        takeLate(time, *at, side, sequence, part);
    return at;
}

/// Takes octets from before the next position: a retransmission, or octets of a reported gap.
void TcpStreams::takeLate(Time time, Conversation& conversation, Side side, uint32_t sequence,
                          const StreamPart& part) {
    auto& gaps = conversation.half(side).gaps;
    const uint32_t end = sequence + static_cast<uint32_t>(part.octets.size());
    const auto gap = std::find_if(gaps.begin(), gaps.end(), [&](const auto& one) {
        return ahead(sequence, one.first) >= 0 && ahead(one.second, end) >= 0;
    });
    if (gap == gaps.end()) return;
    const auto [first, last] = *gap;
    gaps.erase(gap);
    if (sequence != first) gaps.emplace_back(first, sequence);
    if (end != last) gaps.emplace_back(end, last);
    conversation.reader->late(time, side, part);
}

/// Takes octets that overlap earlier ones, or that are after a gap.
void TcpStreams::takeLater(Time time, Conversation& conversation, Side side, uint32_t sequence,
                           const StreamPart& part) {
    Half& half = conversation.half(side);
    half.noteFrames(sequence, part);
    if (takeInOrder(time, conversation, side, sequence, {part.octets.begin(), part.octets.end()}))
        return;
    const bool isTooMuch = half.waiting > kMaxWaiting || budget_.isSpent() ||
                           half.order.buffered_payload().size() > kMaxSegmentsWaiting;
    while (isTooMuch && conversation.reader && half.waiting > 0) skipGap(time, conversation, side);
}

/// If octets are next, passes them on, with those that waited for them. Otherwise they wait.
/// Returns whether they were next.
bool TcpStreams::takeInOrder(Time time, Conversation& conversation, Side side, uint32_t sequence,
                             std::vector<uint8_t> octets) {
    Half& half = conversation.half(side);
    const uint32_t first = half.order.sequence_number();
    const bool isNext = half.order.process_payload(sequence, std::move(octets));
    const auto next = std::move(half.order.payload());
    half.order.payload().clear();
    if (isNext) half.takeFrames(first, next.size(), runs_);
    countWaiting(half);
    if (!isNext) return false;
    deliver(time, conversation, side, {next, runs_});
    return true;
}

/// Keeps the frames of a segment that waits. A retransmission replaces them only if it is longer.
void TcpStreams::Half::noteFrames(uint32_t sequence, const StreamPart& part) {
    const uint32_t end = sequence + static_cast<uint32_t>(part.octets.size());
    const bool isKnown = std::any_of(frames.begin(), frames.end(), [&](const FrameRun& run) {
        return run.begin == sequence && ahead(end, run.end) <= 0;
    });
    if (isKnown) return;
    std::erase_if(frames, [&](const FrameRun& run) { return run.begin == sequence; });
    for (const FrameRun& run : part.runs) frames.push_back({run.frame, sequence, end});
}

/// Moves the runs of `size` octets from a sequence number on to `runs`.
void TcpStreams::Half::takeFrames(uint32_t from, size_t size, std::vector<FrameRun>& runs) {
    const auto octets = static_cast<int32_t>(size);
    runs.clear();
    for (const FrameRun& run : frames) {
        const int32_t begin = std::max(ahead(run.begin, from), 0);
        const int32_t end = std::min(ahead(run.end, from), octets);
        if (begin < end)
            runs.push_back({run.frame, static_cast<uint32_t>(begin), static_cast<uint32_t>(end)});
    }
    std::erase_if(frames, [&](const FrameRun& run) { return ahead(run.end, from) <= octets; });
    std::ranges::sort(runs, {}, &FrameRun::begin);
}

void TcpStreams::deliver(Time time, Conversation& conversation, Side side, const StreamPart& part) {
    if (conversation.reader && !conversation.reader->octets(time, side, part)) drop(conversation);
}

/// The other host has acknowledged octets. Those that the capture does not have will not come.
void TcpStreams::acknowledged(Time time, Conversation& conversation, Side side, uint32_t next) {
    Half& half = conversation.half(side);
    if (!half.hasBegun || ahead(next, half.order.sequence_number()) > kMaxDistance) return;
    while (conversation.reader && half.waiting > 0 && ahead(next, afterGap(half.order)->first) > 0)
        skipGap(time, conversation, side);
    const int32_t missing = ahead(half.last, half.order.sequence_number());
    if (conversation.reader && half.isFinished && missing > 0 && ahead(next, half.last) > 0) {
        conversation.reader->gap(time, side, static_cast<size_t>(missing));
        half.order.sequence_number(half.last);
    }
}

/// Reports the gap at which a side waits, and passes on the segment after it.
void TcpStreams::skipGap(Time time, Conversation& conversation, Side side) {
    Half& half = conversation.half(side);
    const auto next = afterGap(half.order);
    const uint32_t sequence = next->first;
    auto octets = std::move(next->second);
    half.order.buffered_payload().erase(next);
    const int32_t missing = ahead(sequence, half.order.sequence_number());
    if (missing > 0) {
        if (half.gaps.size() >= kMaxGaps) half.gaps.erase(half.gaps.begin());
        half.gaps.emplace_back(half.order.sequence_number(), sequence);
        conversation.reader->gap(time, side, static_cast<size_t>(missing));
    }
    half.order.advance_sequence(sequence);
    takeInOrder(time, conversation, side, sequence, std::move(octets));
}

void TcpStreams::countWaiting(Half& half) {
    budget_.giveBack(half.waiting);
    half.waiting = 0;
    for (const auto& [sequence, octets] : half.order.buffered_payload())
        half.waiting += octets.size();
    if (half.waiting == 0) half.frames.clear();
    half.waiting += half.frames.size() * sizeof(FrameRun);
    budget_.take(half.waiting);
}

void TcpStreams::finish(Time time, Conversations::iterator at) {
    for (const Side side : {Side::kClient, Side::kServer})
        while (at->reader && at->half(side).waiting > 0) skipGap(time, *at, side);
    if (!at->reader) return;
    at->reader->end(time);
    drop(*at);
}

/// Drops the reader of a conversation. The conversation is still known, so that retransmissions do
/// not begin another one.
void TcpStreams::drop(Conversation& conversation) {
    conversation.reader.reset();
    for (Half& half : conversation.halves) {
        half.order.buffered_payload().clear();
        countWaiting(half);
    }
    const auto at = conversations_.find(conversation.key)->second;
    unwanted_.splice(unwanted_.end(), read_, at);
}

void TcpStreams::remove(Time time, Conversations::iterator at) {
    if (at->reader) finish(time, at);
    conversations_.erase(at->key);
    unwanted_.erase(at);
}

void TcpStreams::limit(Time time) {
    while (!read_.empty() &&
           (read_.size() > kMaxRead || read_.front().last + kConversationLife < time))
        remove(time, read_.begin());
    while (unwanted_.size() > kMaxUnwanted) remove(time, unwanted_.begin());
}

void TcpStreams::end(Time time) {
    while (!read_.empty()) remove(time, read_.begin());
}
