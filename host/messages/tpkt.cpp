#include "tpkt.h"

#include <algorithm>

#include "octets.h"
#include "q931.h"

namespace {

constexpr int kHeadersForProof = 4;  // a longer chain proves no more
constexpr size_t kMaxCandidates = 32;

/// Whether a header may start there; of a header that is not all there, the part that is.
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

/// Judges a place where a header may be, by what follows it so far.
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

void TpktReader::read(std::span<const uint8_t> segment, TpktReceiver& receiver) {
    if (toSkip_ > 0) {
        const size_t skipped = std::min(toSkip_, segment.size());
        toSkip_ -= skipped;
        receiver.lost(skipped);
        segment = segment.subspan(skipped);
    }
    if (segment.empty()) return;
    if (budget_.isSpent() && !held_.empty()) gap(0, receiver);
    const size_t before = held_.size();
    if (before == 0) {
        hold(readSome(segment, 0, receiver));
        return;
    }
    // Not `insert`: g++ 14 warns that it may overflow.
    held_.resize(before + segment.size());
    std::ranges::copy(segment, held_.begin() + static_cast<std::ptrdiff_t>(before));
    budget_.take(segment.size());
    if (isInStep_ && startsHeader(held_) && wholeTpkt(held_) == 0) return;
    const auto all = std::move(held_);
    held_.clear();
    budget_.giveBack(all.size());
    hold(readSome(all, before, receiver));
}

/// Passes on what can be read; the newest segment is from `newFrom` on. Returns the rest.
std::span<const uint8_t> TpktReader::readSome(std::span<const uint8_t> octets, size_t newFrom,
                                              TpktReceiver& receiver) {
    while (true) {
        if (!isInStep_) {
            const size_t passed = seek(octets, newFrom);
            if (passed > 0) receiver.lost(passed);
            octets = octets.subspan(passed);
            if (!isInStep_) return octets;
        }
        while (const size_t length = wholeTpkt(octets)) {
            receiver.tpkt(octets.first(length).subspan(kTpktHeader));
            octets = octets.subspan(length);
        }
        if (startsHeader(octets)) return octets;
        isInStep_ = false;
        newFrom = 0;
    }
}

/// Looks for a confirmed header. A new segment that starts with one wins. Returns how many octets
/// are not needed any more: those before the header, or before the first that may be one.
size_t TpktReader::seek(std::span<const uint8_t> octets, size_t newFrom) {
    std::vector<size_t> maybe;
    const auto isHeader = [&](size_t position) {
        const Verdict verdict = judge(octets.subspan(position), content_);
        if (verdict == Verdict::kMaybe) maybe.push_back(position);
        return isInStep_ = verdict == Verdict::kYes;
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
    // If the gap is within a message, the next header is where that message ends.
    const bool isWithin = octets > 0 && isInStep_ && held.size() >= kTpktHeader &&
                          be16(held, 2) - held.size() >= octets;
    const size_t skipped = isWithin ? be16(held, 2) - held.size() - octets : 0;
    const bool isCounted = toSkip_ > 0 && octets > 0 && octets <= toSkip_;
    if (!held.empty()) receiver.lost(held.size());
    budget_.giveBack(held.size());
    held_.clear();
    candidates_.clear();
    if (isCounted) {
        toSkip_ -= octets;
        return;
    }
    toSkip_ = skipped;
    isInStep_ = isWithin;
}

void TpktReader::hold(std::span<const uint8_t> octets) {
    held_.assign(octets.begin(), octets.end());
    budget_.take(octets.size());
}
