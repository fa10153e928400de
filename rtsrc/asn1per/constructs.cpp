#include "constructs.h"

#include <cstring>

void* asnAllocCleared(AsnContext& ctx, size_t count, size_t size) {
    size_t octets = 0;
    if (__builtin_mul_overflow(count, size, &octets)) return nullptr;
    void* const memory = asnMemAllocRaw(ctx.memHeap, octets);
    return memory != nullptr ? std::memset(memory, 0, octets) : nullptr;
}

void* asnAllocRecords(AsnContext& ctx, size_t count, size_t size, const AsnSpan* uncleared,
                      size_t spans) {
    size_t octets = 0;
    if (__builtin_mul_overflow(count, size, &octets)) return nullptr;
    auto* const records = static_cast<unsigned char*>(asnMemAllocRaw(ctx.memHeap, octets));
    if (records == nullptr) return nullptr;
    for (unsigned char* record = records; count > 0; --count, record += size) {
        size_t at = 0;
        for (size_t i = 0; i < spans; ++i) {
            std::memset(record + at, 0, uncleared[i].offset - at);
            at = uncleared[i].offset + uncleared[i].size;
        }
        std::memset(record + at, 0, size - at);
    }
    return records;
}
