#include "numbers.h"

#include "lengths.h"

namespace {

constexpr AsnLogger kLogError{AsnLogBase::numbers};

template <class In>
AsnStatus constrained(In& in, int32_t* value, int32_t lower, int32_t upper) {
    in.openField("ConsInteger");
    if (lower > upper) return kAsnRange;
    uint32_t offset = 0;
    AsnStatus status = kAsnOk;
    if (lower != upper)
        status = asnWholeNumber(in, offset,
                                static_cast<uint32_t>(upper) - static_cast<uint32_t>(lower) + 1);
    if (status != kAsnOk) return in.fail(kLogError, status);
    *value = static_cast<int32_t>(static_cast<uint32_t>(lower) + offset);
    in.closeField();
    in.tell("pd_ConsInteger: decoded value is %d\n", static_cast<int>(*value));
    return kAsnOk;
}

template <class In>
AsnStatus constrained(In& in, uint32_t* value, uint32_t lower, uint32_t upper) {
    in.openField("ConsUnsigned");
    const bool fullRange = lower == 0 && upper == UINT32_MAX;
    uint32_t offset = 0;
    AsnStatus status = kAsnOk;
    if (lower != upper)
        status = asnWholeNumber(in, offset, fullRange ? UINT32_MAX : upper - lower + 1);
    if (status != kAsnOk) return in.fail(kLogError, status);
    *value = lower + offset;
    in.closeField();
    in.tell("pd_ConsUnsigned: decoded value is %u\n", static_cast<unsigned>(*value));
    return kAsnOk;
}

template <class In>
AsnStatus unconstrained(In& in, const AsnSizeConstraint* size, int32_t* value) {
    in.tell("pd_UnconsInteger: start\n");
    uint32_t nbytes = 0;
    AsnStatus status = asnLength(in, size, nbytes);
    if (status < 0) return in.fail(kLogError, status);
    in.tell("pd_UnconsInteger: nbytes is %d\n", static_cast<int>(nbytes));
    in.openField("UnconsInteger");
    status = in.aligned() ? in.align() : kAsnOk;
    if (status != kAsnOk) return in.fail(kLogError, status);
    for (uint32_t i = 0; i < nbytes; ++i) {
        uint8_t octet = 0;
        status = in.octets(&octet, 1, 8);
        if (status != kAsnOk) return in.fail(kLogError, status);
        const uint32_t high =
            i == 0 ? ((octet & 0x80) != 0 ? UINT32_MAX : 0) : static_cast<uint32_t>(*value);
        *value = static_cast<int32_t>(high << 8 | octet);
    }
    in.closeField();
    in.tell("pd_UnconsInteger: decoded value is %d\n", static_cast<int>(*value));
    return kAsnOk;
}

template <class In>
AsnStatus unconstrained(In& in, const AsnSizeConstraint* size, uint32_t* value) {
    uint32_t nbytes = 0;
    AsnStatus status = asnLength(in, size, nbytes);
    if (status < 0) return in.fail(kLogError, status);
    in.openField("UnconsUnsigned");
    status = in.aligned() ? in.align() : kAsnOk;
    if (status == kAsnOk) status = in.bits(*value, nbytes * 8);
    if (status != kAsnOk) return in.fail(kLogError, status);
    in.closeField();
    in.tell("pd_UnconsUnsigned: decoded value is %u\n", static_cast<unsigned>(*value));
    return kAsnOk;
}

/// Items that are said to follow must be there before anyone allocates for them.
AsnStatus checkLeft(AsnContext& ctx, uint64_t nbits) {
    if (asnBitsLeft(ctx) >= 0 && static_cast<uint64_t>(asnBitsLeft(ctx)) >= nbits) return kAsnOk;
    return kLogError(ctx, kAsnEndOfData);
}

}  // namespace

[[gnu::flatten]] AsnStatus pd_ConsWholeNumber(AsnContext& ctx, uint32_t* offset,
                                              uint32_t rangeSize) {
    return asnRead(ctx, [=](auto& in) { return asnWholeNumber(in, *offset, rangeSize); });
}

[[gnu::flatten]] AsnStatus asnConsInteger(AsnContext& ctx, int32_t* value, int32_t lower,
                                          int32_t upper) {
    return asnRead(ctx, [=](auto& in) { return constrained(in, value, lower, upper); });
}

[[gnu::flatten]] AsnStatus pd_ConsUnsigned(AsnContext& ctx, uint32_t* value, uint32_t lower,
                                           uint32_t upper) {
    return asnRead(ctx, [=](auto& in) { return constrained(in, value, lower, upper); });
}

[[gnu::flatten]] AsnStatus pd_ExtInteger(AsnContext& ctx, int32_t* value, int32_t lower,
                                         int32_t upper) {
    return asnRead(ctx, [=](auto& in) {
        uint32_t extended = 0;
        AsnStatus status = in.bit(extended);
        if (status == kAsnOk)
            status = extended != 0 ? unconstrained(in, nullptr, value)
                                   : constrained(in, value, lower, upper);
        return status == kAsnOk ? status : in.fail(kLogError, status);
    });
}

[[gnu::flatten]] AsnStatus pd_UnconsInteger(AsnContext& ctx, int32_t* value) {
    return asnReadSized(ctx, [=](auto& in, auto* size) { return unconstrained(in, size, value); });
}

[[gnu::flatten]] AsnStatus pd_UnconsUnsigned(AsnContext& ctx, uint32_t* value) {
    return asnReadSized(ctx, [=](auto& in, auto* size) { return unconstrained(in, size, value); });
}

[[gnu::flatten]] AsnStatus pd_SmallNonNegWholeNumber(AsnContext& ctx, uint32_t* value) {
    return asnRead(ctx, [=](auto& in) { return asnSmallNumber(in, *value); });
}

[[gnu::flatten]] AsnStatus pd_Length(AsnContext& ctx, uint32_t* count) {
    return asnReadSized(ctx, [=](auto& in, auto* size) { return asnLength(in, size, *count); });
}

int32_t pd_GetComponentLength(AsnContext& ctx, uint32_t itemBits) {
    AsnContext ahead;
    asnForkContext(ahead, ctx);
    ahead.sizeConstraint = ctx.sizeConstraint;
    uint32_t total = 0;
    AsnStatus status = kAsnFragment;
    while (status == kAsnFragment) {
        uint32_t length = 0;
        status = pd_Length(ahead, &length);
        if (status < 0) return kLogError(ctx, status);
        // Checked fragment by fragment, so that the sum cannot wrap: it is bounded by the data.
        const AsnStatus left = checkLeft(ahead, uint64_t{length} * itemBits);
        if (left != kAsnOk) return kLogError(ctx, left);
        total += length;
        if (status == kAsnFragment) {
            const AsnStatus moved = pd_moveBitCursor(ahead, int64_t{length} * itemBits);
            if (moved != kAsnOk) return kLogError(ctx, moved);
        }
    }
    return static_cast<int32_t>(total);
}

AsnStatus pd_SetSizeConstraint(AsnContext& ctx, const AsnSizeConstraint* chain) {
    const AsnSizeConstraint* const pending = ctx.sizeConstraint;
    if (pending == nullptr) {
        ctx.sizeConstraint = chain;
        return kAsnOk;
    }
    for (; chain != nullptr; chain = chain->next)
        if (chain->lower >= pending->lower || chain->upper <= pending->upper) return kAsnOk;
    return kAsnConstraint;
}

static_assert(__LINE__ < 1000, "trail lines of two source files would meet");
