// The bit reader: every other primitive and every generated decoder stands on it.
//
// Bits are read most significant first within an octet, octets in ascending order, in place. A read
// that fails for want of bits leaves the cursor where it was, and never touches an octet outside
// the buffer.
#pragma once

#include "context.h"

/// Absolute bit position of the cursor, and the bits from there to the end of the data (negative
/// where the cursor was moved past it).
inline int64_t asnBitPosition(const AsnContext& ctx) {
    return int64_t{ctx.byteIndex} * 8 + 8 - ctx.bitOffset;
}
inline int64_t asnBitsLeft(const AsnContext& ctx) {
    return int64_t{ctx.size} * 8 - asnBitPosition(ctx);
}

/// Puts the cursor at a position, in the form with bitOffset 8 .. 1.
inline void pd_SetBitOffset(AsnContext& ctx, int64_t position) {
    ctx.byteIndex = static_cast<uint32_t>(position / 8);
    ctx.bitOffset = static_cast<int16_t>(8 - position % 8);
}

/// The absolute bit position. Meaningful below 2^31 bits.
inline int32_t pd_GetBitOffset(const AsnContext& ctx) {
    return static_cast<int32_t>(asnBitPosition(ctx));
}

/// Steps the cursor one bit forward; the bit stepped over is then bit number bitOffset (7 .. 0) of
/// the current octet. Returns 0, or -2 at the end of the data, not logged.
[[nodiscard]] inline AsnStatus pd_IncrBitIdx(AsnContext& ctx) {
    const uint32_t byteIndex = ctx.byteIndex + (ctx.bitOffset == 0 ? 1 : 0);
    if (byteIndex >= ctx.size) return kAsnEndOfData;
    ctx.bitOffset = static_cast<int16_t>((ctx.bitOffset == 0 ? 8 : ctx.bitOffset) - 1);
    ctx.byteIndex = byteIndex;
    if (asnDiagOn())
        asnDiag("pd_IncrBitIdx: bitOffset = %d, byteIndex = %d\n", ctx.bitOffset,
                static_cast<int>(ctx.byteIndex));
    return kAsnOk;
}

/// Reads one bit as 0 or 1; with a null `value` the bit is skipped. Leaves (n, 0) at the end of an
/// octet. Returns 0, or -2 at the end of the data, not logged.
[[nodiscard]] inline AsnStatus pd_bit(AsnContext& ctx, uint8_t* value) {
    const AsnStatus status = pd_IncrBitIdx(ctx);
    if (status != kAsnOk || value == nullptr) return status;
    *value = static_cast<uint8_t>(ctx.data[ctx.byteIndex] >> ctx.bitOffset & 1);
    if (asnDiagOn()) asnDiag("pd_bit: value = %d\n", *value);
    return kAsnOk;
}

/// pd_bits where the bits are not all in the current octet, and its diagnostic lines.
[[nodiscard]] AsnStatus asnBitsAcross(AsnContext& ctx, uint32_t* value, uint32_t nbits);
[[gnu::cold]] void asnDiagBits(const AsnContext& ctx, uint32_t nbits);

/// Reads `nbits` bits as an unsigned number, the first bit the most significant; above 32 bits the
/// earliest are lost. 0 bits give 0 and never fail. Leaves (n, 8 .. 1). Returns 0, or -2, logged.
[[nodiscard]] inline AsnStatus pd_bits(AsnContext& ctx, uint32_t* value, uint32_t nbits) {
    if (asnDiagOn()) asnDiagBits(ctx, nbits);
    const auto unread = static_cast<uint32_t>(ctx.bitOffset);
    if (nbits - 1 >= unread || ctx.byteIndex >= ctx.size) return asnBitsAcross(ctx, value, nbits);
    const uint32_t left = unread - nbits;
    *value = (uint32_t{ctx.data[ctx.byteIndex]} >> left) & ((1U << nbits) - 1);
    ctx.byteIndex += left == 0 ? 1 : 0;
    ctx.bitOffset = static_cast<int16_t>(left == 0 ? 8 : left);
    return kAsnOk;
}

/// Copies `nbits` bits, left-aligned, into `capacity` octets at `buffer`; the unused low bits of
/// the last octet are cleared. An aligned cursor is left as (n, 8 .. 1); another keeps its form
/// where whole octets are read. Returns 0, -2 at the end of the data, -17 where the buffer is too
/// small, both logged.
[[nodiscard]] AsnStatus pd_octets(AsnContext& ctx, uint8_t* buffer, uint32_t capacity,
                                  uint32_t nbits);

/// Moves the start of the current traced field to the cursor: the trace's, called here alone.
[[gnu::cold]] void pu_setFldBitOffset(AsnContext& ctx);

/// Moves to the next octet boundary, in either variant; (n, 0) counts as unaligned. Starts the
/// current traced field there. Returns 0, or -2, not logged, where no octet follows.
[[nodiscard]] inline AsnStatus pd_byteAlign(AsnContext& ctx) {
    if (ctx.bitOffset != 8) {
        ++ctx.byteIndex;
        ctx.bitOffset = 8;
        if ((ctx.flags & ctxFieldTrace) != 0) pu_setFldBitOffset(ctx);
    }
    return ctx.byteIndex >= ctx.size ? kAsnEndOfData : kAsnOk;
}

/// The diagnostic lines of pd_moveBitCursor.
[[gnu::cold]] void asnDiagMove(const AsnContext& ctx, const char* when);

/// Moves the cursor. Returns 0, or -2, not logged, from (size + 1) * 8 on: the test is loose by up
/// to 7 bits past the end, and the cursor has moved all the same. A position before the first octet
/// is refused with -2 without a move.
[[nodiscard]] inline AsnStatus pd_moveBitCursor(AsnContext& ctx, int64_t nbits) {
    if (asnDiagOn()) {
        asnDiag("pd_moveBitCursor: bitOffset = %d\n", static_cast<int>(nbits));
        asnDiagMove(ctx, "before");
    }
    const int64_t position = asnBitPosition(ctx) + nbits;
    if (position < 0) return kAsnEndOfData;
    const int64_t limit = (int64_t{ctx.size} + 1) * 8;
    pd_SetBitOffset(ctx, position < limit ? position : limit);
    if (asnDiagOn()) asnDiagMove(ctx, "after");
    return ctx.byteIndex > ctx.size ? kAsnEndOfData : kAsnOk;
}

// --- for the run-time's own sources ---

/// Logs the failures of one source file of the run-time: `logError(ctx, status)` records the line
/// that it stands on.
struct AsnLogger {
    AsnLogBase base;
    AsnStatus operator()(AsnContext& ctx, AsnStatus status, int line = __builtin_LINE()) const {
        return asnLogError(ctx.errInfo, status, kAsnRuntime, static_cast<int32_t>(base) + line);
    }
};
