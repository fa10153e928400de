// The element heap: the arena that holds every decoded value of one context.
#pragma once

#include <cstddef>
#include <cstdint>

/// The header of a block, before its payload. Payloads start 8-octet aligned: the header takes 8
/// octets where pointers take 4, and 16 where they take 8.
struct alignas(8) AsnMemBlock {
    AsnMemBlock* next;  // the block added before this one, null for the oldest
    uint32_t used;      // payload octets handed out; an oversized block counts as full
};

/// Payload octets of a standard block.
constexpr uint32_t kAsnBlockPayload = 4088;

/// A first block in memory of the caller's, with room for a message whose records hold a key of
/// 65535 octets, as those that open a logical channel do.
struct AsnMemFirstBlock {
    AsnMemBlock block;
    unsigned char payload[72 * 1024];
};

/// Zeroed memory is an empty heap. Values are never freed one by one: `asnMemRelease` frees all.
struct AsnMemHeap {
    AsnMemBlock* newest;
    AsnMemBlock* filled;     // the newest standard block; oversized blocks are always full
    uint32_t filledPayload;  // payload octets of that block
    /// No older block has more room than this. Without the bound, the whole chain would be searched
    /// without success for each new block of a large message, and decoding would be quadratic.
    uint32_t olderRoom;
    const AsnMemBlock* lent;  // an AsnMemFirstBlock, which the heap does not free, or null
};

/// Makes the caller's block the first one of an empty heap. Most messages need no other block. It
/// must outlive the heap, and is not freed with it.
inline void asnMemLend(AsnMemHeap& heap, AsnMemFirstBlock& first) {
    first.block = {nullptr, 0};
    heap.newest = &first.block;
    heap.filled = &first.block;
    heap.filledPayload = sizeof first.payload;
    heap.lent = &first.block;
}

/// asnMemAllocRaw if the newest standard block has no room.
void* asnMemAllocElsewhere(AsnMemHeap& heap, size_t nbytes);

/// Hands out `nbytes` octets, 8-octet aligned, from the newest block with room, else from a new
/// block; a request over `kAsnBlockPayload` gets a block of its own. They are not zeroed: for a
/// caller that writes every octet that can be read. Null if memory could not be allocated:
/// the chain is then as before, and the caller logs and returns -12.
inline void* asnMemAllocRaw(AsnMemHeap& heap, size_t nbytes) {
    AsnMemBlock* const block = heap.filled;
    if (block == nullptr || nbytes > heap.filledPayload - block->used) [[unlikely]]
        return asnMemAllocElsewhere(heap, nbytes);
    void* const memory = reinterpret_cast<unsigned char*>(block + 1) + block->used;
    block->used += static_cast<uint32_t>(nbytes + 7) & ~uint32_t{7};
    return memory;
}

/// The same with zeroes.
void* asnMemAlloc(AsnMemHeap& heap, size_t nbytes);

/// Frees every block except one that was lent. The head is not reset: the context is destroyed.
void asnMemRelease(AsnMemHeap& heap);
