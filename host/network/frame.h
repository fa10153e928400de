// One frame of a capture.
#pragma once

#include <cstdint>
#include <span>

/// Microseconds since 1970, UTC.
using Time = int64_t;

/// Valid until the next is read.
struct Frame {
    Time time = 0;
    unsigned linkType = 0;  // LINKTYPE_..., or libpcap's DLT_...
    std::span<const uint8_t> octets;
    size_t length = 0;  // on the network: more than octets if the capture has only a part
};
