#include "opentypes.h"

#include "lengths.h"
#include "strings.h"

namespace {

constexpr AsnLogger kLogError{AsnLogBase::opentypes};

/// Reads the length of an open type whose octets stand in place, which then follow. Where they are
/// fragmented or not at an octet boundary they have to be copied: kAsnFragment or kNotInPlace.
constexpr AsnStatus kNotInPlace = 1;

template <class In>
AsnStatus inPlace(In& in, uint32_t& numocts) {
    numocts = 0;
    const AsnStatus form = asnPlainLength(in, numocts);
    if (form < 0) return in.fail(kLogError, form);
    if (numocts == 0) return kAsnOk;
    if (form == kAsnFragment) return form;
    if (!in.atBoundary()) return kNotInPlace;
    if (in.bitsLeft() < int64_t{numocts} * 8) return in.fail(kLogError, kAsnEndOfData);
    in.openField("OctetString");
    in.moveOctets(numocts);
    in.closeField();
    return kAsnOk;
}

[[gnu::noinline]] AsnStatus copied(AsnContext& ctx, AsnStatus form, const uint8_t** data,
                                   uint32_t* numocts) {
    AsnDynOctStr copy{};
    const AsnStatus status =
        asnCopyOctets(ctx, form == kAsnFragment ? form : kAsnOk, *numocts, copy);
    *data = copy.data;
    *numocts = copy.numocts;
    return status == kAsnOk ? status : kLogError(ctx, status);
}

[[gnu::noinline]] AsnStatus enterCopy(AsnContext& ctx, AsnStatus form, uint32_t numocts,
                                      AsnCursor& behind) {
    const uint8_t* data = nullptr;
    const AsnStatus status = copied(ctx, form, &data, &numocts);
    asnCopyCursor(behind, ctx);
    if (status == kAsnOk) asnBindOpenType(ctx, data, numocts);
    return status;
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
    const AsnStatus status = asnRead(ctx, [=](auto& in) {
        const AsnStatus form = inPlace(in, *numocts);
        *data = form == kAsnOk && *numocts != 0 ? in.here() - *numocts : nullptr;
        return form;
    });
    return status <= kAsnOk ? status : copied(ctx, status, data, numocts);
}

[[gnu::flatten]] AsnStatus asnEnterOpenType(AsnContext& ctx, AsnCursor& behind) {
    uint32_t toCopy = 0;
    const AsnStatus status = asnRead(ctx, [toCopy = &toCopy, behind = &behind](auto& in) {
        uint32_t numocts = 0;
        const AsnStatus form = inPlace(in, numocts);
        if (form == kAsnOk) {
            in.save(*behind);
            in.bindOpenType(in.here() - numocts, numocts);
        } else {
            *toCopy = numocts;
        }
        return form;
    });
    return status <= kAsnOk ? status : enterCopy(ctx, status, toCopy, behind);
}

AsnStatus pd_OpenTypeExt(AsnContext& ctx, const uint8_t** data, uint32_t* numocts) {
    return keepSpan(ctx, data, numocts, skipAdditions);
}

AsnStatus pd_ChoiceOpenTypeExt(AsnContext& ctx, const uint8_t** data, uint32_t* numocts) {
    return keepSpan(ctx, data, numocts, skipAlternative);
}

static_assert(__LINE__ < 1000, "trail lines of two source files would meet");
