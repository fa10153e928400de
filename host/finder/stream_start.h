// Judges a TCP stream by its first octets. This is for streams that no message has announced.
#pragma once

#include <cstdint>
#include <span>

/// Octets of the longest TPKT with which a stream of H.323 may start.
constexpr size_t kMaxStreamStart = 16384;

struct StreamStart {
    enum Kind {
        kOpen,        // more octets are needed
        kForeign,     // no TPKTs
        kSignalling,  // TPKTs that contain Q.931
        kOther,       // TPKTs that contain something else, perhaps H.245
    };
    Kind kind = kOpen;
    std::span<const uint8_t> message;  // the content of the first TPKT that is not empty
};

/// Judges the first octets of one side of a stream.
StreamStart lookAtStart(std::span<const uint8_t> octets);
