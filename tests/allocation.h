// The general allocator under control: the linker sends malloc, calloc and free of the test program
// through counters.
#pragma once

#include <cstddef>
#include <cstdint>

struct Allocation {
    int64_t failAt = 0;      // the n-th request fails; 0: none
    bool once = false;       // later requests do not fail
    size_t from = 0;         // smaller requests are neither counted nor refused
    int64_t requests = 0;    // since the last reset
    int64_t octets = 0;      // requested since then
    int64_t unreleased = 0;  // blocks not yet freed
};
extern Allocation allocation;
