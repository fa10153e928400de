#include "tpkt.h"

namespace {

constexpr size_t kHeader = 4;
constexpr int kHeadersForProof = 4;  // and no more, lest the search takes for ever

/// Whether a header may start there; of a header that is not all there, the part that is.
bool startsHeader(std::span<const uint8_t> octets) {
    return (octets.empty() || octets[0] == 3) && (octets.size() < 2 || octets[1] == 0);
}

/// The length that a header gives, itself included.
size_t lengthAt(std::span<const uint8_t> octets) {
    return octets[2] * size_t{256} + octets[3];
}

/// Whether headers chain from here on. Two octets alone, 03 00, stand in many a message.
bool chains(std::span<const uint8_t> octets) {
    for (int headers = 0; headers < kHeadersForProof && octets.size() >= kHeader; ++headers) {
        const size_t length = lengthAt(octets);
        if (!startsHeader(octets) || length < kHeader) return false;
        if (length > octets.size()) return true;
        octets = octets.subspan(length);
    }
    return startsHeader(octets);
}

}  // namespace

void TpktReader::read(std::span<const uint8_t> octets, const Receiver& receiver) {
    held_.insert(held_.end(), octets.begin(), octets.end());
    while (inStep_ || findHeader(receiver)) {
        std::span<const uint8_t> rest = held_;
        while (rest.size() >= kHeader && startsHeader(rest) && lengthAt(rest) >= kHeader &&
               lengthAt(rest) <= rest.size()) {
            const size_t length = lengthAt(rest);
            receiver.message(rest.first(length).subspan(kHeader));
            rest = rest.subspan(length);
        }
        const bool broken = !startsHeader(rest) || (rest.size() >= kHeader && lengthAt(rest) < 4);
        held_.erase(held_.begin(), held_.end() - static_cast<std::ptrdiff_t>(rest.size()));
        inStep_ = !broken;
        if (inStep_) return;
    }
}

/// Drops what stands before the first header that others follow; false where there is none.
bool TpktReader::findHeader(const Receiver& receiver) {
    std::span<const uint8_t> rest = held_;
    while (!rest.empty() && !chains(rest)) rest = rest.subspan(1);
    if (rest.size() < held_.size()) receiver.lost(held_.size() - rest.size());
    held_.erase(held_.begin(), held_.end() - static_cast<std::ptrdiff_t>(rest.size()));
    return inStep_ = held_.size() >= kHeader;
}

void TpktReader::skip(const Receiver& receiver) {
    if (!held_.empty()) receiver.lost(held_.size());
    held_.clear();
    inStep_ = false;
}
