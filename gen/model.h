// Modules resolved: every name, tag, constraint and exception is decided here, so that an emitter
// only writes.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "notation.h"

struct Module;

/// A component of a SEQUENCE or an alternative of a CHOICE.
struct Member {
    std::string path;      // "RasMessage.gatekeeperRequest"
    std::string cppName;   // "h323_uu_pdu"
    std::string dumpName;  // "h323-uu-pdu"
    std::string flag;      // "h323_uu_pduPresent"; empty if it has no presence bit
    Type* type = nullptr;
    uint32_t tag = 0;  // of an alternative
};

/// Octets of a record that need no clearing.
struct InlineOctets {
    std::string member;  // "encryptionSync.h235Key.data"
    uint64_t size = 0;
};

struct Type {
    Kind kind = Kind::null;
    bool hasFunctions = false;  // Decode and Print of its own
    bool extensible = false;
    bool keepsUnknown = false;  // has extElem1
    bool published = false;     // decoded by X.691
    bool recursive = false;     // nests in itself: its decoder counts the levels
    int line = 0;
    /// The structure, or for a type without functions of its own the C++ type that holds a value.
    std::string cppName;
    std::string path;      // "RequestMessage.foo"
    std::string notation;  // "INTEGER (0..255)", for comments
    const Module* module = nullptr;

    std::vector<Member> root;
    std::vector<Member> additions;
    Type* element = nullptr;  // of a list
    Type* target = nullptr;   // what another name refers to

    std::optional<Bounds> range;
    std::optional<Bounds> size;
    std::string sizeName;      // the constant "kH245Size1To4", or empty
    std::string alphabetName;  // the constant "kH245Alphabet1", or empty
    uint32_t capacity = 0;     // octets held in its structure
    int trailLine = 0;         // of the one place where its decoder logs; 0 if there is none
    LeastBits characterBits;   // of one character of a string
    LeastBits least;
    std::vector<InlineOctets> uncleared;
};

/// The type that another name refers to, or the type itself.
const Type& actual(const Type& type);
/// Whether it has a member in its record: all but NULL has.
bool hasValue(const Type& type);
/// Whether the union of a CHOICE holds its value; other values are pointed to.
bool heldInUnion(const Type& type);
/// Root and additions, in the order of declaration.
std::vector<const Member*> allMembers(const Type& type);

/// A size constraint in use.
struct SizeConstant {
    std::string name;  // "kH245Size1To4"
    int64_t lower = 0;
    int64_t upper = 0;
};

/// A permitted alphabet in use.
struct AlphabetConstant {
    std::string name;           // "kH245Alphabet1"
    std::string_view alphabet;  // "kAsnIA5String"
    std::string permitted;      // "0123456789#*,"
    bool published = false;
};

/// Modules that are read together, and what holds for all of them.
struct ModuleSet {
    std::string space;       // the namespace of all that is written; empty: none
    bool published = false;  // decoded by X.691, without any deviation
};

struct Module {
    ModuleSet set;
    std::string source;                  // "H323.asn"
    std::string name;                    // "H323-MESSAGES"
    std::string stem;                    // "H323": names the files and the trail entries
    std::string prefix;                  // "H225"
    std::vector<const Module*> imports;  // those it imports from
    std::vector<Type*> named;            // assigned, in the order of the file
    std::vector<Type*> ordered;          // types with functions, each before its users
    std::vector<Type*> forward;          // structures named before they are defined
    std::vector<SizeConstant> sizes;
    std::vector<AlphabetConstant> alphabets;
};

struct Model {
    std::deque<Type> types;  // their addresses must not change
    std::deque<Module> modules;
};

/// Resolves modules in any order.
Model resolve(const std::vector<ModuleNotation>& notations, const ModuleSet& set, Errors& errors);
