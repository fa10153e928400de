// What the generated decoders are made of: the rules for SEQUENCE, CHOICE and SEQUENCE OF that go
// beyond one primitive. The value model is in asn1per.h.
#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <utility>

#include "numbers.h"
#include "objid.h"
#include "opentypes.h"

/// BOOLEAN: 0 or 1. Returns 0, or -2, not logged.
[[nodiscard]] inline AsnStatus pd_Boolean(AsnContext& ctx, uint8_t& value) {
    uint32_t bit = 0;
    if (!asnPeekInOctet(ctx, 1, bit)) return pd_bit(ctx, &value);
    asnSkipFlags(ctx, 1);
    value = static_cast<uint8_t>(bit);
    return kAsnOk;
}

// --- SEQUENCE ---

/// pd_Flags where the bits are not all in the current octet, or somebody watches.
uint32_t asnFlags(AsnContext& ctx, uint32_t count);

/// `count` extension and presence bits, 1 to 32, as a number, the first one read the most
/// significant. The status of their read is dropped: a bit beyond the end counts as 0, and the next
/// read that is examined fails.
inline uint32_t pd_Flags(AsnContext& ctx, uint32_t count) {
    uint32_t bits = 0;
    if (!asnPeekInOctet(ctx, count, bits)) return asnFlags(ctx, count);
    asnSkipFlags(ctx, count);
    return bits;
}

/// The presence bits of `count` optional components as the word `m`, which declares the last one
/// of them first, and bits of additions behind them.
template <class Flags>
void pd_PresenceBits(AsnContext& ctx, Flags& m, uint32_t count) {
    static_assert(sizeof m == sizeof(uint32_t));
    const uint32_t word = pd_Flags(ctx, count);
    std::memcpy(&m, &word, sizeof word);
}

/// The same, of fewer than 32, behind an extension bit, which is returned.
template <class Flags>
uint32_t pd_ExtPresenceBits(AsnContext& ctx, Flags& m, uint32_t count) {
    static_assert(sizeof m == sizeof(uint32_t));
    const uint32_t bits = pd_Flags(ctx, count + 1);
    const uint32_t word = bits & ((1U << count) - 1);
    std::memcpy(&m, &word, sizeof word);
    return bits >> count;
}

/// Ends a SEQUENCE that knows no additions: keeps those that came, or clears the record. Returns
/// the status of pd_OpenTypeExt.
[[nodiscard]] inline AsnStatus pd_UnknownAdditions(AsnContext& ctx, uint32_t extended,
                                                   AsnOpenType& extElem1) {
    if (extended != 0) return pd_OpenTypeExt(ctx, &extElem1.data, &extElem1.numocts);
    extElem1 = {};
    return kAsnOk;
}

/// Decodes addition `index` of `record` from the cursor, which stands at the start of its open
/// type, and sets its presence bit; an index that it does not know is no error and leaves nothing.
using AsnAdditionDecoder = AsnStatus (*)(AsnContext& ctx, void* record, uint32_t index);

/// Ends a SEQUENCE that knows additions, where its extension bit is 1 (X.691 18.7 to 18.9): reads
/// the bitmap and redirects the cursor into one open type after the other. A failure inside one is
/// returned at once, the cursor left redirected.
[[nodiscard]] AsnStatus pd_Additions(AsnContext& ctx, void* record, AsnAdditionDecoder decode);

// --- CHOICE ---

/// Reads the index of one of at most 255 root alternatives into the tag (index + 1). Returns 0, -2,
/// or -11 for an index beyond the root, not logged.
[[nodiscard]] AsnStatus pd_RootAlternative(AsnContext& ctx, uint32_t* t, uint32_t roots);

/// pd_ExtAlternative where the extension bit is 1, the bits are not all in the current octet, or
/// somebody watches.
[[nodiscard]] AsnStatus asnExtAlternative(AsnContext& ctx, uint32_t* t, uint32_t roots);

/// The same as pd_RootAlternative behind an extension bit. Returns kAsnExtended where that is 1,
/// and nothing more is read.
[[nodiscard, gnu::always_inline]] inline AsnStatus pd_ExtAlternative(AsnContext& ctx, uint32_t* t,
                                                                     uint32_t roots) {
    const uint32_t nbits = 1 + asnBitCount(roots - 1);
    uint32_t index = 0;
    if (!asnPeekInOctet(ctx, nbits, index) || index >= roots)
        return asnExtAlternative(ctx, t, roots);
    if (roots > 1)
        asnSkipNumber(ctx, nbits);
    else
        asnSkipFlags(ctx, nbits);  // the extension bit alone
    *t = index + 1;
    return kAsnOk;
}

/// Keeps an unknown alternative of a CHOICE that knows no extension alternatives, in a record in
/// the element heap; the tag is left alone. Returns 0, -2 or -12, logged.
[[nodiscard]] AsnStatus pd_UnknownAlternative(AsnContext& ctx, AsnOpenType*& extElem1);

/// Decodes the alternative that the tag of `choice` names.
using AsnAlternativeDecoder = AsnStatus (*)(AsnContext& ctx, void* choice);

/// An extension alternative of a CHOICE with `roots` root and `known` extension alternatives: index
/// to tag, a move to the next octet boundary in either variant, and the alternative from inside its
/// open type. Returns 0, -11 for an index that is not known (its open type has been read; the
/// cursor is left redirected; not logged), or what failed.
[[nodiscard]] AsnStatus pd_ExtensionAlternative(AsnContext& ctx, void* choice, uint32_t& t,
                                                uint32_t roots, uint32_t known,
                                                AsnAlternativeDecoder decode);

// --- SEQUENCE OF ---

/// The count of a list. Every element takes at least `elementBits` bits: a count that asks for more
/// than is left fails with -2, logged, before anything is allocated. Else the status of pd_Length:
/// also 2, for fragmented lists are not supported.
[[nodiscard]] AsnStatus pd_ListLength(AsnContext& ctx, uint32_t* count, uint32_t elementBits);

// --- values in the element heap ---

/// A run of octets inside a record.
struct AsnSpan {
    size_t offset;
    size_t size;
};

/// The spans of a type that need no clearing: inline octets behind a count that says how many of
/// them are value. A record with room for a key of 65535 octets would else cost as many
/// writes. The generator specialises this for the types that have any, in ascending order.
template <class T>
inline constexpr std::array<AsnSpan, 0> asnUncleared{};

/// `count` records of `size` octets, zeroed; or but for the spans. Null where memory is exhausted.
void* asnNewCleared(AsnContext& ctx, size_t count, size_t size);
void* asnNewRecords(AsnContext& ctx, size_t count, size_t size, const AsnSpan* uncleared,
                    size_t spans);

/// Values up to this size are cleared where they are allocated: a call would cost more.
constexpr size_t kAsnClearedInline = 64;

/// The array of a list; a count of 0 gives an address all the same. Null: the caller logs.
template <class T>
T* asnNewElements(AsnContext& ctx, uint32_t count) {
    constexpr auto& spans = asnUncleared<T>;
    if constexpr (spans.empty())
        return static_cast<T*>(asnNewCleared(ctx, count, sizeof(T)));
    else
        return static_cast<T*>(asnNewRecords(ctx, count, sizeof(T), spans.data(), spans.size()));
}

[[gnu::cold]] void asnLogNoMemory(AsnContext& ctx);

/// The value of a choice alternative. Null: logged with -12, which the caller returns.
template <class T>
T* asnNewValue(AsnContext& ctx) {
    T* value = nullptr;
    if constexpr (sizeof(T) <= kAsnClearedInline) {
        value = static_cast<T*>(asnMemAllocRaw(ctx.memHeap, sizeof(T)));
        if (value != nullptr) *value = T{};
    } else {
        value = asnNewElements<T>(ctx, 1);
    }
    if (value == nullptr) asnLogNoMemory(ctx);
    return value;
}

// --- recursive types ---

/// How many values of recursive types may stand inside one another. H.245 allows 15 levels of
/// MultiplexElement; the stack of a thread would bear many times this.
constexpr uint32_t kAsnMaxDepth = 64;

/// One level of a recursive type, while its decoder runs.
class AsnNesting {
  public:
    explicit AsnNesting(AsnContext& ctx) : ctx_(ctx) { ++ctx.depth; }
    ~AsnNesting() { --ctx_.depth; }
    AsnNesting(const AsnNesting&) = delete;
    AsnNesting& operator=(const AsnNesting&) = delete;
    /// 0, or -22, logged, beyond kAsnMaxDepth.
    [[nodiscard]] AsnStatus check() const;

  private:
    AsnContext& ctx_;
};
