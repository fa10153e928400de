// The decoding context: one run over the octets of one message.
#pragma once

#include <cstdint>

#include "error.h"
#include "heap.h"

/// A size constraint (X.691, 07/2002, 10.9.4.1). Records with `extended` 0 hold the root range, one
/// with `extended` 1 the range that applies if the length-extension bit is set.
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
    AsnBitFieldLink* tail;  // its field is the current one, unless `lost`
    bool lost;              // the newest field could not be allocated: no field is current
};
struct AsnNameStack {
    int32_t count;
    const char* names[32];  // the caller's texts
};

/// Asks for field names that are full paths, as in the dump, and for positions in the message. Open
/// types that came in fragments are not part of the message: their fields are not recorded.
struct AsnFieldPaths {
    const char* root;     // the first step of every path
    const uint8_t* data;  // the message
    uint32_t size;
};

constexpr uint16_t ctxAllocated = 0x8000;   // asnFreeContext frees the context object itself
constexpr uint16_t ctxFieldTrace = 0x2000;  // the bit-field trace is on

/// Where a context reads: at bit byteIndex * 8 + 8 - bitOffset. (n, 0) and (n + 1, 8) are the same
/// position, but spans of unknown extensions are counted in octet indexes: every primitive accepts
/// both forms and leaves the one that it documents.
struct AsnCursor {
    const uint8_t* data;  // the octets that are read: the caller's, or those of an open type
    uint32_t byteIndex;   // the current octet
    uint32_t size;        // octets in `data`
    int16_t bitOffset;    // bits of the current octet not yet read: 8 .. 0

    AsnCursor() = default;
    AsnCursor(const AsnCursor& from) { *this = from; }
    /// Member by member: a copy in larger pieces would wait for the stores of the last step.
    AsnCursor& operator=(const AsnCursor& from) {  // NOLINT(bugprone-unhandled-self-assignment)
        data = from.data;
        byteIndex = from.byteIndex;
        size = from.size;
        bitOffset = from.bitOffset;
        return *this;
    }
};

/// One decoding run.
struct AsnContext : AsnCursor {
    uint8_t dynamic;       // 1: `data` is `ownBuffer`
    uint8_t aligned;       // 1: ALIGNED variant of PER, 0: UNALIGNED
    AsnErrorInfo errInfo;  // the trail of a failure
    AsnMemHeap memHeap;    // every decoded value
    uint16_t reserved;     // 0x0A0A
    uint16_t flags;        // ctxAllocated, ctxFieldTrace
    AsnBitFieldList fieldList;
    const AsnSizeConstraint* sizeConstraint;  // applies to the next length read; null: none
    AsnNameStack nameStack;
    uint8_t* ownBuffer;  // a buffer that asnBindBuffer allocated, or null; freed with the context
    uint32_t depth;      // values of recursive types that are being decoded
    const AsnFieldPaths* fieldPaths;  // the caller's, or null: names are labels, positions relative
};

/// A context in memory of its own over the caller's octets, which must outlive it. Null `data` or
/// zero `size` gives a zeroed buffer of 16384 octets. Returns null if memory is exhausted.
AsnContext* asnNewContext(const uint8_t* data, uint32_t size, uint8_t aligned);

/// Initialises a context in the caller's memory, UNALIGNED, and binds the octets as asnBindBuffer
/// does. Arrays whose count is 0 are not cleared. Returns 0 or -12.
[[nodiscard]] AsnStatus asnInitContext(AsnContext& ctx, const uint8_t* data, uint32_t size);

/// Moves the cursor to the start of other octets; errors, heap and flags stay. With null `data` or
/// zero `size` the context reads a zeroed buffer of 16384 octets of its own. Returns 0, or -12 if
/// that buffer cannot be allocated.
[[nodiscard]] AsnStatus asnBindBuffer(AsnContext& ctx, const uint8_t* data, uint32_t size);

/// Moves the cursor to the start of octets that may be none: `data` is not read if `size` is 0.
inline void asnBindOctets(AsnContext& ctx, const uint8_t* data, uint32_t size) {
    ctx.data = data;
    ctx.byteIndex = 0;
    ctx.size = size;
    ctx.bitOffset = 8;
    ctx.dynamic = 0;
}

/// Makes `fork` a second cursor over the same octets at the same position, with an empty heap and
/// trail and without a trace. It owns nothing until something is allocated through it. Returns 0.
AsnStatus asnForkContext(AsnContext& fork, const AsnContext& ctx);

/// Copies data, position, size, variant and flags, nothing else.
void asnCopyCursor(AsnContext& to, const AsnContext& from);

/// Frees all that the context owns: decoded values, trace, error parameters, its own buffer, and
/// the object itself if asnNewContext made it. The caller's octets and lent block are not freed.
void asnFreeContext(AsnContext& ctx);

/// Sets (non-zero) or clears ctxFieldTrace.
void asnSetFieldTrace(AsnContext& ctx, uint8_t on);

/// The cursor of a context, saved before an open type is entered and restored after it.
inline AsnCursor asnSaveCursor(const AsnContext& ctx) {
    return ctx;
}
inline void asnRestoreCursor(AsnContext& ctx, const AsnCursor& cursor) {
    static_cast<AsnCursor&>(ctx) = cursor;
}

/// Bits of the current octet not yet read. The compiler does not know by itself that they are 0 to
/// 8, and would extend the sign in every step.
inline uint32_t asnUnread(const AsnCursor& at) {
    const auto unread = static_cast<uint32_t>(at.bitOffset);
    if (unread > 8) __builtin_unreachable();
    return unread;
}

/// Absolute bit position of the cursor, and the bits from there to the end of the data (negative if
/// the cursor was moved beyond it).
inline int64_t asnBitPosition(const AsnCursor& at) {
    return int64_t{at.byteIndex} * 8 + 8 - asnUnread(at);
}
inline int64_t asnBitsLeft(const AsnCursor& at) {
    return int64_t{at.size} * 8 - asnBitPosition(at);
}

/// The absolute bit position. Valid below 2^31 bits.
inline int32_t pd_GetBitOffset(const AsnContext& ctx) {
    return static_cast<int32_t>(asnBitPosition(ctx));
}

/// Moves the cursor to a position, in the form with bitOffset 8 .. 1.
inline void pd_SetBitOffset(AsnContext& ctx, int64_t position) {
    ctx.byteIndex = static_cast<uint32_t>(position >> 3);
    ctx.bitOffset = static_cast<int16_t>(8 - (position & 7));
}

/// The process-wide diagnostic switch, 0 at start: while it is not 0, the primitives print what
/// they read to standard output. Stores and returns the value. Nothing in the library calls it.
int32_t asnSetDiag(int32_t value);
bool asnDiagOn();

/// Prints if the switch is on.
#if defined(__GNUC__)
__attribute__((format(printf, 1, 2), cold))
#endif
void asnDiag(const char* format, ...);
