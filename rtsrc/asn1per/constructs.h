// What generated decoders use besides the primitives: the rules for SEQUENCE, CHOICE and SEQUENCE
// OF (X.691, 07/2002, clauses 18, 19 and 22). Nothing here logs a failure, except that memory for a
// CHOICE alternative could not be allocated. The value model is in asn1per.h.
#pragma once

#include <array>
#include <bit>
#include <cstddef>

#include "numbers.h"
#include "objid.h"
#include "opentypes.h"

// --- SEQUENCE ---

/// Eight bits in reverse order.
inline constexpr auto kAsnReversed = [] {
    std::array<uint8_t, 256> reversed{};
    for (uint32_t octet = 0; octet < 256; ++octet)
        for (uint32_t bit = 0; bit < 8; ++bit)
            if ((octet >> bit & 1) != 0) reversed[octet] |= static_cast<uint8_t>(0x80 >> bit);
    return reversed;
}();

/// `count` extension or presence bits, 1 to 32; the first one is bit 0 of the result. A bit beyond
/// the end of the data counts as 0: the status of these reads is ignored by design, and the next
/// checked read fails.
template <bool Tracing, AsnRules rules>
inline uint32_t asnFlags(AsnReader<Tracing, rules> in, uint32_t count) {
    AsnContext& ctx = in.ctx;
    const uint32_t unread = asnUnread(ctx);
    if (!Tracing && count <= unread && ctx.byteIndex < ctx.size) {  // at once: all in one octet
        const uint32_t rest = unread - count;
        ctx.bitOffset = static_cast<int16_t>(rest);
        return uint32_t{kAsnReversed[ctx.data[ctx.byteIndex] >> rest << (8 - count) & 0xFF]};
    }
    uint32_t flags = 0;
    for (uint32_t i = 0; i < count; ++i) {
        uint8_t flag = 0;
        (void)pd_bit(in, &flag);  // ignored by design
        flags |= uint32_t{flag} << i;
    }
    return flags;
}

template <bool Tracing, AsnRules rules>
inline bool asnExtensionBit(AsnReader<Tracing, rules> in) {
    uint8_t extended = 0;
    (void)pd_bit(in, &extended);                // ignored by design
    return __builtin_expect(extended, 0) != 0;  // most values have no extension
}

#if !defined(__clang__)  // which cannot evaluate this, but allocates bit-fields like GCC
struct AsnFlagOrder {
    uint32_t first : 1;
    uint32_t others : 31;
};
static_assert(std::bit_cast<AsnFlagOrder>(uint32_t{1}).first == 1,
              "a number is copied onto bit-fields, which must start at its lowest bit");
#endif

/// Flags as the record `m` of a SEQUENCE: one word, or two.
template <class Flags>
inline Flags asnFlagRecord(uint32_t flags) {
    if constexpr (sizeof(Flags) == sizeof flags) return std::bit_cast<Flags>(flags);
    if constexpr (sizeof(Flags) != sizeof flags) return std::bit_cast<Flags>(uint64_t{flags});
}

/// Reads the presence bits of `count` optional root components, 1 to 32, into the word `m`: bit 0
/// is the first component in declaration order. The bits of additions are cleared.
template <class Flags, bool Tracing, AsnRules rules>
inline void asnPresenceBits(AsnReader<Tracing, rules> in, Flags& m, uint32_t count) {
    m = asnFlagRecord<Flags>(asnFlags(in, count));
}

/// The same after an extension bit, which is returned; at most 31 components.
template <class Flags, bool Tracing, AsnRules rules>
inline bool asnExtensionAndPresenceBits(AsnReader<Tracing, rules> in, Flags& m, uint32_t count) {
    const uint32_t flags = asnFlags(in, count + 1);
    m = asnFlagRecord<Flags>(flags >> 1);
    return (flags & 1) != 0;
}

/// The extension additions of a SEQUENCE that knows some, while they are decoded (X.691 18.7 to
/// 18.9).
struct AsnAdditions {
    uint64_t index;    // the addition that is being read
    uint64_t count;    // bits of the bitmap
    bool done;         // there is no further addition
    AsnCursor bitmap;  // the second cursor: the next bit of the bitmap
    AsnCursor outer;   // the place after the open type that was entered
};

/// Skips the bits of the current octet before the first that is 1, and returns their number.
inline uint32_t asnSkipZeros(AsnCursor& at) {
    if (at.byteIndex >= at.size) return 0;
    const uint32_t unread = asnUnread(at);
    const uint32_t bits = at.data[at.byteIndex] & ((1U << unread) - 1);
    const auto rest = static_cast<uint32_t>(std::bit_width(bits));
    at.bitOffset = static_cast<int16_t>(rest);
    return unread - rest;
}

/// Enters the open type of the next addition from `index` on that is present, if there is one;
/// `bitmap` is at the bit of that index. Each bit is read, but the plain reader, which has nothing
/// to report, skips those that are 0 at once.
template <bool Tracing, AsnRules rules>
[[nodiscard]] AsnStatus asnEnterAddition(AsnReader<Tracing, rules> in, AsnAdditions& additions,
                                         AsnCursor bitmap, uint64_t index) {
    uint8_t present = 0;
    for (;; ++index) {
        if (!Tracing) index += asnSkipZeros(bitmap);
        if (index >= additions.count) break;
        (void)asnBitAt(in, bitmap, &present);  // ignored by design
        if (present != 0) break;
    }
    additions.bitmap = bitmap;
    additions.index = index;
    additions.done = present == 0;
    return additions.done ? kAsnOk : asnEnterOpenType(in, additions.outer);
}

/// Reads the number of bits of the bitmap, 1 to 64, or another one after a 1: as designed, the last
/// index, as published, a length (X.691 10.9.3.4). Returns 0 or -2, or, as published, -5 for a
/// length of 0 or in fragments.
template <bool Tracing, AsnRules rules>
[[nodiscard]] inline AsnStatus asnBitmapLength(AsnReader<Tracing, rules> in, uint64_t* count) {
    uint32_t last = 0;
    if constexpr (rules == AsnRules::published) {
        uint8_t isLong = 0;
        AsnStatus status = pd_bit(in, &isLong);
        if (status == kAsnOk) status = isLong != 0 ? pd_Length(in, &last) : pd_bits(in, &last, 6);
        if (status < 0) return status;
        if (status == kAsnFragment || (isLong != 0 && last == 0)) return kAsnInvalidLength;
        *count = uint64_t{last} + (isLong != 0 ? 0 : 1);
        return asnBitsLeft(in.ctx) < static_cast<int64_t>(*count) ? kAsnEndOfData : kAsnOk;
    }
    const AsnStatus status = pd_SmallNonNegWholeNumber(in, &last);
    *count = uint64_t{last} + 1;
    return status;
}

/// Reads the length of the bitmap, once the extension bit was read as 1, and enters the open type
/// of the first addition that is present. Returns 0, -2 or -12; as published, also -5.
template <bool Tracing, AsnRules rules>
[[nodiscard, gnu::flatten]] AsnStatus asnFirstAddition(AsnReader<Tracing, rules> in,
                                                       AsnAdditions& additions) {
    AsnStatus status = asnBitmapLength(in, &additions.count);
    if (status != kAsnOk) return status;
    const AsnCursor bitmap = asnSaveCursor(in.ctx);
    status = pd_moveBitCursor(in, static_cast<int64_t>(additions.count));
    return status == kAsnOk ? asnEnterAddition(in, additions, bitmap, 0) : status;
}

/// Leaves an addition, however much of it was read, and enters the next one that is present.
template <bool Tracing, AsnRules rules>
[[nodiscard]] AsnStatus asnNextAddition(AsnReader<Tracing, rules> in, AsnAdditions& additions) {
    asnLeaveOpenType(in, additions.outer);
    return asnEnterAddition(in, additions, additions.bitmap, additions.index + 1);
}

// --- CHOICE ---

/// Reads the index of one of `roots` root alternatives into the tag, which is index + 1. Returns 0,
/// -2, or -11 for an index beyond the root.
template <bool Tracing, AsnRules rules>
[[nodiscard]] ASN_INLINE AsnStatus asnRootAlternative(AsnReader<Tracing, rules> in, uint32_t* t,
                                                      uint32_t roots) {
    uint32_t index = 0;
    const AsnStatus status = pd_ConsUnsigned(in, &index, 0, roots - 1);
    if (status != kAsnOk) return status;
    *t = index + 1;
    return index < roots ? kAsnOk : kAsnInvalidChoice;
}

/// Reads the index of an extension alternative, once the extension bit was read as 1, into the tag,
/// which continues that of the `roots` root alternatives; moves to the next octet boundary in
/// either variant; and enters the open type. Returns 0, -2, -12, or -11 for an index that is not
/// one of the `known` alternatives: the cursor is then in its open type.
template <bool Tracing, AsnRules rules>
[[nodiscard]] AsnStatus asnEnterAlternative(AsnReader<Tracing, rules> in, uint32_t* t,
                                            uint32_t roots, uint32_t known, AsnCursor& outer) {
    uint32_t index = 0;
    AsnStatus status = pd_SmallNonNegWholeNumber(in, &index);
    if (status != kAsnOk) return status;
    *t = index + roots + 1;
    status = pd_byteAlign(in);
    if (status == kAsnOk) status = asnEnterOpenType(in, outer);
    return status == kAsnOk && index >= known ? kAsnInvalidChoice : status;
}

// --- SEQUENCE OF ---

/// Registers the size constraint of the next string or list. The status is ignored by design: no
/// other constraint is pending there.
template <bool Tracing, AsnRules rules>
inline void asnSetSize(AsnReader<Tracing, rules> in, const AsnSizeConstraint& size) {
    (void)pd_SetSizeConstraint(in.ctx, &size);
}

/// The fewest bits that one element of a list takes.
struct AsnElementBits {
    uint32_t aligned;
    uint32_t unaligned;
};

/// asnListLength under a constraint that is no longer pending.
template <bool Tracing, AsnRules rules>
[[nodiscard, gnu::noinline, gnu::flatten]] AsnStatus asnListLengthUnder(
    AsnReader<Tracing, rules> in, const AsnSizeConstraint* size, uint32_t* count,
    AsnElementBits least) {
    const AsnStatus status = asnLength(in, size, count);
    if (status != kAsnOk) return status;
    const uint32_t elementBits = in.ctx.aligned != 0 ? least.aligned : least.unaligned;
    return asnBitsLeft(in.ctx) >= int64_t{*count} * elementBits ? kAsnOk : kAsnEndOfData;
}

/// Reads the count of a list. If its elements cannot fit into the data that is left, it fails with
/// -2 before anything is allocated. Otherwise returns the status of pd_Length; 2 is a failure,
/// because fragmented lists are not supported.
template <bool Tracing, AsnRules rules>
[[nodiscard]] ASN_INLINE AsnStatus asnListLength(AsnReader<Tracing, rules> in, uint32_t* count,
                                                 AsnElementBits least) {
    return asnListLengthUnder(in, asnTakeSize(in.ctx), count, least);
}

// --- values in the element heap ---

/// A range of octets inside a record.
struct AsnSpan {
    size_t offset;
    size_t size;
};

/// The spans of a type that need no clearing: inline octets after a count that says how many of
/// them are valid. Clearing a record with room for a key of 65535 octets would cost more than
/// decoding the message. The generator specialises this for the types that have any, in ascending
/// order.
template <class T>
inline constexpr std::array<AsnSpan, 0> asnUncleared{};

/// `count` records of `size` octets, zeroed, or zeroed except for the spans. Null if memory is
/// exhausted.
void* asnAllocCleared(AsnContext& ctx, size_t count, size_t size);
void* asnAllocRecords(AsnContext& ctx, size_t count, size_t size, const AsnSpan* uncleared,
                      size_t spans);

/// The elements of a list; a count of 0 gives an address, too. Null if memory is exhausted, which
/// the caller logs.
template <class T, bool Tracing, AsnRules rules>
T* asnNewElements(AsnReader<Tracing, rules> in, uint32_t count) {
    constexpr auto& spans = asnUncleared<T>;
    if constexpr (spans.empty())
        return static_cast<T*>(asnAllocCleared(in.ctx, count, sizeof(T)));
    else
        return static_cast<T*>(
            asnAllocRecords(in.ctx, count, sizeof(T), spans.data(), spans.size()));
}

/// The value of a choice alternative, zeroed. Null if memory is exhausted: -12 has been logged, and
/// the caller returns it.
template <class T, bool Tracing, AsnRules rules>
T* asnNewValue(AsnReader<Tracing, rules> in) {
    constexpr size_t kClearedInline = 64;  // a call would take longer
    T* value = nullptr;
    if constexpr (sizeof(T) <= kClearedInline) {
        value = static_cast<T*>(asnMemAllocRaw(in.ctx.memHeap, sizeof(T)));
        if (value != nullptr) *value = T{};
    } else {
        value = asnNewElements<T>(in, 1);
    }
    if (value == nullptr) (void)in.log(AsnSource::constructs, kAsnNoMemory);
    return value;
}

// --- recursive types ---

/// How many values of recursive types may be nested. H.245 allows 15 levels of MultiplexElement;
/// the stack of a thread would hold many times this number.
constexpr uint32_t kAsnMaxDepth = 64;

/// One level of a recursive type, while its decoder runs.
class AsnNesting {
  public:
    explicit AsnNesting(AsnContext& ctx) : ctx_(ctx) { ++ctx.depth; }
    ~AsnNesting() { --ctx_.depth; }
    AsnNesting(const AsnNesting&) = delete;
    AsnNesting& operator=(const AsnNesting&) = delete;
    bool tooDeep() const { return ctx_.depth > kAsnMaxDepth; }

  private:
    AsnContext& ctx_;
};

static_assert(__LINE__ < 1000, "the trail lines of two sources would overlap");
