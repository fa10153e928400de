// What only decoders of sets as published use (X.691, 07/2002, 10.9, 18, 19, 22 and 27): flags that
// may not be missing, content of later versions that is kept, lists and texts of any length.
#pragma once

#include <algorithm>
#include <cstring>

#include "constructs.h"
#include "integers.h"

// --- SEQUENCE ---

/// An addition that the type does not know: the octets of its open type. asn1per.h says who
/// owns them.
struct AsnUnknownAddition {
    uint32_t number;  // 1: the first one after those that are known
    AsnOpenType contents;
};

/// Those of one SEQUENCE that are present, in their order; 0 and null if there are none.
struct AsnUnknownAdditions {
    uint32_t n;
    AsnUnknownAddition* elem;
};

/// Reads the extension bit of a SEQUENCE or CHOICE. Returns 0, or -2, logged.
template <bool Tracing>
[[nodiscard]] inline AsnStatus asnReadExtensionBit(AsnPublishedReader<Tracing> in, bool* extended) {
    uint8_t bit = 0;
    const AsnStatus status = pd_bit(in, &bit);
    if (status != kAsnOk) return in.log(AsnSource::published, status);
    *extended = bit != 0;
    return kAsnOk;
}

/// Reads the presence bits of `count` optional root components, 0 to 32. Returns 0, or -2, logged.
template <class Flags, bool Tracing>
[[nodiscard]] inline AsnStatus asnReadPresenceBits(AsnPublishedReader<Tracing> in, Flags& m,
                                                   uint32_t count) {
    if (asnBitsLeft(in.ctx) < int64_t{count}) return in.log(AsnSource::published, kAsnEndOfData);
    m = asnFlagRecord<Flags>(count != 0 ? asnFlags(in, count) : 0);
    return kAsnOk;
}

/// Both, one after the other.
template <class Flags, bool Tracing>
[[nodiscard]] inline AsnStatus asnReadPreamble(AsnPublishedReader<Tracing> in, bool* extended,
                                               Flags& m, uint32_t count) {
    if (count < 32) {
        if (asnBitsLeft(in.ctx) <= int64_t{count})
            return in.log(AsnSource::published, kAsnEndOfData);
        const uint32_t flags = asnFlags(in, count + 1);
        *extended = (flags & 1) != 0;
        m = asnFlagRecord<Flags>(flags >> 1);
        return kAsnOk;
    }
    const AsnStatus status = asnReadExtensionBit(in, extended);
    return status == kAsnOk ? asnReadPresenceBits(in, m, count) : status;
}

/// Memory for an addition that is entered, and for all that may follow it. Null if memory is
/// exhausted, or, with status -2, if the data that the bitmap announces is not there.
template <bool Tracing>
[[nodiscard, gnu::noinline]] AsnUnknownAddition* asnNewAdditions(AsnPublishedReader<Tracing> in,
                                                                 const AsnAdditions& additions,
                                                                 AsnStatus* status) {
    AsnCursor bitmap = additions.bitmap;
    uint32_t following = 0;
    for (uint64_t i = additions.index + 1; i < additions.count; ++i) {
        uint8_t present = 0;
        (void)asnBitAt(AsnPlainPublishedReader{in.ctx}, bitmap, &present);  // the bits are there
        following += present;
    }
    *status = asnBitsLeft(additions.outer) < int64_t{following} * 8 ? kAsnEndOfData : kAsnNoMemory;
    if (*status == kAsnEndOfData) return nullptr;
    return asnNewElements<AsnUnknownAddition>(in, following + 1);
}

/// Keeps the addition that was entered, which is not one of the `known` ones. Returns 0, -2 or -12,
/// logged.
template <bool Tracing>
[[nodiscard]] AsnStatus asnKeepAddition(AsnPublishedReader<Tracing> in,
                                        const AsnAdditions& additions, uint32_t known,
                                        AsnUnknownAdditions& kept) {
    if (kept.elem == nullptr) {
        AsnStatus status = kAsnOk;
        kept.elem = asnNewAdditions(in, additions, &status);
        if (kept.elem == nullptr) return in.log(AsnSource::published, status);
    }
    const auto number = static_cast<uint32_t>(additions.index - known + 1);
    kept.elem[kept.n++] = {number, {in.ctx.size, in.ctx.data}};
    return kAsnOk;
}

/// Keeps all additions of a SEQUENCE that knows none, once the extension bit was read as 1.
template <bool Tracing>
[[nodiscard]] AsnStatus asnKeepAdditions(AsnPublishedReader<Tracing> in,
                                         AsnUnknownAdditions& kept) {
    AsnAdditions additions;
    AsnStatus status = asnFirstAddition(in, additions);
    while (status == kAsnOk && !additions.done) {
        status = asnKeepAddition(in, additions, 0, kept);
        if (status == kAsnOk) status = asnNextAddition(in, additions);
    }
    return status;
}

// --- CHOICE ---

/// Reads the index of an extension alternative, once the extension bit was read as 1, into the tag,
/// which continues that of the `roots` root alternatives; and enters the open type. Returns 0, -2,
/// -5 or -12.
template <bool Tracing>
[[nodiscard]] AsnStatus asnEnterAnyAlternative(AsnPublishedReader<Tracing> in, uint32_t* t,
                                               uint32_t roots, AsnCursor& outer) {
    constexpr uint32_t kLastIndex = 0x3FFFFFFF;  // an index beyond it counts as this one
    uint32_t index = 0;
    in.newField("choice index");
    const AsnStatus status = pd_SmallNonNegWholeNumber(in, &index);
    if (status != kAsnOk) return status;
    in.setFieldCount();
    *t = std::min(index, kLastIndex) + roots + 1;
    return asnEnterOpenType(in, outer);
}

/// The octets of the alternative that was entered. Null if memory is exhausted: `status` is then
/// -12, which has been logged.
template <bool Tracing>
[[nodiscard]] AsnOpenType* asnKeepAlternative(AsnPublishedReader<Tracing> in, AsnStatus* status) {
    auto* const kept = asnNewValue<AsnOpenType>(in);
    if (kept == nullptr)
        *status = kAsnNoMemory;
    else
        *kept = {in.ctx.size, in.ctx.data};
    return kept;
}

// --- lists and texts of any length ---

/// `memory` with room for `more` items after the first `count`, which are copied. A value of that
/// length may be in fragments, and how many follow is not known before they have been read.
template <class T, bool Tracing>
[[nodiscard]] T* asnMoreRoom(AsnPublishedReader<Tracing> in, const T* memory, uint32_t count,
                             uint32_t more) {
    if (count == 0) return asnNewElements<T>(in, more);
    auto* const larger =
        static_cast<T*>(asnMemAllocRaw(in.ctx.memHeap, (size_t{count} + more) * sizeof(T)));
    if (larger == nullptr) return nullptr;
    std::memcpy(static_cast<void*>(larger), memory, count * sizeof(T));
    std::memset(static_cast<void*>(larger + count), 0, more * sizeof(T));
    return larger;
}

/// Reads the next part of the count of a list, and makes room for its elements. Returns 0, 2 if
/// more parts follow, -2 if the elements cannot fit into the data that is left, or -12, logged.
template <class T, bool Tracing>
[[nodiscard]] AsnStatus asnMoreElements(AsnPublishedReader<Tracing> in, uint32_t& n, T*& elem,
                                        AsnElementBits least) {
    uint32_t count = 0;
    const AsnStatus form = pd_Length(in, &count);
    if (form < 0) return form;
    const uint32_t elementBits = in.ctx.aligned != 0 ? least.aligned : least.unaligned;
    if (asnBitsLeft(in.ctx) < int64_t{count} * elementBits) return kAsnEndOfData;
    elem = asnMoreRoom(in, elem, n, count);
    if (elem == nullptr) return in.log(AsnSource::published, kAsnNoMemory);
    n += count;
    return form;
}

/// Whether characters start at an octet boundary in the ALIGNED variant (X.691 27.5.6 and 27.5.7):
/// not if the longest string takes 16 bits or less, or less than that if its length varies.
constexpr bool asnCharactersAreAligned(const AsnSizeConstraint* size, uint32_t bits) {
    if (size == nullptr || size->upper >= 65536) return true;
    const uint64_t longest = uint64_t{size->upper} * bits;
    return size->lower == size->upper ? longest > 16 : longest >= 16;
}

/// Reads the count of one part of a character string, and makes room for its characters and one
/// more after the `count` that there are; moves to the first of them. The statuses are those of
/// asnMoreElements.
///   size  the constraint of the string, of its first part only
template <class T, bool Tracing>
[[nodiscard]] AsnStatus asnMoreCharacters(AsnPublishedReader<Tracing> in,
                                          const AsnSizeConstraint* size, const char* label,
                                          uint32_t bits, uint32_t* count, T*& memory) {
    uint32_t more = 0;
    const AsnStatus form = asnLength(in, size, &more);
    if (form < 0) return form;
    in.newField(label);
    AsnStatus status = kAsnOk;
    if (more != 0 && in.ctx.aligned != 0 && asnCharactersAreAligned(size, bits))
        status = pd_byteAlign(in);
    if (status != kAsnOk) return status;
    if (asnBitsLeft(in.ctx) < int64_t{more} * bits) return kAsnEndOfData;
    memory = asnMoreRoom(in, memory, *count, more + 1);
    if (memory == nullptr) return kAsnNoMemory;
    *count += more;
    return form;
}

template <bool Tracing>
[[nodiscard]] AsnStatus pd_ConstrainedString(AsnPublishedReader<Tracing> in, const char** text,
                                             const AsnCharSet& set) {
    const uint32_t bits = in.ctx.aligned != 0 ? set.alignedBits : set.unalignedBits;
    const bool indexed = bits < set.charSetBits;
    const AsnSizeConstraint* size = asnTakeSize(in.ctx);
    uint8_t* characters = nullptr;
    uint32_t count = 0;
    AsnStatus form = kAsnFragment;
    while (form == kAsnFragment) {
        uint32_t i = count;
        form = asnMoreCharacters(in, size, "CharString", bits, &count, characters);
        if (form < 0) return in.log(AsnSource::published, form);
        for (; i < count; ++i) {
            AsnStatus status = asnCharacter(in, set, bits, indexed, &characters[i]);
            if (status != kAsnOk) return in.log(AsnSource::published, status);
        }
        in.setFieldCount();
        size = nullptr;
    }
    *text = reinterpret_cast<const char*>(characters);
    return kAsnOk;
}

template <bool Tracing>
[[nodiscard]] AsnStatus pd_16BitConstrainedString(AsnPublishedReader<Tracing> in,
                                                  AsnBMPString& value, const Asn16BitCharSet& set) {
    constexpr uint32_t kBits = 16;  // no alphabet is supported
    (void)set;
    const AsnSizeConstraint* size = asnTakeSize(in.ctx);
    value = {};
    AsnStatus form = kAsnFragment;
    while (form == kAsnFragment) {
        uint32_t i = value.nchars;
        form = asnMoreCharacters(in, size, "BMPString", kBits, &value.nchars, value.data);
        if (form < 0) return in.log(AsnSource::published, form);
        for (; i < value.nchars; ++i) {
            uint32_t code = 0;
            const AsnStatus status = pd_bits(in, &code, kBits);
            if (status != kAsnOk) return in.log(AsnSource::published, status);
            value.data[i] = static_cast<uint16_t>(code);
        }
        in.setFieldCount();
        size = nullptr;
    }
    return kAsnOk;
}

/// A GeneralString: a count of octets, and the octets (X.691 27.6). Returns 0, -2 or -12, logged.
template <bool Tracing>
[[nodiscard]] AsnStatus asnOctetText(AsnPublishedReader<Tracing> in, const char** text) {
    AsnDynOctStr octets{};
    AsnStatus status = pd_DynOctetString(in, octets);
    if (status != kAsnOk) return in.log(AsnSource::published, status);
    auto* const copy = asnMoreRoom(in, octets.data, octets.numocts, 1);
    if (copy == nullptr) return in.log(AsnSource::published, kAsnNoMemory);
    *text = reinterpret_cast<const char*>(copy);
    return kAsnOk;
}

static_assert(__LINE__ < 1000, "the trail lines of two sources would overlap");
