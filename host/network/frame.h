// One frame of a capture.
#pragma once

#include <cstdint>
#include <span>

#include "frame_runs.h"

/// Microseconds since 1970, UTC.
using Time = int64_t;

/// Octets of a frame that are captured, at most. No known network has longer frames.
constexpr uint32_t kLongestFrame = 262144;

/// A frame. Its octets are valid until the next frame is read.
struct Frame {
    FrameId id = {};
    Time time = 0;
    unsigned linkType = 0;  // DLT_... of libpcap
    std::span<const uint8_t> octets;
    size_t length = 0;  // in octets, on the network; the capture may have only the first of them
};

/// When a packet or a message arrived, and in which frames. The last of them completed it.
struct Arrival {
    Time time = 0;
    std::span<const FrameId> frames = {};
};
