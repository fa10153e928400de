#include "kinds.h"

#include <algorithm>
#include <array>

#include "emit.h"
#include "sizes.h"

namespace {

bool isUnsigned(const TypeNotation& type) {
    return type.range && type.range->upper > INT32_MAX && !type.range->extensible &&
           type.range->upper != kNoUpperBound;
}
bool isExtensible(const TypeNotation& type) {
    return type.range && type.range->extensible;
}
bool isUnbounded(const TypeNotation& type) {
    return !type.range;
}
bool hasNoUpperBound(const TypeNotation& type) {
    return type.range && type.range->upper == kNoUpperBound && !type.range->extensible;
}
bool always(const TypeNotation&) {
    return true;
}
bool hasSize(const TypeNotation& type) {
    return type.size.has_value();
}
bool hasNoSize(const TypeNotation& type) {
    return !type.size.has_value();
}

LeastBits noBits(const Type&) {
    return exactly(0);
}
LeastBits oneBit(const Type&) {
    return exactly(1);
}
LeastBits plainLengthBits(const Type&) {
    return exactly(8);
}
LeastBits bitsOfOtherName(const Type& type) {
    return type.target->least;
}

constexpr KindText kSimple = {aliasStructure, decodeSimple, dumpSimple};
constexpr KindText kOctets = {octetsStructure, decodeSimple, dumpSimple};
constexpr KindText kBits = {bitsStructure, decodeSimple, dumpSimple};
constexpr KindText kSequence = {sequenceStructure, decodeSequence, dumpSequence};
constexpr KindText kChoice = {choiceStructure, decodeChoice, dumpChoice};
constexpr KindText kList = {listStructure, decodeList, dumpList};
constexpr KindText kOtherName = {aliasStructure, decodeOtherName, dumpOtherName};

/// What the 8-bit character strings have in common.
constexpr KindRow characterString(Kind kind, std::string_view notation, const AsnAlphabet& alphabet,
                                  std::string_view alphabetName, std::string_view read) {
    return {.kind = kind,
            .notation = notation,
            .cppType = "const char*",
            .inUnion = true,
            .takesSize = true,
            .alphabet = &alphabet,
            .alphabetName = alphabetName,
            .read = read,
            .print = "asnPrintCharStr(dump, $value)",
            .least = characterStringBits,
            .text = kSimple};
}

constexpr KindRow publishedIa5String() {
    KindRow row = characterString(Kind::ia5StringOf128, "IA5String", kAsnIA5StringOf128,
                                  "kAsnIA5StringOf128", "pd_IA5String($in, $address, $permitted)");
    row.fits = always;
    row.asPublished = true;
    return row;
}

constexpr std::array<KindRow, kKindCount> kKinds = {{
    {.kind = Kind::null, .notation = "NULL", .hasValue = false, .least = noBits, .text = kSimple},
    {.kind = Kind::boolean,
     .notation = "BOOLEAN",
     .cppType = "uint8_t",
     .read = "pd_bit($in, $address)",
     .print = "asnPrintBoolean(dump, $value)",
     .least = oneBit,
     .text = kSimple},
    {.kind = Kind::integer,
     .notation = "INTEGER",
     .cppType = "int32_t",
     .inUnion = true,
     .lowest = INT32_MIN,
     .highest = INT32_MAX,
     .read = "pd_ConsInteger($in, $address, $lower, $upper)",
     .print = "asnPrintInteger(dump, $value)",
     .least = rangeBits,
     .text = kSimple},
    {.kind = Kind::unsignedInteger,
     .notation = "INTEGER",
     .fits = isUnsigned,
     .cppType = "uint32_t",
     .inUnion = true,
     .lowest = 0,
     .highest = UINT32_MAX,
     .read = "pd_ConsUnsigned($in, $address, ${lower}U, ${upper}U)",
     .print = "asnPrintUnsigned(dump, $value)",
     .least = rangeBits,
     .text = kSimple},
    {.kind = Kind::extensibleInteger,
     .notation = "INTEGER",
     .fits = isExtensible,
     .cppType = "int32_t",
     .inUnion = true,
     .lowest = INT32_MIN,
     .highest = INT32_MAX,
     .read = "pd_ExtInteger($in, $address, $lower, $upper)",
     .print = "asnPrintInteger(dump, $value)",
     .least = extensibleRangeBits,
     .text = kSimple},
    {.kind = Kind::extensibleLongInteger,
     .notation = "INTEGER",
     .fits = isExtensible,
     .asPublished = true,
     .cppType = "int64_t",
     .inUnion = true,
     .lowest = INT32_MIN,
     .highest = INT32_MAX,
     .read = "asnExtLongInteger($in, $address, $lower, $upper)",
     .print = "asnPrintLongInteger(dump, $value)",
     .least = extensibleRangeBits,
     .text = kSimple},
    {.kind = Kind::lowerBoundedInteger,
     .notation = "INTEGER",
     .fits = hasNoUpperBound,
     .cppType = "int64_t",
     .inUnion = true,
     .lowest = INT32_MIN,
     .highest = kNoUpperBound,
     .read = "asnSemiConsInteger($in, $address, $lower)",
     .print = "asnPrintLongInteger(dump, $value)",
     .least = plainLengthBits,
     .text = kSimple},
    {.kind = Kind::unboundedInteger,
     .notation = "INTEGER",
     .fits = isUnbounded,
     .cppType = "int32_t",
     .inUnion = true,
     .read = "pd_UnconsInteger($in, $address)",
     .print = "asnPrintInteger(dump, $value)",
     .least = plainLengthBits,
     .text = kSimple},
    {.kind = Kind::unboundedLongInteger,
     .notation = "INTEGER",
     .fits = isUnbounded,
     .asPublished = true,
     .cppType = "int64_t",
     .inUnion = true,
     .read = "asnLongInteger($in, $address)",
     .print = "asnPrintLongInteger(dump, $value)",
     .least = plainLengthBits,
     .text = kSimple},
    {.kind = Kind::enumerated,
     .notation = "ENUMERATED",
     .cppType = "uint32_t",
     .inUnion = true,
     .lowest = 0,
     .highest = UINT32_MAX,
     .read = "asnEnumerated($in, $address, ${upper}U)",
     .print = "asnPrintUnsigned(dump, $value)",
     .least = rangeBits,
     .text = kSimple},
    {.kind = Kind::extensibleEnumerated,
     .notation = "ENUMERATED",
     .fits = isExtensible,
     .cppType = "uint32_t",
     .inUnion = true,
     .lowest = 0,
     .highest = UINT32_MAX,
     .read = "asnExtEnumerated($in, $address, ${upper}U)",
     .print = "asnPrintUnsigned(dump, $value)",
     .least = extensibleItemBits,
     .text = kSimple},
    {.kind = Kind::octetString,
     .notation = "OCTET STRING",
     .fits = hasNoSize,
     .cppType = "AsnDynOctStr",
     .read = "pd_DynOctetString($in, $value)",
     .print = "asnPrintOctStr(dump, ${record}numocts, ${record}data, \".\")",
     .least = octetStringBits,
     .text = kSimple},
    {.kind = Kind::sizedOctetString,
     .notation = "OCTET STRING",
     .fits = hasSize,
     .takesSize = true,
     .octetsInline = [](int64_t size) { return size; },
     .read = "asnSizedOctets($in, $size, &${record}numocts, ${record}data)",
     .print = "asnPrintOctStr(dump, ${record}numocts, ${record}data, \".\")",
     .least = octetStringBits,
     .text = kOctets},
    {.kind = Kind::bitString,
     .notation = "BIT STRING",
     .fits = hasNoSize,
     .cppType = "AsnDynBitStr",
     .read = "pd_DynBitString($in, $value)",
     .print = "asnPrintBitStr(dump, ${record}numbits, ${record}data, \".\")",
     .least = bitStringBits,
     .text = kSimple},
    {.kind = Kind::sizedBitString,
     .notation = "BIT STRING",
     .fits = hasSize,
     .takesSize = true,
     .octetsInline = [](int64_t size) { return (size + 7) / 8; },
     .read = "pd_BitString($in, &${record}numbits, ${record}data, sizeof ${record}data)",
     .print = "asnPrintBitStr(dump, ${record}numbits, ${record}data, \".\")",
     .least = bitStringBits,
     .text = kBits},
    {.kind = Kind::objectIdentifier,
     .notation = "OBJECT IDENTIFIER",
     .cppType = "AsnObjId",
     .read = "pd_ObjectId($in, $value)",
     .print = "asnPrintOID(dump, $value)",
     .least = plainLengthBits,
     .text = kSimple},
    {.kind = Kind::openType,
     .notation = "TYPE-IDENTIFIER.&Type",
     .cppType = "AsnOpenType",
     .read = "pd_OpenType($in, &${record}data, &${record}numocts)",
     .print = "asnPrintOpenType(dump, ${record}numocts, ${record}data, \".\")",
     .least = plainLengthBits,
     .text = kSimple},
    characterString(Kind::numericString, "NumericString", kAsnNumericString, "kAsnNumericString",
                    "pd_NumericString($in, $address, $permitted)"),
    characterString(Kind::printableString, "PrintableString", kAsnPrintableString,
                    "kAsnPrintableString", "pd_PrintableString($in, $address, $permitted)"),
    characterString(Kind::visibleString, "VisibleString", kAsnVisibleString, "kAsnVisibleString",
                    "pd_VisibleString($in, $address, $permitted)"),
    characterString(Kind::ia5String, "IA5String", kAsnIA5String, "kAsnIA5String",
                    "pd_IA5String($in, $address, $permitted)"),
    publishedIa5String(),
    characterString(Kind::generalString, "GeneralString", kAsnGeneralString, "kAsnGeneralString",
                    "pd_GeneralString($in, $address, $permitted)"),
    {.kind = Kind::octetText,
     .notation = "GeneralString",
     .fits = always,
     .asPublished = true,
     .cppType = "const char*",
     .inUnion = true,
     .read = "asnOctetText($in, $address)",
     .print = "asnPrintCharStr(dump, $value)",
     .least = plainLengthBits,
     .text = kSimple},
    {.kind = Kind::bmpString,
     .notation = "BMPString",
     .cppType = "AsnBMPString",
     .takesSize = true,
     .read = "pd_BMPString($in, $value, nullptr)",
     .print = "asnPrintBMPStr(dump, $value, \".\")",
     .least = bmpStringBits,
     .text = kSimple},
    {.kind = Kind::sequence,
     .notation = "SEQUENCE",
     .takesMembers = true,
     .keepsUnknown = true,
     .least = sequenceBits,
     .text = kSequence},
    {.kind = Kind::choice,
     .notation = "CHOICE",
     .takesMembers = true,
     .keepsUnknown = true,
     .pointsToMembers = true,
     .least = choiceBits,
     .text = kChoice},
    {.kind = Kind::sequenceOf,
     .notation = "SEQUENCE OF",
     .takesSize = true,
     .pointsToMembers = true,
     .least = listBits,
     .text = kList},
    {.kind = Kind::reference,
     .notation = "(another name)",
     .least = bitsOfOtherName,
     .text = kOtherName},
}};

/// If a kind has no row, is out of order, or lacks its calls, the table does not compile.
constexpr bool areComplete() {
    for (size_t i = 0; i < kKinds.size(); ++i) {
        const KindRow& row = kKinds[i];
        const bool hasCalls = !row.read.empty() && !row.print.empty();
        if (row.kind != static_cast<Kind>(i) || row.notation.empty()) return false;
        if (!row.cppType.empty() && !hasCalls) return false;
    }
    return true;
}
static_assert(areComplete());

}  // namespace

const KindRow& kindRow(Kind kind) {
    return kKinds[static_cast<size_t>(kind)];
}

Kind exactKind(const TypeNotation& type, bool published) {
    const std::string_view notation = kindRow(type.kind).notation;
    for (const bool asPublished : {true, false})
        for (const KindRow& row : kKinds)
            if (row.notation == notation && row.fits != nullptr && row.fits(type) &&
                row.asPublished == asPublished && (published || !asPublished))
                return row.kind;
    return type.kind;
}
