// The element heap: the arena that holds every decoded value of one context.
#pragma once

#include <cstddef>
#include <cstdint>

/// What stands before the payload of a block. Payloads start 8-octet aligned: the header takes 8
/// octets where pointers take 4, and 16 where they take 8.
struct alignas(8) AsnMemBlock {
    AsnMemBlock* next;  // the block added before this one, null for the oldest
    uint32_t used;      // payload octets handed out; an oversized block counts as full
};

/// Payload octets of a standard block.
constexpr uint32_t kAsnBlockPayload = 4088;

/// Zeroed memory is an empty heap. Values are never freed one by one: `asnMemRelease` frees all.
struct AsnMemHeap {
    AsnMemBlock* newest;
    /// No block behind the newest has more room than this. Without the bound, each new block of a
    /// large message walks the whole chain in vain, and decoding becomes quadratic.
    uint32_t roomBehind;
};

/// Hands out `nbytes` zeroed octets, 8-octet aligned, from the newest block with room, else from a
/// new block; a request over `kAsnBlockPayload` gets a block of its own. Null where the general
/// allocator gives nothing: the chain is then as before, and the caller logs and returns -12.
void* asnMemAlloc(AsnMemHeap& heap, size_t nbytes);

/// The same without the zeroes, for a caller that writes every octet that can be read.
void* asnMemAllocRaw(AsnMemHeap& heap, size_t nbytes);

/// Frees every block. The head is not reset: the context is being destroyed.
void asnMemRelease(AsnMemHeap& heap);
