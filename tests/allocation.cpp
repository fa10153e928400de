#include "allocation.h"

#include <cstddef>

Allocation allocation;

extern "C" {
void* __real_malloc(size_t size);
void* __real_calloc(size_t count, size_t size);
void __real_free(void* block);
void* __wrap_malloc(size_t size);
void* __wrap_calloc(size_t count, size_t size);
void __wrap_free(void* block);
}

static bool refused(size_t size) {
    if (size >= allocation.from) {
        ++allocation.requests;
        allocation.octets += static_cast<int64_t>(size);
        const int64_t beyond = allocation.requests - allocation.failAt;
        if (allocation.failAt != 0 && (allocation.once ? beyond == 0 : beyond >= 0)) return true;
    }
    ++allocation.unreleased;
    return false;
}

void* __wrap_malloc(size_t size) {
    return refused(size) ? nullptr : __real_malloc(size);
}

void* __wrap_calloc(size_t count, size_t size) {
    return refused(count * size) ? nullptr : __real_calloc(count, size);
}

void __wrap_free(void* block) {
    if (block != nullptr) --allocation.unreleased;
    __real_free(block);
}
