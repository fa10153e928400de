// The general allocator under control: the linker sends malloc, calloc and free of the test program
// through counters.
#pragma once

#include <cstdint>

struct Allocation {
    int64_t failAt = 0;      // the n-th request fails, and all later ones; 0: none
    int64_t requests = 0;    // since the last reset
    int64_t octets = 0;      // requested since then
    int64_t unreleased = 0;  // blocks not yet freed
};
extern Allocation allocation;
