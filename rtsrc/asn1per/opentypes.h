// Open types, and the two readers that keep unknown extensions (X.691, 07/2002, 10.2, 18.8, 22.8).
#pragma once

#include "strings.h"

/// Octets that are not decoded further; 0 and null if there are none. asn1per.h says who
/// owns them.
struct AsnOpenType {
    uint32_t numocts;
    const uint8_t* data;
};

/// Reads a length and that many octets into the element heap. Returns 0, -2 or -12, logged.
[[nodiscard]] AsnStatus pd_OpenType(AsnContext& ctx, const uint8_t** data, uint32_t* numocts);

/// Reads the extension additions of a SEQUENCE that knows none, after its extension bit was read as
/// 1: their bitmap and their open types. The result spans from the octet that holds the first bit
/// of the bitmap's length to before the octet that holds the cursor afterwards, neighbouring bits
/// included. Returns 0, or -2, logged.
[[nodiscard]] AsnStatus pd_OpenTypeExt(AsnContext& ctx, const uint8_t** data, uint32_t* numocts);

/// The same for an unknown alternative of a CHOICE: its index and its open type.
[[nodiscard]] AsnStatus pd_ChoiceOpenTypeExt(AsnContext& ctx, const uint8_t** data,
                                             uint32_t* numocts);

// --- the rules ---

/// What is done with the octets of an open type.
enum class AsnContents {
    copied,   // into the element heap
    inPlace,  // the octets of the buffer, or a copy if they are fragmented or not at a boundary
    skipped,  // nothing is stored
};

/// pd_OpenType, and what a generated decoder does instead: it enters an open type in place. If data
/// is missing, nothing is allocated: the contents are then skipped up to the failure.
template <AsnContents contents, bool Tracing, AsnRules rules>
[[nodiscard]] inline AsnStatus asnOpenType(AsnReader<Tracing, rules> in, const uint8_t** data,
                                           uint32_t* numocts) {
    AsnContext& ctx = in.ctx;
    AsnLookAhead found;
    const int32_t total = asnLookAhead(in, 8, found);
    if (total < 0) return in.log(AsnSource::opentypes, total);
    const auto size = static_cast<uint32_t>(total);
    const AsnCursor& first = found.contents;
    const bool inPlace =
        contents == AsnContents::inPlace && !found.fragmented && first.bitOffset == 8;
    uint8_t* copy = nullptr;
    if (contents != AsnContents::skipped && !inPlace && size != 0 &&
        int64_t{size} * 8 <= asnBitsLeft(first)) {
        copy = static_cast<uint8_t*>(asnMemAllocRaw(ctx.memHeap, size));
        if (copy == nullptr) return in.log(AsnSource::opentypes, kAsnNoMemory);
    }
    const AsnStatus status = asnStringAfter<kAsnOctets>(in, found, numocts, copy, size, size);
    if (status != kAsnOk) return in.log(AsnSource::opentypes, status);
    *data = inPlace && size != 0 ? first.data + first.byteIndex : copy;
    return kAsnOk;
}

template <bool Tracing, AsnRules rules>
[[nodiscard]] AsnStatus pd_OpenType(AsnReader<Tracing, rules> in, const uint8_t** data,
                                    uint32_t* numocts) {
    return asnOpenType<AsnContents::copied>(in, data, numocts);
}

/// Reads an open type and moves the cursor to its first octet; `outer` receives the place after it.
template <bool Tracing, AsnRules rules>
[[nodiscard, gnu::flatten]] AsnStatus asnEnterOpenType(AsnReader<Tracing, rules> in,
                                                       AsnCursor& outer) {
    const uint8_t* data = nullptr;
    uint32_t numocts = 0;
    const AsnStatus status = asnOpenType<AsnContents::inPlace>(in, &data, &numocts);
    if (status != kAsnOk) return status;
    outer = asnSaveCursor(in.ctx);
    asnBindOctets(in.ctx, data, numocts);
    return kAsnOk;
}

template <bool Tracing, AsnRules rules>
void asnLeaveOpenType(AsnReader<Tracing, rules> in, const AsnCursor& outer) {
    asnRestoreCursor(in.ctx, outer);
}

template <bool Tracing, AsnRules rules>
[[nodiscard, gnu::flatten]] AsnStatus asnSkipOpenType(AsnReader<Tracing, rules> in) {
    const uint8_t* data = nullptr;
    uint32_t numocts = 0;
    return asnOpenType<AsnContents::skipped>(in, &data, &numocts);
}

template <bool Tracing, AsnRules rules>
[[nodiscard]] AsnStatus pd_OpenTypeExt(AsnReader<Tracing, rules> in, const uint8_t** data,
                                       uint32_t* numocts) {
    AsnContext& ctx = in.ctx;
    const uint32_t start = ctx.byteIndex;
    in.newField("ext opt bits len");
    uint32_t last = 0;
    AsnStatus status = pd_SmallNonNegWholeNumber(in, &last);
    if (status != kAsnOk) return in.log(AsnSource::opentypes, status);
    in.setFieldCount();

    in.newField("ext opt bits");
    uint32_t present = 0;
    for (uint64_t i = 0; i <= last; ++i) {
        uint8_t bit = 0;
        status = pd_bit(in, &bit);
        if (status != kAsnOk) return in.log(AsnSource::opentypes, status);
        present += bit;
    }
    in.setFieldCount();

    in.newField("ext elements");
    for (; present != 0; --present) {
        status = asnSkipOpenType(in);
        if (status != kAsnOk) return in.log(AsnSource::opentypes, status);
    }
    in.setFieldCount();
    *data = ctx.data + start;
    *numocts = ctx.byteIndex - start;
    return kAsnOk;
}

template <bool Tracing, AsnRules rules>
[[nodiscard]] AsnStatus pd_ChoiceOpenTypeExt(AsnReader<Tracing, rules> in, const uint8_t** data,
                                             uint32_t* numocts) {
    AsnContext& ctx = in.ctx;
    const uint32_t start = ctx.byteIndex;
    in.newField("choice index");
    uint32_t index = 0;
    AsnStatus status = pd_SmallNonNegWholeNumber(in, &index);
    if (status != kAsnOk) return in.log(AsnSource::opentypes, status);
    in.setFieldCount();

    in.newField("choice element");
    status = asnSkipOpenType(in);
    if (status != kAsnOk) return in.log(AsnSource::opentypes, status);
    in.setFieldCount();
    *data = ctx.data + start;
    *numocts = ctx.byteIndex - start;
    return kAsnOk;
}

static_assert(__LINE__ < 1000, "the trail lines of two sources would overlap");
