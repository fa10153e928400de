// ASN.1 notation as read from a file: modules, assignments and types. No name is resolved yet.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "kinds.h"

/// The mistakes found in all modules. Each is a line "H245.asn:812: RequestMessage.foo: REAL is not
/// supported"; reading continues after the assignment that has it.
struct Errors {
    void add(const std::string& file, int line, const std::string& path, const std::string& text);
    std::vector<std::string> lines;
};

/// The upper bound that is written MAX: there is none.
constexpr int64_t kNoUpperBound = INT64_MAX;

struct Bounds {
    int64_t lower = 0;
    int64_t upper = 0;
    bool extensible = false;
};

struct ComponentNotation;

struct TypeNotation {
    Kind kind = Kind::null;  // the first of those with its notation
    int line = 0;
    std::string reference;                // Kind::reference: the name of the type
    std::optional<Bounds> range;          // of an INTEGER; of the root of an ENUMERATED
    std::optional<Bounds> size;           // of a string or list
    std::optional<std::string> alphabet;  // FROM
    std::vector<ComponentNotation> root;  // components or alternatives
    std::vector<ComponentNotation> additions;
    bool extensible = false;
    std::vector<std::string> items;         // of an ENUMERATED, additions included
    std::unique_ptr<TypeNotation> element;  // of a list
};

struct ComponentNotation {
    std::string name;
    TypeNotation type;
    bool optional = false;
    int line = 0;
};

struct Assignment {
    std::string name;
    TypeNotation type;  // NULL if it could not be read, so that uses of the name are no mistake
    int line = 0;
};

struct Import {
    std::string symbol;
    std::string module;
    int line = 0;
};

struct ModuleNotation {
    std::string file;  // without its folder: "H245.asn"
    std::string name;  // "MULTIMEDIA-SYSTEM-CONTROL"
    std::vector<Import> imports;
    std::vector<Assignment> assignments;
    bool headerRead = false;  // if not, the rest of the module has been skipped
};

/// Reads one module from the text of a file.
ModuleNotation parseModule(const std::string& file, const std::string& text, Errors& errors);

/// The notation of a type on one line, without its components: "INTEGER (0..255)".
std::string notationText(const TypeNotation& type);
std::string boundsText(const Bounds& bounds);
