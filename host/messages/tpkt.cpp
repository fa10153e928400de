#include "tpkt.h"

#include <algorithm>

#include "octets.h"
#include "q931.h"

namespace {

constexpr int kHeadersForProof = 4;  // a longer chain is no better proof
constexpr size_t kMaxCandidates = 32;

/// Whether a header may start there. If a part of the header is missing, the rest is tested.
bool startsHeader(std::span<const uint8_t> octets) {
    return (octets.empty() || octets[0] == 3) && (octets.size() < 2 || octets[1] == 0) &&
           (octets.size() < kTpktHeader || be16(octets, 2) >= kTpktHeader);
}

}  // namespace

size_t wholeTpkt(std::span<const uint8_t> octets) {
    if (octets.size() < kTpktHeader || !startsHeader(octets)) return 0;
    const size_t length = be16(octets, 2);
    return length <= octets.size() ? length : 0;
}

/// Decides whether there is a header at the start of some octets, by the octets after it.
TpktReader::Verdict TpktReader::judge(std::span<const uint8_t> octets, TpktContent content) {
    for (int headers = 0; headers < kHeadersForProof; ++headers) {
        if (octets.empty() && headers > 0) return Verdict::kYes;
        if (!startsHeader(octets)) return Verdict::kNo;
        const bool hasContent = octets.size() > kTpktHeader && be16(octets, 2) > kTpktHeader;
        if (content == TpktContent::kQ931 && hasContent && !startsQ931(octets.subspan(kTpktHeader)))
            return Verdict::kNo;
        const size_t length = wholeTpkt(octets);
        if (length == 0) return headers > 0 ? Verdict::kYes : Verdict::kMaybe;
        octets = octets.subspan(length);
    }
    return Verdict::kYes;
}

bool TpktReader::isConfirmed(std::span<const uint8_t> octets, TpktContent content) {
    return judge(octets, content) == Verdict::kYes;
}

void TpktReader::read(const StreamPart& segment, TpktReceiver& receiver) {
    const size_t skipped = std::min(toSkip_, segment.octets.size());
    toSkip_ -= skipped;
    if (skipped > 0) receiver.lost(skipped);
    const auto octets = segment.octets.subspan(skipped);
    if (octets.empty()) return;
    if (budget_.isSpent() && !held_.empty()) gap(0, receiver);
    const size_t before = held_.size();
    if (before == 0) {
        hold(segment, readSome(segment, skipped, 0, receiver));
        return;
    }
    budget_.giveBack(cost());
    // Not `insert`: g++ 14 warns that it may overflow.
    held_.resize(before + octets.size());
    std::ranges::copy(octets, held_.begin() + static_cast<std::ptrdiff_t>(before));
    appendPart(runs_, segment.runs, skipped, segment.octets.size(), before);
    budget_.take(cost());
    if (isSynchronized_ && startsHeader(held_) && wholeTpkt(held_) == 0) return;
    budget_.giveBack(cost());
    const auto all = std::move(held_);
    const auto runs = std::move(runs_);
    held_.clear();
    runs_.clear();
    const StreamPart part{all, runs};
    hold(part, readSome(part, 0, before, receiver));
}

/// Passes on all messages from position `at` on. The newest segment begins `newFrom` octets after
/// `at`. Returns the position of the octets that must be held.
size_t TpktReader::readSome(const StreamPart& part, size_t at, size_t newFrom,
                            TpktReceiver& receiver) {
    auto runs = part.runs;
    while (true) {
        if (!isSynchronized_) {
            const size_t passed = seek(part.octets.subspan(at), newFrom);
            if (passed > 0) receiver.lost(passed);
            at += passed;
            if (!isSynchronized_) return at;
        }
        while (const size_t length = wholeTpkt(part.octets.subspan(at))) {
            while (!runs.empty() && runs.front().end <= at) runs = runs.subspan(1);
            findFrames(frames_, runs, at, at + length);
            receiver.tpkt(part.octets.subspan(at, length).subspan(kTpktHeader), frames_);
            at += length;
        }
        if (startsHeader(part.octets.subspan(at))) return at;
        isSynchronized_ = false;
        newFrom = 0;
    }
}

/// Searches a confirmed header. One at the start of the newest segment takes precedence. Returns
/// how many octets are no longer needed: those before the header, or before the first candidate.
size_t TpktReader::seek(std::span<const uint8_t> octets, size_t newFrom) {
    std::vector<size_t> maybe;
    const auto isHeader = [&](size_t position) {
        const Verdict verdict = judge(octets.subspan(position), content_);
        if (verdict == Verdict::kMaybe) maybe.push_back(position);
        return isSynchronized_ = verdict == Verdict::kYes;
    };
    const auto known = std::move(candidates_);
    candidates_.clear();
    if (newFrom > 0 && isHeader(newFrom)) return newFrom;
    maybe.clear();
    for (const size_t position : known)
        if (isHeader(position)) return position;
    for (size_t position = newFrom; position < octets.size(); ++position)
        if (octets[position] == 3 && isHeader(position)) return position;
    if (maybe.empty()) return octets.size();
    if (maybe.size() > kMaxCandidates)
        maybe.erase(maybe.begin(), maybe.end() - std::ptrdiff_t{kMaxCandidates});
    for (const size_t position : maybe) candidates_.push_back(position - maybe.front());
    return maybe.front();
}

void TpktReader::gap(size_t octets, TpktReceiver& receiver) {
    const std::span<const uint8_t> held = held_;
    // If the gap is within a message, the next header is at the end of that message.
    const bool isWithin = octets > 0 && isSynchronized_ && held.size() >= kTpktHeader &&
                          be16(held, 2) - held.size() >= octets;
    const size_t skipped = isWithin ? be16(held, 2) - held.size() - octets : 0;
    const bool isCounted = toSkip_ > 0 && octets > 0 && octets <= toSkip_;
    if (!held.empty()) receiver.lost(held.size());
    release();
    candidates_.clear();
    if (isCounted) {
        toSkip_ -= octets;
        return;
    }
    toSkip_ = skipped;
    isSynchronized_ = isWithin;
}

/// Holds the octets from position `from` on.
void TpktReader::hold(const StreamPart& part, size_t from) {
    const auto rest = part.octets.subspan(from);
    held_.assign(rest.begin(), rest.end());
    appendPart(runs_, part.runs, from, part.octets.size(), 0);
    budget_.take(cost());
}

void TpktReader::release() {
    budget_.giveBack(cost());
    held_.clear();
    runs_.clear();
}
