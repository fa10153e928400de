#include "sizes.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace {

/// A key or a password is held in its structure; H.245 has one of 65535 octets. With more, every
/// record that may hold one would be larger than any message.
constexpr int64_t kMostInlineOctets = 65535;

/// A string with room for so many inline octets, or more, is not cleared with its record.
constexpr uint64_t kWorthSkipping = 1024;

/// From here on a number of bits does not grow: no message has as many.
constexpr uint64_t kManyBits = uint64_t{1} << 40;

/// The short form of a normally small number (X.691 10.6).
constexpr uint64_t kSmallNumberBits = 7;

/// An open type of no octets, after the index of an extension alternative.
constexpr uint64_t kExtensionAlternativeBits = kSmallNumberBits + 8;

uint64_t plus(uint64_t a, uint64_t b) {
    if (a == kEndless || b == kEndless) return kEndless;
    return std::min(a + b, kManyBits);
}
LeastBits plus(LeastBits a, LeastBits b) {
    return {plus(a.aligned, b.aligned), plus(a.unaligned, b.unaligned)};
}

uint64_t times(uint64_t count, uint64_t bits) {
    if (count == 0 || bits == 0) return 0;
    if (bits == kEndless) return kEndless;
    return count > kManyBits / bits ? kManyBits : count * bits;
}
LeastBits times(uint64_t count, LeastBits bits) {
    return {times(count, bits.aligned), times(count, bits.unaligned)};
}

LeastBits smaller(LeastBits a, LeastBits b) {
    return {std::min(a.aligned, b.aligned), std::min(a.unaligned, b.unaligned)};
}

/// A whole number from 0 to `last` (X.691 10.5).
LeastBits wholeNumberBits(uint64_t last) {
    const auto fewest = static_cast<uint64_t>(std::bit_width(last));
    if (last < 255) return exactly(fewest);
    if (last == 255) return exactly(8);
    return {last < 65536 ? 16U : 2U + 8U, fewest};
}

/// A length and that many items (X.691 10.9). A count of the general form has no lower bound.
LeastBits countedBits(const Type& type, LeastBits item) {
    if (!type.size || type.size->upper >= 65536) return exactly(8);
    const auto range = static_cast<uint64_t>(type.size->upper - type.size->lower);
    return plus(wholeNumberBits(range), times(static_cast<uint64_t>(type.size->lower), item));
}

void checkSize(Kind kind, const TypeNotation& notation,
               const std::function<void(const std::string&)>& refuse) {
    const KindRow& row = kindRow(kind);
    const Bounds& size = *notation.size;
    if (!row.takesSize) return refuse(std::string(row.notation) + " has no SIZE");
    if (size.extensible) refuse("an extensible SIZE is not supported");
    if (size.lower < 0 || size.upper > UINT32_MAX)
        return refuse("SIZE " + boundsText(size) + " does not fit 32 bits");
    if (!row.octetsInline) return;
    const int64_t octets = row.octetsInline(size.upper);
    if (octets == 0) refuse("a string without contents is not supported");
    if (octets > kMostInlineOctets)
        refuse("the structure would hold " + std::to_string(octets) + " octets; at most " +
               std::to_string(kMostInlineOctets) + " are supported");
}

void checkAlphabet(const KindRow& row, const std::string& permitted,
                   const std::function<void(const std::string&)>& refuse) {
    if (row.alphabet == nullptr)
        return refuse(std::string(row.notation) + " with FROM is not supported");
    if (permitted.empty()) return refuse("FROM permits no character");
    const uint8_t* const codes = row.alphabet->codes;
    for (const char c : permitted)
        if (c < ' ' || c > '~' ||
            std::find(codes, codes + row.alphabet->size, c) == codes + row.alphabet->size)
            return refuse("FROM permits a character that " + std::string(row.notation) +
                          " does not have");
}

}  // namespace

void checkConstraints(Kind kind, const TypeNotation& notation,
                      const std::function<void(const std::string&)>& refuse) {
    const KindRow& row = kindRow(kind);
    const std::string name(row.notation);
    if (notation.range && row.lowest > row.highest)
        refuse(name + " has no range");
    else if (notation.range &&
             (notation.range->lower < row.lowest || notation.range->upper > row.highest))
        refuse("range " + boundsText(*notation.range) + " does not fit " +
               std::string(row.cppType));
    if (notation.size) checkSize(kind, notation, refuse);
    if (notation.alphabet) checkAlphabet(row, *notation.alphabet, refuse);
}

std::vector<InlineOctets> unclearedSpans(const Type& type) {
    const Type& own = actual(type);
    std::vector<InlineOctets> spans;
    if (own.capacity >= kWorthSkipping) spans.push_back({"data", own.capacity});
    if (kindRow(own.kind).pointsToMembers) return spans;
    for (const Member* member : allMembers(own))
        for (const InlineOctets& inner : unclearedSpans(*member->type))
            spans.push_back({member->cppName + "." + inner.member, inner.size});
    return spans;
}

void measure(Model& model, Errors& errors) {
    // Values of any depth are found step by step: at first no type has one.
    for (Type& type : model.types) type.least = exactly(kEndless);
    for (bool changed = true; changed;) {
        changed = false;
        for (Type& type : model.types) {
            const LeastBits bits = kindRow(type.kind).least(type);
            changed = changed || !(bits == type.least);
            type.least = bits;
        }
    }
    for (const Module& module : model.modules) {
        for (const Type* type : module.named)
            if (type->least.unaligned == kEndless)
                errors.add(module.source, type->line, type->path,
                           "every value would contain another one");
        for (const Type* type : module.ordered)
            if (type->element != nullptr && type->element->least.unaligned == 0)
                errors.add(module.source, type->line, type->path,
                           "a list whose elements take no bits is not supported");
    }
}

LeastBits exactly(uint64_t bits) {
    return {bits, bits};
}

LeastBits rangeBits(const Type& type) {
    const auto last = static_cast<uint64_t>(type.range->upper - type.range->lower);
    // As designed, the range of all signed values takes 32 bits: its size does not fit a number.
    if (last == UINT32_MAX && type.range->lower < 0 && !type.published) return exactly(32);
    return wholeNumberBits(last);
}

LeastBits extensibleRangeBits(const Type& type) {
    return plus(exactly(1), smaller(rangeBits(type), exactly(8)));
}

LeastBits extensibleItemBits(const Type& type) {
    return plus(exactly(1), smaller(rangeBits(type), exactly(kSmallNumberBits)));
}

LeastBits bitStringBits(const Type& type) {
    return countedBits(type, exactly(1));
}

LeastBits octetStringBits(const Type& type) {
    return countedBits(type, exactly(8));
}

LeastBits characterStringBits(const Type& type) {
    return countedBits(type, type.characterBits);
}

LeastBits bmpStringBits(const Type& type) {
    return countedBits(type, exactly(16));
}

LeastBits listBits(const Type& type) {
    return countedBits(type, type.element->least);
}

LeastBits sequenceBits(const Type& type) {
    LeastBits bits = exactly(type.extensible ? 1 : 0);
    for (const Member& member : type.root)
        bits = plus(bits, member.flag.empty() ? member.type->least : exactly(1));
    return bits;
}

LeastBits choiceBits(const Type& type) {
    const LeastBits index = wholeNumberBits(type.root.size() - 1);
    LeastBits least = exactly(type.extensible ? kExtensionAlternativeBits : kEndless);
    for (const Member& member : type.root) least = smaller(least, plus(index, member.type->least));
    return plus(exactly(type.extensible ? 1 : 0), least);
}
