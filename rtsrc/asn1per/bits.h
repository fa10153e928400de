// The bit reader: every other primitive and every generated decoder reads through it.
//
// Bits are read most significant first within an octet, octets in ascending order, in place. A step
// that fails because too few bits are left does not move the cursor, stores nothing, and never
// touches an octet outside the buffer. Each function exists twice: as a template over a reader,
// which holds the rule, and for a context, which picks the reader.
#pragma once

#include <cstring>

#include "reader.h"

/// Steps the cursor one bit forward; the bit stepped over is then bit number bitOffset (7 .. 0) of
/// the current octet. Returns 0, or -2 at the end of the data, not logged.
[[nodiscard]] AsnStatus pd_IncrBitIdx(AsnContext& ctx);

/// Reads one bit as 0 or 1; with a null `value` the bit is skipped. Leaves (n, 0) at the end of an
/// octet. Returns 0, or -2 at the end of the data, not logged.
[[nodiscard]] AsnStatus pd_bit(AsnContext& ctx, uint8_t* value);

/// Reads `nbits` bits as an unsigned number, the first bit the most significant; above 32 bits the
/// first ones are lost. 0 bits give 0 and never fail. Leaves (n, 8 .. 1). Returns 0, or -2, logged.
[[nodiscard]] AsnStatus pd_bits(AsnContext& ctx, uint32_t* value, uint32_t nbits);

/// Copies `nbits` bits, left-aligned, into `capacity` octets at `buffer`; the unused low bits of
/// the last octet are cleared. A null `buffer` skips the bits. An aligned cursor is left as
/// (n, 8 .. 1); another keeps its form if whole octets are read. Returns 0, -2 at the end of the
/// data, or -17 if the buffer is too small; both logged.
[[nodiscard]] AsnStatus pd_octets(AsnContext& ctx, uint8_t* buffer, uint32_t capacity,
                                  uint32_t nbits);

/// Moves to the next octet boundary, in either variant; (n, 0) counts as unaligned. The current
/// traced field then starts there. Returns 0, or -2, not logged, if no octet follows.
[[nodiscard]] AsnStatus pd_byteAlign(AsnContext& ctx);

/// Moves the cursor. Returns 0, or -2, not logged, from (size + 1) * 8 on: the test allows up to 7
/// bits beyond the end, and the cursor has moved even if it fails. A move to before the first bit
/// fails with -2 and does not move.
[[nodiscard]] AsnStatus pd_moveBitCursor(AsnContext& ctx, int64_t nbits);

// --- the rules ---

template <bool Tracing, AsnRules rules>
[[nodiscard]] inline AsnStatus pd_IncrBitIdx(AsnReader<Tracing, rules> in, AsnCursor& at) {
    uint32_t index = at.byteIndex;
    uint32_t unread = asnUnread(at);
    if (unread == 0) [[unlikely]] {
        ++index;
        unread = 8;
    }
    if (index >= at.size) [[unlikely]]
        return kAsnEndOfData;
    at.byteIndex = index;
    at.bitOffset = static_cast<int16_t>(unread - 1);
    in.diag("pd_IncrBitIdx: bitOffset = %d, byteIndex = %d\n", static_cast<int>(at.bitOffset),
            static_cast<int>(at.byteIndex));
    return kAsnOk;
}

/// pd_bit at a second cursor over the same octets.
template <bool Tracing, AsnRules rules>
[[nodiscard]] inline AsnStatus asnBitAt(AsnReader<Tracing, rules> in, AsnCursor& at,
                                        uint8_t* value) {
    const AsnStatus status = pd_IncrBitIdx(in, at);
    if (status != kAsnOk || value == nullptr) return status;
    *value = at.data[at.byteIndex] >> at.bitOffset & 1;
    in.diag("pd_bit: value = %d\n", static_cast<int>(*value));
    return kAsnOk;
}

template <bool Tracing, AsnRules rules>
[[nodiscard]] inline AsnStatus pd_bit(AsnReader<Tracing, rules> in, uint8_t* value) {
    return asnBitAt(in, in.ctx, value);
}

/// pd_bits if the current octet does not hold all the bits. Returns the number, or the failure.
template <bool Tracing, AsnRules rules>
[[nodiscard]] ASN_INLINE int64_t asnBitsAcross(AsnReader<Tracing, rules> in, uint64_t nbits) {
    AsnContext& ctx = in.ctx;
    if (asnBitsLeft(ctx) < static_cast<int64_t>(nbits))
        return in.log(AsnSource::bits, kAsnEndOfData);
    const uint32_t unread = asnUnread(ctx);
    const uint8_t* next = ctx.data + ctx.byteIndex;
    const uint32_t mask = (1U << unread) - 1;
    in.diag("pd_bits: mask = %x, data[index] = %x\n", mask, static_cast<unsigned>(*next));
    uint32_t word = *next++ & mask;
    uint64_t rest = nbits - unread;
    for (; rest >= 8; rest -= 8) word = word << 8 | *next++;
    if (rest > 0) word = word << rest | uint32_t{*next} >> (8 - rest);
    ctx.byteIndex = static_cast<uint32_t>(next - ctx.data);
    ctx.bitOffset = static_cast<int16_t>(8 - rest);
    return word;
}

template <bool Tracing, AsnRules rules>
[[nodiscard, gnu::noinline]] int64_t asnCallBitsAcross(AsnReader<Tracing, rules> in,
                                                       uint64_t nbits) {
    return asnBitsAcross(in, nbits);
}

/// The common case is inline. With `wholeOctets` the other one is inline, too: the bits are then
/// whole octets at an octet boundary.
template <bool wholeOctets = false, bool Tracing, AsnRules rules>
[[nodiscard]] ASN_INLINE AsnStatus pd_bits(AsnReader<Tracing, rules> in, uint32_t* value,
                                           uint64_t nbits) {
    AsnContext& ctx = in.ctx;
    in.diag("pd_bits: nbits = %d, nbytes = %d\n", static_cast<int>(nbits),
            static_cast<int>(((static_cast<uint32_t>(nbits) - 1) >> 3) + 1));
    if (nbits == 0) {
        *value = 0;
        return kAsnOk;
    }
    const uint32_t unread = asnUnread(ctx);
    if (nbits > unread || ctx.byteIndex >= ctx.size) [[unlikely]] {
        const int64_t number =
            wholeOctets ? asnBitsAcross(in, nbits) : asnCallBitsAcross(in, nbits);
        if (number < 0) return static_cast<AsnStatus>(number);
        *value = static_cast<uint32_t>(number);
        return kAsnOk;
    }
    const uint32_t octet = ctx.data[ctx.byteIndex];
    const uint32_t mask = (1U << nbits) - 1;
    const auto rest = unread - static_cast<uint32_t>(nbits);
    if (rest == 0) in.diag("pd_bits: mask = %x, data[index] = %x\n", mask, octet);
    *value = octet >> rest & mask;
    if (rest == 0) ++ctx.byteIndex;
    ctx.bitOffset = static_cast<int16_t>(rest != 0 ? rest : 8);
    return kAsnOk;
}

template <bool Tracing, AsnRules rules>
[[nodiscard]] AsnStatus pd_moveBitCursor(AsnReader<Tracing, rules> in, int64_t nbits) {
    AsnContext& ctx = in.ctx;
    in.diag("pd_moveBitCursor: bitOffset = %d\n", static_cast<int>(nbits));
    in.diag("context before move: bitOffset = %d, byteIndex = %d\n",
            static_cast<int>(ctx.bitOffset), static_cast<int>(ctx.byteIndex));
    const int64_t position = asnBitPosition(ctx) + nbits;
    if (position < 0) return kAsnEndOfData;
    pd_SetBitOffset(ctx, position);
    in.diag("context after move: bitOffset = %d, byteIndex = %d\n", static_cast<int>(ctx.bitOffset),
            static_cast<int>(ctx.byteIndex));
    return position >> 3 <= int64_t{ctx.size} ? kAsnOk : kAsnEndOfData;
}

/// Copies `nbits` bits, which start with the `unread` low bits of the octet at `from`. For bits
/// that are not whole octets at an octet boundary.
void asnCopyBits(uint8_t* to, const uint8_t* from, uint32_t unread, uint64_t nbits);

template <bool Tracing, AsnRules rules>
[[nodiscard]] ASN_INLINE AsnStatus pd_octets(AsnReader<Tracing, rules> in, uint8_t* buffer,
                                             uint32_t capacity, uint64_t nbits) {
    AsnContext& ctx = in.ctx;
    const uint64_t octets = (nbits + 7) / 8;
    if (asnBitsLeft(ctx) < static_cast<int64_t>(nbits))
        return in.log(AsnSource::bits, kAsnEndOfData);
    if (octets > capacity) return in.log(AsnSource::bits, kAsnTooLong);
    const bool wholeOctets = nbits % 8 == 0;
    const uint32_t unread = asnUnread(ctx);
    if (buffer != nullptr && nbits != 0) {
        const uint8_t* const from = ctx.data + ctx.byteIndex;
        if (wholeOctets && unread == 8)
            std::memcpy(buffer, from, static_cast<size_t>(octets));
        else
            asnCopyBits(buffer, from, unread, nbits);
    }
    if (Tracing && unread == 8) return pd_moveBitCursor(in, static_cast<int64_t>(nbits));
    if (wholeOctets)
        ctx.byteIndex += static_cast<uint32_t>(octets);
    else
        pd_SetBitOffset(ctx, asnBitPosition(ctx) + static_cast<int64_t>(nbits));
    return kAsnOk;
}

template <bool Tracing, AsnRules rules>
[[nodiscard]] inline AsnStatus pd_byteAlign(AsnReader<Tracing, rules> in) {
    AsnContext& ctx = in.ctx;
    if (ctx.bitOffset != 8) {
        ++ctx.byteIndex;
        ctx.bitOffset = 8;
        in.setFieldOffset();
    }
    if (ctx.bitOffset != 8) __builtin_unreachable();  // the compiler does not see this by itself
    return ctx.byteIndex < ctx.size ? kAsnOk : kAsnEndOfData;
}

static_assert(__LINE__ < 1000, "the trail lines of two sources would overlap");
