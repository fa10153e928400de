// Messages made to measure, from tiny to 64 KiB.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

using Octets = std::vector<uint8_t>;

/// An H.245 command with the octets of a non-standard parameter as its one long string.
Octets stringMessage(uint32_t octets, bool aligned);

/// An H.225.0 call-signalling facility message with a list of `elements` short aliases.
Octets listMessage(uint32_t elements, bool aligned);
