// Numbers in network byte order. The caller has checked that the octets are there.
#pragma once

#include <cstdint>
#include <span>

inline unsigned be16(std::span<const uint8_t> octets, size_t at) {
    return octets[at] * 256U + octets[at + 1];
}

inline uint32_t be32(std::span<const uint8_t> octets, size_t at) {
    return be16(octets, at) << 16 | be16(octets, at + 2);
}
