#include "heap.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

void* payload(AsnMemBlock* block, uint32_t at) {
    return reinterpret_cast<unsigned char*>(block + 1) + at;
}

uint32_t room(const AsnMemHeap& heap, const AsnMemBlock* block) {
    const size_t size = block == heap.lent ? sizeof AsnMemFirstBlock::payload : kAsnBlockPayload;
    return static_cast<uint32_t>(size) - block->used;
}

void* take(AsnMemBlock* block, uint32_t size) {
    void* const memory = payload(block, block->used);
    block->used += size;
    return memory;
}

/// A new block in front of the chain, or null with the chain unchanged.
AsnMemBlock* addBlock(AsnMemHeap& heap, size_t payloadSize, uint32_t used) {
    auto* const block = static_cast<AsnMemBlock*>(std::malloc(sizeof(AsnMemBlock) + payloadSize));
    if (block == nullptr) return nullptr;
    block->next = heap.newest;
    block->used = used;
    heap.newest = block;
    return block;
}

/// First fit in the older blocks. A search without success lowers the bound to their actual room.
void* takeFromOlder(AsnMemHeap& heap, uint32_t size) {
    uint32_t widest = 0;
    for (AsnMemBlock* block = heap.filled->next; block != nullptr; block = block->next) {
        if (room(heap, block) >= size) return take(block, size);
        widest = std::max(widest, room(heap, block));
    }
    heap.olderRoom = widest;
    return nullptr;
}

}  // namespace

void* asnMemAllocElsewhere(AsnMemHeap& heap, size_t nbytes) {
    if (nbytes > SIZE_MAX - 64) return nullptr;
    const size_t rounded = (nbytes + 7) & ~size_t{7};
    if (rounded > kAsnBlockPayload) {
        AsnMemBlock* const block = addBlock(heap, rounded, kAsnBlockPayload);
        return block != nullptr ? payload(block, 0) : nullptr;
    }
    const auto size = static_cast<uint32_t>(rounded);
    if (heap.filled != nullptr && heap.olderRoom >= size) {
        if (void* const memory = takeFromOlder(heap, size)) return memory;
    }
    AsnMemBlock* const block = addBlock(heap, kAsnBlockPayload, size);
    if (block == nullptr) return nullptr;
    if (heap.filled != nullptr) heap.olderRoom = std::max(heap.olderRoom, room(heap, heap.filled));
    heap.filled = block;
    heap.filledPayload = kAsnBlockPayload;
    return payload(block, 0);
}

void* asnMemAlloc(AsnMemHeap& heap, size_t nbytes) {
    void* const memory = asnMemAllocRaw(heap, nbytes);
    if (memory != nullptr) std::memset(memory, 0, nbytes);
    return memory;
}

void asnMemRelease(AsnMemHeap& heap) {
    for (AsnMemBlock* block = heap.newest; block != nullptr;) {
        AsnMemBlock* const next = block->next;
        if (block != heap.lent) std::free(block);
        block = next;
    }
}
