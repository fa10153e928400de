#include "bits.h"

void asnCopyBits(uint8_t* to, const uint8_t* from, uint32_t unread, uint64_t nbits) {
    const auto whole = static_cast<size_t>(nbits / 8);
    const auto rest = static_cast<uint32_t>(nbits % 8);
    if (unread == 8) {
        std::memcpy(to, from, whole);
    } else {
        for (size_t i = 0; i < whole; ++i)
            to[i] = static_cast<uint8_t>(from[i] << (8 - unread) | from[i + 1] >> unread);
    }
    if (rest == 0) return;
    from += whole;
    uint32_t bits = uint32_t{*from} << (8 - unread);
    if (rest > unread) bits |= uint32_t{from[1]} >> unread;
    to[whole] = static_cast<uint8_t>(bits & 0xFF00U >> rest);
}

AsnStatus pd_IncrBitIdx(AsnContext& ctx) {
    return asnRead(ctx, [](auto in) { return pd_IncrBitIdx(in, in.ctx); });
}

AsnStatus pd_bit(AsnContext& ctx, uint8_t* value) {
    return asnRead(ctx, [=](auto in) { return pd_bit(in, value); });
}

AsnStatus pd_bits(AsnContext& ctx, uint32_t* value, uint32_t nbits) {
    return asnRead(ctx, [=](auto in) { return pd_bits(in, value, nbits); });
}

AsnStatus pd_octets(AsnContext& ctx, uint8_t* buffer, uint32_t capacity, uint32_t nbits) {
    return asnRead(ctx, [=](auto in) { return pd_octets(in, buffer, capacity, nbits); });
}

AsnStatus pd_byteAlign(AsnContext& ctx) {
    return asnRead(ctx, [](auto in) { return pd_byteAlign(in); });
}

AsnStatus pd_moveBitCursor(AsnContext& ctx, int64_t nbits) {
    return asnRead(ctx, [=](auto in) { return pd_moveBitCursor(in, nbits); });
}
