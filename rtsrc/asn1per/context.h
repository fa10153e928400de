// The decoding context: one run over the octets of one message.
#pragma once

#include <atomic>
#include <cstdint>

#include "error.h"
#include "heap.h"

/// A size constraint (X.691 10.9.4.1). Records with `extended` 0 hold the root range, one with
/// `extended` 1 the range that applies when the length-extension bit is set.
struct AsnSizeConstraint {
    uint8_t extended;
    uint32_t lower;
    uint32_t upper;
    const AsnSizeConstraint* next;  // the next record of the chain, null at the end
};

/// One traced bit field, in the element heap.
struct AsnBitField {
    const char* name;   // qualified name, in the element heap
    int32_t bitOffset;  // absolute bit position where the field starts
    int32_t bitCount;   // bits that it took; 0 until the field is closed
};
struct AsnBitFieldLink {
    AsnBitField* field;
    AsnBitFieldLink* next;
};
struct AsnBitFieldList {
    int32_t count;
    AsnBitFieldLink* head;
    AsnBitFieldLink* tail;  // its field is the current one
};
struct AsnNameStack {
    int32_t count;
    const char* names[32];  // the caller's texts
};

constexpr uint16_t ctxAllocated = 0x8000;   // asnFreeContext frees the context object itself
constexpr uint16_t ctxFieldTrace = 0x2000;  // the bit-field trace is on

/// Where a context reads, which it saves and restores around an open type. The bit position is
/// byteIndex * 8 + 8 - bitOffset. (n, 0) and (n + 1, 8) are the same position, but spans of unknown
/// extensions are counted in octet indexes: every primitive accepts both forms and leaves the one
/// that it documents.
struct AsnCursor {
    const uint8_t* data;  // the octets read; the caller's unless `dynamic`
    uint32_t byteIndex;   // the current octet
    uint32_t size;        // octets in `data`
    int16_t bitOffset;    // bits of the current octet not yet read: 8 .. 0
    uint8_t dynamic;      // 1: `data` is a buffer that the context allocated
    uint8_t aligned;      // 1: ALIGNED variant of PER, 0: UNALIGNED
    uint16_t flags;       // ctxAllocated, ctxFieldTrace
};

struct AsnContext : AsnCursor {
    AsnErrorInfo errInfo;
    AsnMemHeap memHeap;
    uint16_t reserved;  // 0x0A0A
    AsnBitFieldList fieldList;
    const AsnSizeConstraint* sizeConstraint;  // applies to the next length read; null: none
    AsnNameStack nameStack;
    uint8_t* ownedBuffer;  // the buffer of `dynamic`, kept here while the cursor is redirected
    uint32_t depth;        // open values of recursive types
};

/// A context in memory of its own over the caller's octets, which must outlive it. Null where
/// memory is exhausted. Null `data` or zero `size` gives a zeroed buffer of 16384 octets.
AsnContext* asnNewContext(const uint8_t* data, uint32_t size, uint8_t aligned);

/// Clears the context and binds the octets. 0, or -12 where a buffer was needed and not to be had.
[[nodiscard]] AsnStatus asnInitContext(AsnContext& ctx, const uint8_t* data, uint32_t size);

/// Puts the cursor at the start of other octets; errors, heap and flags stay. With null `data` or
/// zero `size` the context reads a zeroed buffer of 16384 octets of its own. 0 or -12.
[[nodiscard]] AsnStatus asnBindBuffer(AsnContext& ctx, const uint8_t* data, uint32_t size);

/// Puts the cursor at the start of the octets of an open type, which may be none at all.
inline void asnBindOpenType(AsnContext& ctx, const uint8_t* data, uint32_t numocts) {
    ctx.data = data;
    ctx.byteIndex = 0;
    ctx.size = numocts;
    ctx.bitOffset = 8;
    ctx.dynamic = 0;
}

/// A second cursor over the same octets at the same position, with an empty heap and trail and the
/// trace off. It owns nothing until something is allocated through it. Returns 0.
AsnStatus asnForkContext(AsnContext& fork, const AsnContext& ctx);

/// Copies the cursor of a context and nothing else.
inline void asnCopyCursor(AsnCursor& to, const AsnCursor& from) {
    to = from;
}

/// Frees all that the context owns - decoded values, trace, error parameters, its own buffer - and
/// the object itself if asnNewContext made it.
void asnFreeContext(AsnContext& ctx);

/// Whether anybody has watched a decode in this process, through the trace or the diagnostic
/// switch: until then, primitives need not look who does.
inline std::atomic<bool> asnEverWatched{false};

/// Sets or clears ctxFieldTrace.
void asnSetFieldTrace(AsnContext& ctx, uint8_t on);

/// The process-wide diagnostic switch, 0 at start: while it is not 0, the primitives print what
/// they read.
int32_t asnSetDiag(int32_t value);
bool asnDiagOn();
#if defined(__GNUC__)
__attribute__((format(printf, 1, 2), cold))
#endif
void asnDiag(const char* format, ...);
