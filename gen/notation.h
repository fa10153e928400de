// ASN.1 notation as read from a file: modules, assignments and types, nothing resolved yet.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// The mistakes found in all modules. Each is a line "H245.asn:812: RequestMessage.foo: REAL is not
/// supported"; reading goes on behind the assignment that holds it.
struct Errors {
    void add(const std::string& file, int line, const std::string& path, const std::string& text);
    std::vector<std::string> lines;
};

enum class Kind {
    null,
    boolean,
    integer,
    octetString,
    bitString,
    objectIdentifier,
    openType,
    numericString,
    printableString,
    visibleString,
    ia5String,
    generalString,
    bmpString,
    sequence,
    choice,
    sequenceOf,
    reference,
};

struct Bounds {
    int64_t lower = 0;
    int64_t upper = 0;
    bool extensible = false;
};

struct ComponentNotation;

struct TypeNotation {
    Kind kind = Kind::null;
    int line = 0;
    std::string reference;                // Kind::reference: the name of the type
    std::optional<Bounds> range;          // of an INTEGER
    std::optional<Bounds> size;           // of a string or list
    std::optional<std::string> alphabet;  // FROM
    std::vector<ComponentNotation> root;  // components or alternatives
    std::vector<ComponentNotation> additions;
    bool extensible = false;
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
    TypeNotation type;
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
};

/// Reads one module from the text of a file.
ModuleNotation parseModule(const std::string& file, const std::string& text, Errors& errors);
