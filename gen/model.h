// Modules resolved: every name, tag, constraint and exception decided, so that an emitter only
// writes.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "notation.h"

struct Type;

/// A component of a SEQUENCE or an alternative of a CHOICE.
struct Member {
    std::string notationName;  // "h323-uu-pdu"
    std::string cppName;       // "h323_uu_pdu"
    std::string dumpName;      // as the dump has it
    const Type* type = nullptr;
    bool optional = false;  // has a presence bit: OPTIONAL, or an addition
};

/// Octets of a record that need no clearing.
struct InlineOctets {
    std::string member;  // "encryptionSync.h235Key.data"
    uint64_t size = 0;
};

struct Type {
    Kind kind = Kind::null;  // `reference`: another name for `target`
    /// The structure, or for a type without functions of its own the C++ type that holds a value.
    std::string cppName;
    bool hasFunctions = false;  // Decode and Print of its own
    std::string valueType;      // the C++ type of a value without a structure, else empty
    std::string path;           // "RequestMessage.foo"
    std::string notation;       // "INTEGER (0..255)", for comments
    int line = 0;

    std::optional<Bounds> range;
    std::optional<Bounds> size;
    std::string characterSet;  // the constant of a string with FROM, else empty
    std::vector<Member> root;
    std::vector<Member> additions;
    bool extensible = false;
    const Type* element = nullptr;
    const Type* target = nullptr;

    bool recursive = false;  // nests in itself: its decoder counts the levels
    uint32_t minBits = 0;    // the least that a value takes, in either variant
    int trailLine = 0;       // of its one logging site, 0 where it has none
    std::vector<InlineOctets> uncleared;
};

/// Whether a choice alternative of the type lives in the union itself; all else is pointed to.
bool heldInline(const Type& type);
/// Whether it has a member in its record at all.
bool hasMember(const Type& type);
/// The type behind its other names.
const Type& actual(const Type& type);
/// Octets that an OCTET or BIT STRING with SIZE holds inline.
uint64_t inlineCapacity(const Type& type);

/// A permitted alphabet in use.
struct CharacterSet {
    std::string name;       // "kAlphabet1"
    std::string alphabet;   // "IA5String"
    std::string permitted;  // "0123456789#*,"
};

struct Module {
    std::string stem;                   // "H323": names the files and the trail entries
    std::string source;                 // "H323.asn"
    std::string prefix;                 // "H225"
    std::vector<std::string> includes;  // stems of the modules it imports from
    std::vector<const Type*> ordered;   // types with functions, each before its users
    std::vector<const Type*> forward;   // structures named before they are defined
    std::vector<Bounds> sizes;          // the distinct size constraints in use
    std::vector<CharacterSet> characterSets;
};

struct Model {
    std::deque<Type> types;  // addresses stay
    std::vector<Module> modules;
};

/// Resolves modules in any order; the result has each behind those that it imports from.
Model resolve(const std::vector<ModuleNotation>& notations, Errors& errors);
