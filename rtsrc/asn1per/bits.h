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
[[nodiscard]] AsnStatus pd_IncrBitIdx(AsnContext& ctx);

/// Reads one bit as 0 or 1; with a null `value` the bit is skipped. Leaves (n, 0) at the end of an
/// octet. Returns 0, or -2 at the end of the data, not logged.
[[nodiscard]] AsnStatus pd_bit(AsnContext& ctx, uint8_t* value);

/// Reads `nbits` bits as an unsigned number, the first bit the most significant; above 32 bits the
/// earliest are lost. 0 bits give 0 and never fail. Leaves (n, 8 .. 1). Returns 0, or -2, logged.
[[nodiscard]] AsnStatus pd_bits(AsnContext& ctx, uint32_t* value, uint32_t nbits);

/// Copies `nbits` bits, left-aligned, into `capacity` octets at `buffer`; the unused low bits of
/// the last octet are cleared. An aligned cursor is left as (n, 8 .. 1); another keeps its form
/// where whole octets are read. Returns 0, -2 at the end of the data, -17 where the buffer is too
/// small, both logged.
[[nodiscard]] AsnStatus pd_octets(AsnContext& ctx, uint8_t* buffer, uint32_t capacity,
                                  uint32_t nbits);

/// Moves to the next octet boundary, in either variant; (n, 0) counts as unaligned. Starts the
/// current traced field there. Returns 0, or -2, not logged, where no octet follows.
[[nodiscard]] AsnStatus pd_byteAlign(AsnContext& ctx);

/// Moves the cursor. Returns 0, or -2, not logged, from (size + 1) * 8 on: the test is loose by up
/// to 7 bits past the end, and the cursor has moved all the same. A position before the first octet
/// is refused with -2 without a move.
[[nodiscard]] AsnStatus pd_moveBitCursor(AsnContext& ctx, int64_t nbits);

// --- what callers run inline ---

/// The next `nbits` bits, where they stand in the current octet, as those of most fields do, and
/// nobody watches. The cursor stays.
inline bool asnPeekInOctet(const AsnContext& ctx, uint32_t nbits, uint32_t& value) {
    const auto unread = static_cast<uint32_t>(ctx.bitOffset);
    if (nbits > unread || ctx.byteIndex >= ctx.size ||
        asnEverWatched.load(std::memory_order_relaxed))
        return false;
    value = uint32_t{ctx.data[ctx.byteIndex]} >> (unread - nbits) & ((1U << nbits) - 1);
    return true;
}

/// Moves behind them: as single bits leave the cursor, and as a number does.
inline void asnSkipFlags(AsnContext& ctx, uint32_t nbits) {
    ctx.bitOffset = static_cast<int16_t>(static_cast<uint32_t>(ctx.bitOffset) - nbits);
}
inline void asnSkipNumber(AsnContext& ctx, uint32_t nbits) {
    asnSkipFlags(ctx, nbits);
    if (ctx.bitOffset == 0) {
        ++ctx.byteIndex;
        ctx.bitOffset = 8;
    }
}

/// Moves over octets at the next octet boundary of the ALIGNED variant and returns them, where they
/// are there and nobody watches. Else the cursor stays, and what is returned is null.
inline const uint8_t* asnTakeOctets(AsnContext& ctx, uint32_t octets) {
    const uint64_t index = uint64_t{ctx.byteIndex} + (ctx.bitOffset != 8 ? 1 : 0);
    if (ctx.aligned == 0 || index + octets > ctx.size ||
        asnEverWatched.load(std::memory_order_relaxed))
        return nullptr;
    ctx.byteIndex = static_cast<uint32_t>(index + octets);
    ctx.bitOffset = 8;
    return ctx.data + index;
}
