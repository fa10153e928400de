#include "strings.h"

AsnStatus pd_BitString(AsnContext& ctx, uint32_t* numbits, uint8_t* buffer, uint32_t size) {
    return asnRead(ctx, [=](auto in) { return pd_BitString(in, numbits, buffer, size); });
}

AsnStatus pd_OctetString(AsnContext& ctx, uint32_t* numocts, uint8_t* buffer, uint32_t size) {
    return asnRead(ctx, [=](auto in) { return pd_OctetString(in, numocts, buffer, size); });
}

AsnStatus pd_DynBitString(AsnContext& ctx, AsnDynBitStr& value) {
    return asnRead(ctx, [&](auto in) { return pd_DynBitString(in, value); });
}

AsnStatus pd_DynOctetString(AsnContext& ctx, AsnDynOctStr& value) {
    return asnRead(ctx, [&](auto in) { return pd_DynOctetString(in, value); });
}

namespace {

/// A typed string under a permitted alphabet that is given as text, or under none.
AsnStatus typedString(AsnContext& ctx, const char** text, const AsnAlphabet& alphabet,
                      const char* permitted) {
    const AsnCharSet set = asnCharSet(alphabet, permitted);
    return asnRead(ctx, [&](auto in) { return asnTypedString(in, text, set); });
}

}  // namespace

AsnStatus pd_NumericString(AsnContext& ctx, const char** text, const char* permitted) {
    return typedString(ctx, text, kAsnNumericString, permitted);
}

AsnStatus pd_PrintableString(AsnContext& ctx, const char** text, const char* permitted) {
    return typedString(ctx, text, kAsnPrintableString, permitted);
}

AsnStatus pd_VisibleString(AsnContext& ctx, const char** text, const char* permitted) {
    return typedString(ctx, text, kAsnVisibleString, permitted);
}

AsnStatus pd_IA5String(AsnContext& ctx, const char** text, const char* permitted) {
    return typedString(ctx, text, kAsnIA5String, permitted);
}

AsnStatus pd_GeneralString(AsnContext& ctx, const char** text, const char* permitted) {
    return typedString(ctx, text, kAsnGeneralString, permitted);
}

AsnStatus pd_86CharString(AsnContext& ctx, const char** text, const char* permitted) {
    return typedString(ctx, text, kAsn86CharString, permitted);
}

AsnStatus pd_ConstrainedString(AsnContext& ctx, const char** text, const AsnCharSet& set) {
    return asnRead(ctx, [&](auto in) { return pd_ConstrainedString(in, text, set); });
}

AsnStatus pd_BMPString(AsnContext& ctx, AsnBMPString& value, const Asn16BitAlphabet* permitted) {
    return asnRead(ctx, [&](auto in) { return pd_BMPString(in, value, permitted); });
}

AsnStatus pd_16BitConstrainedString(AsnContext& ctx, AsnBMPString& value,
                                    const Asn16BitCharSet& set) {
    return asnRead(ctx, [&](auto in) { return pd_16BitConstrainedString(in, value, set); });
}
