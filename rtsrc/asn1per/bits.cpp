#include "bits.h"

#include <cstring>

#include "trace.h"

namespace {

constexpr AsnLogger logError{AsnLogBase::bits};

}  // namespace

AsnStatus asnBitsAcross(AsnContext& ctx, uint32_t* value, uint32_t nbits) {
    *value = 0;
    if (nbits == 0) return kAsnOk;
    if (asnBitsLeft(ctx) < int64_t{nbits}) return logError(ctx, kAsnEndOfData);
    const auto unread = static_cast<uint32_t>(ctx.bitOffset);
    uint32_t index = ctx.byteIndex;
    uint32_t bits = ctx.data[index++] & ((1U << unread) - 1);
    uint32_t rest = nbits - unread;
    for (; rest >= 8; rest -= 8) bits = bits << 8 | ctx.data[index++];
    if (rest > 0) bits = bits << rest | uint32_t{ctx.data[index]} >> (8 - rest);
    *value = bits;
    ctx.byteIndex = index;
    ctx.bitOffset = static_cast<int16_t>(8 - rest);
    return kAsnOk;
}

void asnDiagBits(const AsnContext& ctx, uint32_t nbits) {
    asnDiag("pd_bits: nbits = %d, nbytes = %d\n", static_cast<int>(nbits),
            static_cast<int>(((nbits - 1) >> 3) + 1));
    if (nbits != 0 && asnBitsLeft(ctx) >= int64_t{nbits} &&
        nbits >= static_cast<uint32_t>(ctx.bitOffset))
        asnDiag("pd_bits: mask = %x, data[index] = %x\n", (1U << ctx.bitOffset) - 1,
                static_cast<unsigned>(ctx.data[ctx.byteIndex]));
}

AsnStatus pd_octets(AsnContext& ctx, uint8_t* buffer, uint32_t capacity, uint32_t nbits) {
    if (asnBitsLeft(ctx) < int64_t{nbits}) return logError(ctx, kAsnEndOfData);
    const uint32_t whole = nbits / 8;
    const uint32_t rest = nbits % 8;
    if (whole + (rest != 0 ? 1 : 0) > capacity) return logError(ctx, kAsnTooLong);
    if (nbits == 0) return kAsnOk;

    const uint8_t* from = ctx.data + ctx.byteIndex;
    const int unread = ctx.bitOffset;
    if (unread == 8) {
        std::memcpy(buffer, from, whole);
    } else {
        for (uint32_t i = 0; i < whole; ++i)
            buffer[i] = static_cast<uint8_t>(from[i] << (8 - unread) | from[i + 1] >> unread);
    }
    if (rest != 0) {
        from += whole;
        unsigned bits = static_cast<unsigned>(*from) << (8 - unread);
        if (static_cast<int>(rest) > unread) bits |= static_cast<unsigned>(from[1]) >> unread;
        buffer[whole] = static_cast<uint8_t>(bits & 0xFF00U >> rest);
    }
    if (unread == 8) return pd_moveBitCursor(ctx, nbits);
    if (rest == 0)
        ctx.byteIndex += whole;
    else
        pd_SetBitOffset(ctx, asnBitPosition(ctx) + nbits);
    return kAsnOk;
}

void asnDiagMove(const AsnContext& ctx, const char* when) {
    asnDiag("context %s move: bitOffset = %d, byteIndex = %d\n", when, ctx.bitOffset,
            static_cast<int>(ctx.byteIndex));
}

static_assert(__LINE__ < 1000, "trail lines of two source files would meet");
