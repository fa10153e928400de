#include "opentypes.h"

AsnStatus pd_OpenType(AsnContext& ctx, const uint8_t** data, uint32_t* numocts) {
    return asnRead(ctx, [=](auto in) { return pd_OpenType(in, data, numocts); });
}

AsnStatus pd_OpenTypeExt(AsnContext& ctx, const uint8_t** data, uint32_t* numocts) {
    return asnRead(ctx, [=](auto in) { return pd_OpenTypeExt(in, data, numocts); });
}

AsnStatus pd_ChoiceOpenTypeExt(AsnContext& ctx, const uint8_t** data, uint32_t* numocts) {
    return asnRead(ctx, [=](auto in) { return pd_ChoiceOpenTypeExt(in, data, numocts); });
}
