#include "bits.h"

#include "reader.h"

[[gnu::flatten]] AsnStatus pd_IncrBitIdx(AsnContext& ctx) {
    return asnRead(ctx, [](auto& in) { return in.step(); });
}

[[gnu::flatten]] AsnStatus pd_bit(AsnContext& ctx, uint8_t* value) {
    return asnRead(ctx, [value](auto& in) {
        if (value == nullptr) return in.step();
        uint32_t bit = 0;
        const AsnStatus status = in.bit(bit);
        if (status == kAsnOk) *value = static_cast<uint8_t>(bit);
        return status;
    });
}

[[gnu::flatten]] AsnStatus pd_bits(AsnContext& ctx, uint32_t* value, uint32_t nbits) {
    return asnRead(ctx, [value, nbits](auto& in) { return in.bits(*value, nbits); });
}

[[gnu::flatten]] AsnStatus pd_octets(AsnContext& ctx, uint8_t* buffer, uint32_t capacity,
                                     uint32_t nbits) {
    return asnRead(
        ctx, [buffer, capacity, nbits](auto& in) { return in.octets(buffer, capacity, nbits); });
}

[[gnu::flatten]] AsnStatus pd_byteAlign(AsnContext& ctx) {
    return asnRead(ctx, [](auto& in) { return in.align(); });
}

[[gnu::flatten]] AsnStatus pd_moveBitCursor(AsnContext& ctx, int64_t nbits) {
    return asnRead(ctx, [nbits](auto& in) { return in.move(nbits); });
}
