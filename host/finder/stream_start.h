// What a TCP stream is, by its first octets: for streams that no message has announced.
#pragma once

#include <cstdint>
#include <span>

/// The biggest part of a stream's start that is looked at.
constexpr size_t kMaxStreamStart = 16384;

struct StreamStart {
    enum Kind {
        kOpen,        // more octets are needed
        kForeign,     // no TPKTs
        kSignalling,  // TPKTs, and Q.931 in them
        kOther,       // TPKTs, and something else in them, which may be H.245
    };
    Kind kind = kOpen;
    std::span<const uint8_t> message;  // of kOther: the content of the first TPKT
};

/// Looks at the first octets of one side of a stream.
StreamStart lookAtStart(std::span<const uint8_t> octets);
