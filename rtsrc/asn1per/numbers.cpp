#include "numbers.h"

AsnStatus pd_ConsWholeNumber(AsnContext& ctx, uint32_t* offset, uint32_t rangeSize) {
    return asnRead(ctx, [=](auto in) { return pd_ConsWholeNumber(in, offset, rangeSize); });
}

AsnStatus pd_ConsInteger(AsnContext& ctx, int32_t* value, int32_t lower, int32_t upper) {
    return asnRead(ctx, [=](auto in) { return pd_ConsInteger(in, value, lower, upper); });
}

AsnStatus pd_ConsUnsigned(AsnContext& ctx, uint32_t* value, uint32_t lower, uint32_t upper) {
    return asnRead(ctx, [=](auto in) { return pd_ConsUnsigned(in, value, lower, upper); });
}

AsnStatus pd_ExtInteger(AsnContext& ctx, int32_t* value, int32_t lower, int32_t upper) {
    return asnRead(ctx, [=](auto in) { return pd_ExtInteger(in, value, lower, upper); });
}

AsnStatus pd_UnconsInteger(AsnContext& ctx, int32_t* value) {
    return asnRead(ctx, [=](auto in) { return pd_UnconsInteger(in, value); });
}

AsnStatus pd_UnconsUnsigned(AsnContext& ctx, uint32_t* value) {
    return asnRead(ctx, [=](auto in) { return pd_UnconsUnsigned(in, value); });
}

AsnStatus pd_SmallNonNegWholeNumber(AsnContext& ctx, uint32_t* value) {
    return asnRead(ctx, [=](auto in) { return pd_SmallNonNegWholeNumber(in, value); });
}

AsnStatus pd_Length(AsnContext& ctx, uint32_t* count) {
    return asnRead(ctx, [=](auto in) { return pd_Length(in, count); });
}

int32_t pd_GetComponentLength(AsnContext& ctx, uint32_t itemBits) {
    return asnRead(ctx, [=](auto in) { return pd_GetComponentLength(in, itemBits); });
}
