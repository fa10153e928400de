#include "numbers.h"

#include "trace.h"

namespace {

constexpr AsnLogger logError{AsnLogBase::numbers};

/// Reads `octets` octets at the next octet boundary.
AsnStatus alignedOctets(AsnContext& ctx, uint32_t* value, uint32_t octets) {
    const AsnStatus status = pd_byteAlign(ctx);
    if (status != kAsnOk) return logError(ctx, status);
    return pd_bits(ctx, value, octets * 8);
}

/// pd_ConsWholeNumber, inline: nearly every field of a message comes through here.
inline AsnStatus wholeNumber(AsnContext& ctx, uint32_t* offset, uint32_t rangeSize) {
    if (ctx.aligned == 0 || rangeSize < 256)
        return pd_bits(ctx, offset, asnBitCount(rangeSize - 1));
    if (rangeSize == 256) return alignedOctets(ctx, offset, 1);
    if (rangeSize <= 65536) return alignedOctets(ctx, offset, 2);
    uint32_t octets = 0;
    const AsnStatus status = pd_bits(ctx, &octets, 2);
    return status == kAsnOk ? alignedOctets(ctx, offset, octets + 1) : status;
}

/// pd_ConsUnsigned, inline.
inline AsnStatus constrained(AsnContext& ctx, uint32_t* value, uint32_t lower, uint32_t upper) {
    pu_newField(ctx, "ConsUnsigned");
    uint32_t offset = 0;
    AsnStatus status = kAsnOk;
    if (lower != upper) {
        const bool fullRange = lower == 0 && upper == UINT32_MAX;
        status = wholeNumber(ctx, &offset, fullRange ? UINT32_MAX : upper - lower + 1);
        if (status != kAsnOk) return logError(ctx, status);
    }
    *value = lower + offset;
    pu_setFldBitCount(ctx);
    if (asnDiagOn())
        asnDiag("pd_ConsUnsigned: decoded value is %u\n", static_cast<unsigned>(*value));
    return status;
}

/// The forms without an upper bound below 65536: 0 + 7 bits, 10 + 14 bits, 11 + 6 bits of 16K.
AsnStatus unconstrainedLength(AsnContext& ctx, uint32_t* count) {
    *count = 0;
    AsnStatus status = ctx.aligned != 0 ? pd_byteAlign(ctx) : kAsnOk;
    uint8_t form = 0;
    if (status == kAsnOk) status = pd_bit(ctx, &form);
    if (status != kAsnOk) return logError(ctx, status);
    if (form == 0) return pd_bits(ctx, count, 7);
    status = pd_bit(ctx, &form);
    if (status != kAsnOk) return logError(ctx, status);
    if (form == 0) return pd_bits(ctx, count, 14);
    status = pd_bits(ctx, count, 6);
    *count *= 16384;
    return status == kAsnOk ? kAsnFragment : status;
}

/// Items that are said to follow must be there before anyone allocates for them.
AsnStatus checkLeft(AsnContext& ctx, uint64_t nbits) {
    if (asnBitsLeft(ctx) >= 0 && static_cast<uint64_t>(asnBitsLeft(ctx)) >= nbits) return kAsnOk;
    return logError(ctx, kAsnEndOfData);
}

}  // namespace

AsnStatus pd_ConsWholeNumber(AsnContext& ctx, uint32_t* offset, uint32_t rangeSize) {
    return wholeNumber(ctx, offset, rangeSize);
}

AsnStatus pd_ConsInteger(AsnContext& ctx, int32_t* value, int32_t lower, int32_t upper) {
    pu_newField(ctx, "ConsInteger");
    if (lower > upper) return kAsnRange;
    uint32_t offset = 0;
    AsnStatus status = kAsnOk;
    if (lower != upper) {
        const uint32_t rangeSize = static_cast<uint32_t>(upper) - static_cast<uint32_t>(lower) + 1;
        status = wholeNumber(ctx, &offset, rangeSize);
        if (status != kAsnOk) return logError(ctx, status);
    }
    *value = static_cast<int32_t>(static_cast<uint32_t>(lower) + offset);
    pu_setFldBitCount(ctx);
    if (asnDiagOn()) asnDiag("pd_ConsInteger: decoded value is %d\n", static_cast<int>(*value));
    return status;
}

AsnStatus pd_ConsUnsigned(AsnContext& ctx, uint32_t* value, uint32_t lower, uint32_t upper) {
    return constrained(ctx, value, lower, upper);
}

AsnStatus pd_RootAlternative(AsnContext& ctx, uint32_t& t, uint32_t roots) {
    uint32_t index = 0;
    const AsnStatus status = constrained(ctx, &index, 0, roots - 1);
    if (status != kAsnOk) return status;
    t = index + 1;
    return index < roots ? kAsnOk : kAsnInvalidChoice;
}

AsnStatus pd_ExtInteger(AsnContext& ctx, int32_t* value, int32_t lower, int32_t upper) {
    uint8_t extended = 0;
    AsnStatus status = pd_bit(ctx, &extended);
    if (status == kAsnOk)
        status =
            extended != 0 ? pd_UnconsInteger(ctx, value) : pd_ConsInteger(ctx, value, lower, upper);
    return status == kAsnOk ? status : logError(ctx, status);
}

AsnStatus pd_UnconsInteger(AsnContext& ctx, int32_t* value) {
    if (asnDiagOn()) asnDiag("pd_UnconsInteger: start\n");
    uint32_t nbytes = 0;
    AsnStatus status = pd_Length(ctx, &nbytes);
    if (status < 0) return logError(ctx, status);
    if (asnDiagOn()) asnDiag("pd_UnconsInteger: nbytes is %d\n", static_cast<int>(nbytes));
    pu_newField(ctx, "UnconsInteger");
    status = ctx.aligned != 0 ? pd_byteAlign(ctx) : kAsnOk;
    if (status != kAsnOk) return logError(ctx, status);
    for (uint32_t i = 0; i < nbytes; ++i) {
        uint8_t octet = 0;
        status = pd_octets(ctx, &octet, 1, 8);
        if (status != kAsnOk) return logError(ctx, status);
        const uint32_t high =
            i == 0 ? ((octet & 0x80) != 0 ? UINT32_MAX : 0) : static_cast<uint32_t>(*value);
        *value = static_cast<int32_t>(high << 8 | octet);
    }
    pu_setFldBitCount(ctx);
    if (asnDiagOn()) asnDiag("pd_UnconsInteger: decoded value is %d\n", static_cast<int>(*value));
    return kAsnOk;
}

AsnStatus pd_UnconsUnsigned(AsnContext& ctx, uint32_t* value) {
    uint32_t nbytes = 0;
    AsnStatus status = pd_Length(ctx, &nbytes);
    if (status < 0) return logError(ctx, status);
    pu_newField(ctx, "UnconsUnsigned");
    status = ctx.aligned != 0 ? pd_byteAlign(ctx) : kAsnOk;
    if (status == kAsnOk) status = pd_bits(ctx, value, nbytes * 8);
    if (status != kAsnOk) return logError(ctx, status);
    pu_setFldBitCount(ctx);
    if (asnDiagOn())
        asnDiag("pd_UnconsUnsigned: decoded value is %u\n", static_cast<unsigned>(*value));
    return kAsnOk;
}

AsnStatus pd_SmallNonNegWholeNumber(AsnContext& ctx, uint32_t* value) {
    uint8_t isLong = 0;
    AsnStatus status = pd_bit(ctx, &isLong);
    if (status != kAsnOk) return logError(ctx, status);
    if (isLong == 0) {
        status = pd_bits(ctx, value, 6);
        return status == kAsnOk ? status : logError(ctx, status);
    }
    uint32_t octets = 0;
    status = pd_Length(ctx, &octets);
    if (status >= 0) status = alignedOctets(ctx, value, octets);
    return status >= 0 ? kAsnOk : logError(ctx, status);
}

AsnStatus pd_Length(AsnContext& ctx, uint32_t* count) {
    const AsnSizeConstraint* size = ctx.sizeConstraint;
    AsnStatus status = kAsnOk;
    if (size != nullptr) {
        uint8_t extended = 0;
        if (asnFindSize(size, 1) != nullptr) {
            pu_newField(ctx, "length extension");
            status = pd_bit(ctx, &extended);
            if (status != kAsnOk) return logError(ctx, status);
            pu_setFldBitCount(ctx);
        }
        size = asnFindSize(size, extended);
        ctx.sizeConstraint = nullptr;  // it applies to this one length
    }
    const uint32_t lower = size != nullptr ? size->lower : 0;
    const uint32_t upper = size != nullptr ? size->upper : UINT32_MAX;

    pu_newField(ctx, "length");
    if (upper >= 65536) {
        status = unconstrainedLength(ctx, count);
    } else {
        uint32_t offset = 0;
        if (lower != upper) status = wholeNumber(ctx, &offset, upper - lower + 1);
        *count = lower + offset;
    }
    pu_setFldBitCount(ctx);
    return status >= 0 ? status : logError(ctx, status);
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
        if (status < 0) return logError(ctx, status);
        // Checked fragment by fragment, so that the sum cannot wrap: it is bounded by the data.
        const AsnStatus left = checkLeft(ahead, uint64_t{length} * itemBits);
        if (left != kAsnOk) return logError(ctx, left);
        total += length;
        if (status == kAsnFragment) {
            const AsnStatus moved = pd_moveBitCursor(ahead, int64_t{length} * itemBits);
            if (moved != kAsnOk) return logError(ctx, moved);
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

const AsnSizeConstraint* asnFindSize(const AsnSizeConstraint* chain, uint8_t extended) {
    while (chain != nullptr && (chain->extended != 0) != (extended != 0)) chain = chain->next;
    return chain;
}

static_assert(__LINE__ < 1000, "trail lines of two source files would meet");
