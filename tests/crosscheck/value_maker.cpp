#include "value_maker.h"

#include <algorithm>
#include <sstream>

#include "asn1per/print.h"
#include "later_modules.h"

namespace {

/// Beyond this depth, values are as short as their types allow.
constexpr int kDeep = 7;

std::string quoted(const std::string& name) {
    return "'" + name + "'";
}

/// "[1,2]": what `text(i)` gives for i below `count`.
template <class Text>
std::string listed(uint32_t count, const char* brackets, Text text) {
    std::string list(brackets, brackets + (brackets[2] != 0 ? 2 : 1));
    for (uint32_t i = 0; i < count; ++i) list += (i == 0 ? "" : ",") + text(i);
    return list + (brackets[2] != 0 ? brackets + 2 : brackets + 1);
}

std::string octetsTerm(const std::vector<uint8_t>& octets) {
    return listed(static_cast<uint32_t>(octets.size()), "<<>>",
                  [&](uint32_t i) { return std::to_string(octets[i]); });
}

/// The open type of an OCTET STRING of less than 128 octets.
std::vector<uint8_t> openTypeOf(const std::vector<uint8_t>& octets) {
    std::vector<uint8_t> open(octets.size() + 1);
    open[0] = static_cast<uint8_t>(octets.size());
    std::copy(octets.begin(), octets.end(), open.begin() + 1);
    return open;
}

/// The items of an ENUMERATED, from its notation.
std::vector<std::string> itemsOf(const Type& type) {
    std::vector<std::string> items;
    std::istringstream words(type.notation.substr(type.notation.find('{') + 1));
    for (std::string word; words >> word && word != "}";) {
        if (word.ends_with(',')) word.pop_back();
        if (word != "...") items.push_back(word);
    }
    return items;
}

/// The alternatives that take the fewest bits.
std::vector<const Member*> shortest(const std::vector<Member>& members) {
    std::vector<const Member*> found;
    uint64_t least = UINT64_MAX;
    for (const Member& member : members) least = std::min(least, member.type->least.unaligned);
    for (const Member& member : members)
        if (member.type->least.unaligned == least) found.push_back(&member);
    return found;
}

}  // namespace

std::string ValueMaker::make(const Type& type, AsnDump& dump) {
    const Type& own = actual(type);
    ++depth_;
    std::string term;
    if (own.kind == Kind::sequence)
        term = makeSequence(own, dump);
    else if (own.kind == Kind::choice)
        term = makeChoice(own, dump);
    else if (own.kind == Kind::sequenceOf)
        term = makeList(own, dump);
    else
        term = makeLeaf(own, dump);
    --depth_;
    return term;
}

std::string ValueMaker::makeSequence(const Type& type, AsnDump& dump) {
    std::vector<const Member*> present;
    for (const Member* member : allMembers(type)) {
        const bool chosen = member->flag.empty() || oneIn(isLater(member->dumpName) ? 8
                                                          : depth_ < 4              ? 2
                                                                                    : 4);
        const bool isPresent = member->flag.empty() || (depth_ < kDeep && chosen);
        if (isPresent) present.push_back(member);
        if (!member->flag.empty() && !isLater(member->dumpName))
            asnPrintPresence(dump, member->dumpName, isPresent ? 1 : 0);
    }
    std::string term;
    for (const Member* member : present) {
        term += (term.empty() ? "" : ",") + quoted(member->dumpName) + "=>";
        if (!isLater(member->dumpName)) {
            const std::string component = "." + member->dumpName;
            const AsnDumpStep step(dump, component);
            term += make(*member->type, dump);
            continue;
        }
        std::vector<uint8_t> octets(below(20));
        for (uint8_t& octet : octets) octet = static_cast<uint8_t>(below(256));
        term += octetsTerm(octets);
        const std::vector<uint8_t> open = openTypeOf(octets);
        const std::string addition = ".extElem" + member->dumpName.substr(5);
        const AsnDumpStep step(dump, addition);
        asnPrintOpenType(dump, static_cast<uint32_t>(open.size()), open.data(), ".");
    }
    return "#{" + term + "}";
}

std::string ValueMaker::makeChoice(const Type& type, AsnDump& dump) {
    const std::vector<const Member*> all =
        depth_ < kDeep || oneIn(10) ? allMembers(type) : shortest(type.root);
    const Member* member = all[below(static_cast<uint32_t>(all.size()))];
    while (isLater(member->dumpName) && !oneIn(4))
        member = all[below(static_cast<uint32_t>(all.size()))];
    asnPrintTag(dump, member->tag);
    std::string term = "{" + quoted(member->dumpName) + ",";
    if (isLater(member->dumpName)) {
        const std::vector<uint8_t> octets(below(20), 0xA5);
        const std::vector<uint8_t> open = openTypeOf(octets);
        const AsnDumpStep step(dump, ".u@extElem1");
        asnPrintOpenType(dump, static_cast<uint32_t>(open.size()), open.data(), ".");
        return term + octetsTerm(octets) + "}";
    }
    const std::string alternative = ".u@" + member->dumpName;
    const AsnDumpStep step(dump, alternative);
    return term + make(*member->type, dump) + "}";
}

std::string ValueMaker::makeList(const Type& type, AsnDump& dump) {
    const uint32_t count = length(type, depth_ < 4 ? 4 : 2);
    asnPrintCount(dump, count);
    return listed(count, "[]", [&](uint32_t i) {
        const AsnElementStep step(dump, i);
        return make(*type.element, dump);
    });
}

/// A length within the bounds: mostly a small one, at times the least or the greatest.
uint32_t ValueMaker::length(const Type& type, uint32_t usual) {
    const uint32_t lower = type.size ? static_cast<uint32_t>(type.size->lower) : 0;
    const auto upper =
        type.size ? static_cast<uint32_t>(std::min<int64_t>(type.size->upper, 200)) : 200;
    if (depth_ > kDeep) return lower;
    if (oneIn(60)) return depth_ < 4 ? upper : lower;
    return std::min(upper, lower + below(usual + 1));
}

std::string ValueMaker::makeLeaf(const Type& type, AsnDump& dump) {
    switch (type.kind) {
        case Kind::null:
            return "'NULL'";
        case Kind::boolean: {
            const bool value = oneIn(2);
            asnPrintBoolean(dump, value ? 1 : 0);
            return value ? "true" : "false";
        }
        case Kind::enumerated:
        case Kind::extensibleEnumerated: {
            const std::vector<std::string> items = itemsOf(type);
            const uint32_t item = below(static_cast<uint32_t>(items.size()));
            asnPrintUnsigned(dump, item);
            return quoted(items[item]);
        }
        case Kind::octetString:
        case Kind::sizedOctetString:
        case Kind::bitString:
        case Kind::sizedBitString:
        case Kind::openType:
            return makeOctets(type, dump, 24);
        case Kind::objectIdentifier:
            return makeIdentifier(dump);
        default:
            if (type.range || kindRow(type.kind).notation == "INTEGER") {
                const int64_t value = makeInteger(type);
                asnPrintLongInteger(dump, value);
                return std::to_string(value);
            }
            return makeText(type, dump);
    }
}

int64_t ValueMaker::makeInteger(const Type& type) {
    int64_t lower = type.range ? type.range->lower : INT64_MIN;
    int64_t upper = type.range ? type.range->upper : INT64_MAX;
    if (type.range && type.range->extensible && oneIn(4)) lower = INT64_MIN, upper = INT64_MAX;
    if (oneIn(4)) return lower;
    if (oneIn(4)) return upper;
    const auto range = static_cast<uint64_t>(upper) - static_cast<uint64_t>(lower);
    uint64_t offset = uint64_t{random_()} << 32 | random_();
    if (upper == INT64_MAX) offset >>= below(64);  // of any length
    if (range != UINT64_MAX) offset %= range + 1;
    if (lower == INT64_MIN && oneIn(2)) return -static_cast<int64_t>(offset >> 1);
    return lower == INT64_MIN ? static_cast<int64_t>(offset >> 1)
                              : static_cast<int64_t>(static_cast<uint64_t>(lower) + offset);
}

std::string ValueMaker::makeOctets(const Type& type, AsnDump& dump, uint32_t most) {
    const bool isBits = kindRow(type.kind).notation == "BIT STRING";
    uint32_t count = length(type, most);
    // Nothing but a whole open type can be entered: an octet at least.
    if (type.kind == Kind::openType) count = std::max(count, 1U);
    std::vector<uint8_t> octets(isBits ? (count + 7) / 8 : count);
    for (uint8_t& octet : octets) octet = static_cast<uint8_t>(below(256));
    std::string term = octetsTerm(octets);
    if (isBits && count % 8 != 0) {
        octets.back() = static_cast<uint8_t>(octets.back() & 0xFF << (8 - count % 8));
        term = octetsTerm(octets);
        const auto last = static_cast<uint32_t>(octets.back() >> (8 - count % 8));
        const size_t at = term.find_last_of("<,") + 1;
        term = term.substr(0, at) + std::to_string(last) + ":" + std::to_string(count % 8) + ">>";
    }
    if (type.kind == Kind::openType)
        asnPrintOpenType(dump, count, octets.data(), ".");
    else if (isBits)
        asnPrintBitStr(dump, count, octets.data(), ".");
    else
        asnPrintOctStr(dump, count, octets.data(), ".");
    return term;
}

std::string ValueMaker::makeIdentifier(AsnDump& dump) {
    AsnObjId value{};
    value.numids = 2 + static_cast<int32_t>(below(7));
    for (int32_t i = 0; i < value.numids; ++i)
        value.subid[i] = oneIn(5) ? static_cast<uint32_t>(random_()) >> 4 : below(200);
    value.subid[0] = below(3);
    if (value.subid[0] < 2) value.subid[1] %= 40;
    asnPrintOID(dump, value);
    return listed(static_cast<uint32_t>(value.numids), "{}",
                  [&](uint32_t i) { return std::to_string(value.subid[i]); });
}

std::string ValueMaker::makeText(const Type& type, AsnDump& dump) {
    uint32_t count = length(type, 12);
    // After an empty text with a SIZE the other codec aligns. X.691 10.9.3.3 adds nothing there.
    if (count == 0 && type.size && type.size->lower == 0) count = 1;
    std::vector<uint16_t> characters(count);
    const AsnAlphabet* const alphabet = kindRow(type.kind).alphabet;
    std::string permitted;
    for (const AlphabetConstant& constant : type.module->alphabets)
        if (constant.name == type.alphabetName) permitted = constant.permitted;
    for (uint16_t& character : characters) {
        if (!permitted.empty())
            character =
                static_cast<uint8_t>(permitted[below(static_cast<uint32_t>(permitted.size()))]);
        else if (alphabet != nullptr)  // a NUL would end the text of a dump
            character = alphabet->codes[1 + below(alphabet->size - 1)];
        else
            character =
                static_cast<uint16_t>(type.kind == Kind::bmpString ? below(65536) : 1 + below(255));
    }
    if (type.kind == Kind::bmpString) {
        asnPrintBMPStr(dump, {count, characters.data()}, ".");
        return listed(count, "[]", [&](uint32_t i) {
            return "{0,0," + std::to_string(characters[i] >> 8) + "," +
                   std::to_string(characters[i] & 255) + "}";
        });
    }
    const std::string text(characters.begin(), characters.end());
    asnPrintCharStr(dump, text.c_str());
    return listed(count, "[]", [&](uint32_t i) { return std::to_string(characters[i]); });
}
