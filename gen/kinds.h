// The kinds of types. All that depends on the kind of a type is in its row of one table.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "asn1per/charset.h"

struct Type;
struct TypeNotation;

enum class Kind : uint8_t {
    null,
    boolean,
    integer,
    unsignedInteger,    // an upper bound above 2147483647
    extensibleInteger,  // a range with an extension marker
    extensibleLongInteger,
    lowerBoundedInteger,  // up to MAX
    unboundedInteger,
    unboundedLongInteger,
    enumerated,
    extensibleEnumerated,
    octetString,
    sizedOctetString,  // held in its structure
    bitString,
    sizedBitString,
    objectIdentifier,
    openType,
    numericString,
    printableString,
    visibleString,
    ia5String,
    ia5StringOf128,  // its alphabet has all 128 characters
    generalString,
    octetText,  // a GeneralString carried as octets
    bmpString,
    sequence,
    choice,
    sequenceOf,
    reference,  // another name for a type; the last kind
};
constexpr size_t kKindCount = static_cast<size_t>(Kind::reference) + 1;

/// Bits that a value takes at least, padding not counted. `kEndless` is more than any value takes.
struct LeastBits {
    uint64_t aligned = 0;
    uint64_t unaligned = 0;
    bool operator==(const LeastBits&) const = default;
};
constexpr uint64_t kEndless = UINT64_MAX;

/// The text of a type with functions of its own.
struct KindText {
    std::string (*structure)(const Type&);
    std::string (*decode)(const Type&);  // its decoder, and functions that it calls
    std::string (*dump)(const Type&);    // the body of its printer
};

/// What the generator knows of one kind. Calls are templates (template.h); they may use
///   $value $address  the value, and its address
///   $record          the value and what selects a member of it: "value.a." or "value.u.a->"
///   $lower $upper    the bounds of its range
///   $permitted       its character set: a constant
///   $size            its size constraint: a constant; a call without it finds it registered
struct KindRow {
    Kind kind{};
    std::string_view notation{};  // what a type begins with: "OCTET STRING"
    /// Several kinds may have the same notation: a type is of the first kind that fits, or else of
    /// the kind with null here.
    bool (*fits)(const TypeNotation&) = nullptr;
    bool asPublished = false;  // only in sets that are decoded as published; preferred there

    std::string_view cppType{};  // holds a value; empty: the type has a structure of its own
    bool hasValue = true;        // has a member in its record
    bool inUnion = false;        // held in the union of a CHOICE; other values are pointed to
    bool takesSize = false;
    bool takesMembers = false;
    bool keepsUnknown = false;     // has extElem1 if no addition follows its marker
    bool pointsToMembers = false;  // a pointer leads to its members
    int64_t (*octetsInline)(int64_t size) = nullptr;  // in its structure, by the upper SIZE
    int64_t lowest = 0, highest = -1;                 // values of an INTEGER
    const AsnAlphabet* alphabet = nullptr;            // that FROM selects from
    std::string_view alphabetName{};  // of a constant; that of its set ends in "Set"

    std::string_view read{};   // a call that returns a status
    std::string_view print{};  // a call
    LeastBits (&least)(const Type&);
    const KindText& text;
};

const KindRow& kindRow(Kind kind);

/// The kind of a type. Several kinds may have the same notation.
///   published  in a set that is decoded as published
Kind exactKind(const TypeNotation& type, bool published);
