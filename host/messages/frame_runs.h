// Which frames of a capture carried which octets of a stream.
#pragma once

#include <algorithm>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// Identifies a frame. The order of these is the order in which the frames are read.
struct FrameId {
    uint32_t file = 0;    // which of the input files, from 0
    uint32_t number = 0;  // in that file, from 1, as Wireshark counts

    auto operator<=>(const FrameId&) const = default;
};

/// The octets of a buffer or of a stream that a frame carried. Several frames may have carried the
/// same octets.
struct FrameRun {
    FrameId frame;
    uint32_t begin = 0;
    uint32_t end = 0;  // one after the last
};

/// Octets of a stream, and the frames that carried them.
struct StreamPart {
    std::span<const uint8_t> octets;
    std::span<const FrameRun> runs;  // positions in `octets`, in ascending order of `begin`
};

/// Appends those of the runs `all` that are in the part [first, last) of their buffer. The part is
/// at position `to` of the buffer that `runs` belongs to.
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

/// Sets `frames` to the frames that carried octets of [first, last): each once, in order.
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
