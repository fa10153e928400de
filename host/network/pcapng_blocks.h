// The blocks of a pcapng file that are read and written. A block consists of its type, its length
// in octets, its body, and its length again. Numbers have the byte order of the section.
#pragma once

#include <cstdint>

constexpr uint32_t kSectionHeader = 0x0A0D0D0A;  // the same in either byte order
constexpr uint32_t kInterfaceDescription = 1;
constexpr uint32_t kPacket = 2;  // obsolete
constexpr uint32_t kSimplePacket = 3;
constexpr uint32_t kEnhancedPacket = 6;

/// The first number of a section header. It shows the byte order.
constexpr uint32_t kByteOrderMagic = 0x1A2B3C4D;
