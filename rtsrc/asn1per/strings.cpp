#include "strings.h"

#include <bit>
#include <cstring>

#include "lengths.h"

namespace {

constexpr AsnLogger kLogError{AsnLogBase::strings};

/// What differs between BIT STRING and OCTET STRING.
struct StringKind {
    const char* label;
    uint32_t itemBits;
    uint32_t alignAbove;  // longer strings are aligned whatever their constraint
};
constexpr StringKind kBits{"BitString", 1, 16};
constexpr StringKind kOctets{"OctetString", 8, 2};

/// Whether the contents of this length stand at an octet boundary in the ALIGNED variant (X.691
/// 15.9 to 15.11, 16.6 to 16.8): all but short strings of a fixed size of the root.
AsnStatus needsAlign(const AsnSizeConstraint* size, uint32_t length, const StringKind& kind,
                     bool* align) {
    *align = true;
    if (size == nullptr || length > kind.alignAbove) return kAsnOk;
    while (size != nullptr && (length < size->lower || length > size->upper)) size = size->next;
    if (size == nullptr) return kAsnConstraint;
    *align = size->extended != 0 || size->lower != size->upper;
    return kAsnOk;
}

/// The contents of one fragment.
template <class In>
AsnStatus contents(In& in, const AsnSizeConstraint* size, uint32_t length, const StringKind& kind,
                   uint8_t* buffer, uint32_t capacity) {
    bool align = false;
    AsnStatus status = in.aligned() ? needsAlign(size, length, kind, &align) : kAsnOk;
    if (align && status == kAsnOk) status = in.align();
    if (status != kAsnOk) return in.fail(kLogError, status);
    return in.octets(buffer, capacity, length * kind.itemBits);
}

/// Reads one fragment, whose length has been read.
template <class In>
AsnStatus fragment(In& in, const AsnSizeConstraint* size, uint32_t length, const StringKind& kind,
                   uint8_t* buffer, uint32_t capacity) {
    if (length != 0) {
        in.openField(kind.label);
        const AsnStatus status = contents(in, size, length, kind, buffer, capacity);
        if (status != kAsnOk) return in.fail(kLogError, status);
    }
    in.closeField();
    return kAsnOk;
}

/// The fragments of a string whose first length has been read, with the status `form`.
///   size  the constraint of this string: the alignment rule asks for it
template <class In>
AsnStatus fragments(In& in, const AsnSizeConstraint* size, AsnStatus form, uint32_t length,
                    uint32_t* count, uint8_t* buffer, uint32_t capacity, const StringKind& kind) {
    uint32_t written = 0;
    *count = 0;
    for (;;) {
        *count += length;
        const AsnStatus status =
            fragment(in, size, length, kind, buffer + written, capacity - written);
        if (status != kAsnOk || form != kAsnFragment) return status;
        written += length / (8 / kind.itemBits);
        form = asnPlainLength(in, length);
        if (form < 0) return in.fail(kLogError, form);
    }
}

/// A string into a fixed buffer; a fragmented one only as far as the first length.
template <class In>
AsnStatus fixedString(In& in, const AsnSizeConstraint* size, uint32_t* count, uint8_t* buffer,
                      uint32_t capacity, const StringKind& kind) {
    uint32_t length = 0;
    *count = 0;
    const AsnStatus form = asnLength(in, size, length);
    if (form < 0) return in.fail(kLogError, form);
    *count = length;
    if (form == kAsnFragment) {
        in.ctx().sizeConstraint = size;  // for fixedFragments
        return form;
    }
    return fragment(in, size, length, kind, buffer, capacity);
}

[[gnu::flatten, gnu::noinline]] AsnStatus fixedFragments(AsnContext& ctx, uint32_t* count,
                                                         uint8_t* buffer, uint32_t capacity,
                                                         const StringKind& kind) {
    return asnReadSized(ctx, [=, first = *count, kind = &kind](auto& in, auto* size) {
        return fragments(in, size, kAsnFragment, first, count, buffer, capacity, *kind);
    });
}

/// The items of the fragments behind the next `nbits` bits.
[[gnu::noinline]] int32_t lengthBehind(AsnReader in, int64_t nbits, uint32_t itemBits) {
    AsnContext behind;
    asnForkContext(behind, in.ctx());
    in.store(behind);
    const AsnStatus status = pd_moveBitCursor(behind, nbits);
    return status == kAsnOk ? pd_GetComponentLength(behind, itemBits) : status;
}

/// How many items there are in all, behind a first length: of a fragmented string the others are
/// looked up ahead. Negative where they are not there.
template <class In>
int32_t totalLength(In& in, AsnStatus form, uint32_t length, uint32_t itemBits) {
    const int64_t nbits = int64_t{length} * itemBits;
    if (in.bitsLeft() < nbits) return in.fail(kLogError, kAsnEndOfData);
    if (form != kAsnFragment) return static_cast<int32_t>(length);
    const int32_t rest = lengthBehind(in, nbits, itemBits);
    return rest < 0 ? in.fail(kLogError, rest) : static_cast<int32_t>(length) + rest;
}

/// A string behind its first length, into the element heap.
template <class In>
AsnStatus copyString(In& in, const AsnSizeConstraint* constraint, AsnStatus form, uint32_t length,
                     uint32_t* count, uint8_t** data, const StringKind& kind) {
    const int32_t total = totalLength(in, form, length, kind.itemBits);
    if (total < 0) return in.fail(kLogError, total);
    const uint32_t size =
        kind.itemBits == 1 ? (static_cast<uint32_t>(total) + 7) / 8 : static_cast<uint32_t>(total);
    uint8_t* buffer = nullptr;
    if (size != 0) {
        buffer = static_cast<uint8_t*>(asnMemAllocRaw(in.ctx().memHeap, size));
        if (buffer == nullptr) return in.fail(kLogError, kAsnNoMemory);
    }
    *data = buffer;
    *count = 0;
    const AsnStatus status = fragments(in, constraint, form, length, count, buffer, size, kind);
    return status == kAsnOk ? status : in.fail(kLogError, status);
}

template <class In>
AsnStatus dynamicString(In& in, const AsnSizeConstraint* size, uint32_t* count, uint8_t** data,
                        const StringKind& kind) {
    uint32_t length = 0;
    const AsnStatus form = asnLength(in, size, length);
    if (form < 0) return in.fail(kLogError, form);
    return copyString(in, size, form, length, count, data, kind);
}

/// Where a character string begins: length, alignment, and a check that its characters are there.
/// A fragmented string is refused with kAsnFragment, which the caller of the reader logs.
template <class In>
AsnStatus beginCharacters(In& in, const AsnSizeConstraint* size, const char* label, uint32_t& count,
                          uint32_t bits) {
    AsnStatus status = asnLength(in, size, count);
    if (status == kAsnFragment) return status;
    if (status != kAsnOk) return in.fail(kLogError, status);
    in.openField(label);
    if (in.aligned()) status = in.align();
    if (status == kAsnOk && in.bitsLeft() < int64_t{count} * bits) status = kAsnEndOfData;
    return status == kAsnOk ? status : in.fail(kLogError, status);
}

template <class In>
AsnStatus constrainedString(In& in, const AsnSizeConstraint* size, const char** text,
                            const AsnCharSet& set) {
    const uint32_t bits = in.aligned() ? set.alignedBits : set.unalignedBits;
    const bool indexed = bits < set.charSetBits || set.charSetBits < 5;
    uint32_t count = 0;
    AsnStatus status = beginCharacters(in, size, "CharString", count, bits);
    if (status == kAsnFragment) return status;
    if (status != kAsnOk) return in.fail(kLogError, status);
    auto* const out = static_cast<uint8_t*>(asnMemAllocRaw(in.ctx().memHeap, size_t{count} + 1));
    if (out == nullptr) return in.fail(kLogError, kAsnNoMemory);
    for (uint32_t i = 0; i < count; ++i) {
        uint32_t code = 0;
        status = in.bits(code, bits);
        if (status != kAsnOk) return in.fail(kLogError, status);
        if (indexed) {
            if (code >= set.count) return in.fail(kLogError, kAsnConstraint);
            out[i] = set.permitted[code];
        } else {
            out[i] = static_cast<uint8_t>(code);
            // A code is as bound to the permitted alphabet as an index is.
            if (set.count != 0 && std::memchr(set.permitted, out[i], set.count) == nullptr)
                return in.fail(kLogError, kAsnConstraint);
        }
    }
    out[count] = 0;
    *text = reinterpret_cast<const char*>(out);
    in.closeField();
    return kAsnOk;
}

template <class In>
AsnStatus constrained16BitString(In& in, const AsnSizeConstraint* size, AsnBMPString& value,
                                 const Asn16BitCharSet& set) {
    const uint32_t bits = in.aligned() ? set.alignedBits : set.unalignedBits;
    AsnStatus status = beginCharacters(in, size, "BMPString", value.nchars, bits);
    if (status == kAsnFragment) return status;
    if (status != kAsnOk) return in.fail(kLogError, status);
    value.data = static_cast<uint16_t*>(asnMemAllocRaw(in.ctx().memHeap, size_t{value.nchars} * 2));
    if (value.data == nullptr) return in.fail(kLogError, kAsnNoMemory);
    for (uint32_t i = 0; i < value.nchars; ++i) {
        uint32_t code = 0;
        status = in.bits(code, bits);
        if (status != kAsnOk) return in.fail(kLogError, status);
        if (set.table != nullptr && code >= set.count) return in.fail(kLogError, kAsnConstraint);
        value.data[i] =
            static_cast<uint16_t>(set.table != nullptr ? set.table[code] : code + set.lowest);
    }
    in.closeField();
    return kAsnOk;
}

/// The typed entries: without a permitted alphabet the set is a constant.
template <const AsnAlphabet& alphabet>
AsnStatus readTyped(AsnContext& ctx, const char** text, const char* permitted) {
    static constexpr AsnCharSet kUnrestricted = asnCharSet(alphabet, nullptr);
    const AsnStatus status = permitted == nullptr
                                 ? pd_ConstrainedString(ctx, text, kUnrestricted)
                                 : pd_ConstrainedString(ctx, text, asnCharSet(alphabet, permitted));
    return status == kAsnOk ? status : kLogError(ctx, status);
}

}  // namespace

[[gnu::flatten]] AsnStatus pd_BitString(AsnContext& ctx, uint32_t* numbits, uint8_t* buffer,
                                        uint32_t capacity) {
    const AsnStatus status = asnReadSized(ctx, [=](auto& in, auto* size) {
        return fixedString(in, size, numbits, buffer, capacity, kBits);
    });
    return status <= kAsnOk ? status : fixedFragments(ctx, numbits, buffer, capacity, kBits);
}

[[gnu::flatten]] AsnStatus pd_OctetString(AsnContext& ctx, uint32_t* numocts, uint8_t* buffer,
                                          uint32_t capacity) {
    const AsnStatus status = asnReadSized(ctx, [=](auto& in, auto* size) {
        return fixedString(in, size, numocts, buffer, capacity, kOctets);
    });
    return status <= kAsnOk ? status : fixedFragments(ctx, numocts, buffer, capacity, kOctets);
}

[[gnu::flatten]] AsnStatus pd_DynBitString(AsnContext& ctx, AsnDynBitStr& value) {
    return asnReadSized(ctx, [to = &value](auto& in, auto* size) {
        return dynamicString(in, size, &to->numbits, &to->data, kBits);
    });
}

[[gnu::flatten]] AsnStatus pd_DynOctetString(AsnContext& ctx, AsnDynOctStr& value) {
    return asnReadSized(ctx, [to = &value](auto& in, auto* size) {
        return dynamicString(in, size, &to->numocts, &to->data, kOctets);
    });
}

[[gnu::flatten]] AsnStatus asnCopyOctets(AsnContext& ctx, AsnStatus form, uint32_t length,
                                         AsnDynOctStr& value) {
    return asnRead(ctx, [=, to = &value](auto& in) {
        return copyString(in, nullptr, form, length, &to->numocts, &to->data, kOctets);
    });
}

AsnStatus pd_NumericString(AsnContext& ctx, const char** text, const char* permitted) {
    return readTyped<kAsnNumericString>(ctx, text, permitted);
}

AsnStatus pd_PrintableString(AsnContext& ctx, const char** text, const char* permitted) {
    return readTyped<kAsnPrintableString>(ctx, text, permitted);
}

AsnStatus pd_VisibleString(AsnContext& ctx, const char** text, const char* permitted) {
    return readTyped<kAsnVisibleString>(ctx, text, permitted);
}

AsnStatus pd_IA5String(AsnContext& ctx, const char** text, const char* permitted) {
    return readTyped<kAsnIA5String>(ctx, text, permitted);
}

AsnStatus pd_GeneralString(AsnContext& ctx, const char** text, const char* permitted) {
    return readTyped<kAsnGeneralString>(ctx, text, permitted);
}

AsnStatus pd_86CharString(AsnContext& ctx, const char** text, const char* permitted) {
    return readTyped<kAsn86CharString>(ctx, text, permitted);
}

[[gnu::flatten]] AsnStatus pd_ConstrainedString(AsnContext& ctx, const char** text,
                                                const AsnCharSet& set) {
    const AsnStatus status = asnReadSized(ctx, [=, set = &set](auto& in, auto* size) {
        return constrainedString(in, size, text, *set);
    });
    return status == kAsnFragment ? kLogError(ctx, status) : status;
}

AsnStatus pd_BMPString(AsnContext& ctx, AsnBMPString& value, const Asn16BitAlphabet* permitted) {
    Asn16BitCharSet set{0, nullptr, 0, 0xFFFF, 16, 16};
    if (permitted != nullptr) {
        const uint32_t bits = asnBitCount(permitted->count);
        set = {permitted->count, permitted->codes, 0, 0xFFFF, bits, std::bit_ceil(bits)};
    }
    const AsnStatus status = pd_16BitConstrainedString(ctx, value, set);
    return status == kAsnOk ? status : kLogError(ctx, status);
}

[[gnu::flatten]] AsnStatus pd_16BitConstrainedString(AsnContext& ctx, AsnBMPString& value,
                                                     const Asn16BitCharSet& set) {
    const AsnStatus status = asnReadSized(ctx, [to = &value, set = &set](auto& in, auto* size) {
        return constrained16BitString(in, size, *to, *set);
    });
    return status == kAsnFragment ? kLogError(ctx, status) : status;
}

static_assert(__LINE__ < 1000, "trail lines of two source files would meet");
