// Which frames of a capture carried which octets.
#pragma once

#include <algorithm>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// A frame among all captures that are read, in the order in which it was read.
struct FrameId {
    uint32_t file = 0;    // from 0
    uint32_t number = 0;  // in its file, from 1: as Wireshark counts

    auto operator<=>(const FrameId&) const = default;
};

/// A frame carried these octets of a buffer, or of a stream. Several may have carried the same.
struct FrameRun {
    FrameId frame;
    uint32_t begin = 0;
    uint32_t end = 0;
};

/// Octets of a stream, and what carried them.
struct StreamPart {
    std::span<const uint8_t> octets;
    std::span<const FrameRun> runs;  // of these octets, in order of their begin
};

/// Appends the runs of a part of a buffer, from `first` to before `last`; they become those of a
/// buffer which has that part at `to`.
inline void appendPart(std::vector<FrameRun>& runs, std::span<const FrameRun> all, size_t first,
                       size_t last, size_t to) {
    for (const FrameRun& run : all) {
        const size_t begin = std::max<size_t>(run.begin, first);
        const size_t end = std::min<size_t>(run.end, last);
        if (begin < end)
            runs.push_back({run.frame, static_cast<uint32_t>(begin - first + to),
                            static_cast<uint32_t>(end - first + to)});
    }
}

/// Sets `frames` to those that carried octets from `first` to before `last`: each once, in order.
inline void findFrames(std::vector<FrameId>& frames, std::span<const FrameRun> runs, size_t first,
                       size_t last) {
    frames.clear();
    for (const FrameRun& run : runs) {
        if (run.begin >= last) break;
        if (run.end > first) frames.push_back(run.frame);
    }
    if (frames.size() < 2) return;
    std::sort(frames.begin(), frames.end());
    frames.erase(std::unique(frames.begin(), frames.end()), frames.end());
}
