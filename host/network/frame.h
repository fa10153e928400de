// One frame of a capture.
#pragma once

#include <cstdint>
#include <span>

#include "frame_runs.h"

/// Microseconds since 1970, UTC.
using Time = int64_t;

/// The octets of a frame that are captured at most: all of any known network.
constexpr uint32_t kLongestFrame = 262144;

/// Valid until the next is read.
struct Frame {
    FrameId id = {};
    Time time = 0;
    unsigned linkType = 0;  // libpcap's DLT_...
    std::span<const uint8_t> octets;
    size_t length = 0;  // on the network: more than octets if the capture has only a part
};

/// How something came: when, and in which frames. The last of them completed it.
struct Arrival {
    Time time = 0;
    std::span<const FrameId> frames = {};
};
