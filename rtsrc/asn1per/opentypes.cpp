#include "opentypes.h"

#include "lengths.h"
#include "strings.h"

namespace {

constexpr AsnLogger kLogError{AsnLogBase::opentypes};

/// Reads the length, and gives the octets where they stand. Those of a fragment or not at an octet
/// boundary are left to be copied: with kAsnFragment or kNotAtBoundary, `data` null.
constexpr AsnStatus kNotAtBoundary = 1;

template <class In>
AsnStatus octetsInPlace(In& in, const uint8_t** data, uint32_t* numocts) {
    *data = nullptr;
    *numocts = 0;
    uint32_t length = 0;
    const AsnStatus form = asnPlainLength(in, length);
    if (form < 0) return in.fail(kLogError, form);
    *numocts = length;
    if (length == 0) return kAsnOk;
    if (form == kAsnFragment) return form;
    if (!in.atBoundary()) return kNotAtBoundary;
    if (in.bitsLeft() < int64_t{length} * 8) return in.fail(kLogError, kAsnEndOfData);
    *data = in.here();
    in.openField("OctetString");
    in.moveOctets(length);
    in.closeField();
    return kAsnOk;
}

[[gnu::noinline]] AsnStatus copyOctets(AsnContext& ctx, AsnStatus form, const uint8_t** data,
                                       uint32_t* numocts) {
    AsnDynOctStr copy{};
    const AsnStatus status =
        asnCopyOctets(ctx, form == kAsnFragment ? form : kAsnOk, *numocts, copy);
    *data = copy.data;
    *numocts = copy.numocts;
    return status == kAsnOk ? status : kLogError(ctx, status);
}

/// Reads over one open type.
AsnStatus skipOpenType(AsnContext& ctx) {
    const uint8_t* data = nullptr;
    uint32_t numocts = 0;
    return pd_OpenType(ctx, &data, &numocts);
}

/// The presence bits of unknown additions and the open types that they announce.
AsnStatus skipAdditions(AsnContext& ctx) {
    pu_newField(ctx, "ext opt bits len");
    uint32_t last = 0;
    AsnStatus status = pd_SmallNonNegWholeNumber(ctx, &last);
    if (status != kAsnOk) return kLogError(ctx, status);
    pu_setFldBitCount(ctx);

    pu_newField(ctx, "ext opt bits");
    uint32_t present = 0;
    for (uint64_t i = 0; i <= last; ++i) {
        uint8_t bit = 0;
        status = pd_bit(ctx, &bit);
        if (status != kAsnOk) return kLogError(ctx, status);
        present += bit;
    }
    pu_setFldBitCount(ctx);

    pu_newField(ctx, "ext elements");
    for (uint32_t i = 0; i < present; ++i) {
        status = skipOpenType(ctx);
        if (status != kAsnOk) return kLogError(ctx, status);
    }
    pu_setFldBitCount(ctx);
    return kAsnOk;
}

AsnStatus skipAlternative(AsnContext& ctx) {
    pu_newField(ctx, "choice index");
    uint32_t index = 0;
    AsnStatus status = pd_SmallNonNegWholeNumber(ctx, &index);
    if (status != kAsnOk) return kLogError(ctx, status);
    pu_setFldBitCount(ctx);

    pu_newField(ctx, "choice element");
    status = skipOpenType(ctx);
    if (status != kAsnOk) return kLogError(ctx, status);
    pu_setFldBitCount(ctx);
    return kAsnOk;
}

/// Runs one of the two above and keeps the octets that it moved across.
AsnStatus keepSpan(AsnContext& ctx, const uint8_t** data, uint32_t* numocts,
                   AsnStatus (*skip)(AsnContext&)) {
    const uint32_t start = ctx.byteIndex;
    *data = ctx.data + start;
    *numocts = 0;
    const AsnStatus status = skip(ctx);
    if (status == kAsnOk) *numocts = ctx.byteIndex - start;
    return status;
}

}  // namespace

[[gnu::flatten]] AsnStatus pd_OpenType(AsnContext& ctx, const uint8_t** data, uint32_t* numocts) {
    const AsnStatus status =
        asnRead(ctx, [=](auto& in) { return octetsInPlace(in, data, numocts); });
    return status <= kAsnOk ? status : copyOctets(ctx, status, data, numocts);
}

AsnStatus pd_OpenTypeExt(AsnContext& ctx, const uint8_t** data, uint32_t* numocts) {
    return keepSpan(ctx, data, numocts, skipAdditions);
}

AsnStatus pd_ChoiceOpenTypeExt(AsnContext& ctx, const uint8_t** data, uint32_t* numocts) {
    return keepSpan(ctx, data, numocts, skipAlternative);
}

static_assert(__LINE__ < 1000, "trail lines of two source files would meet");
