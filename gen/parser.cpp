// Reads tokens into notation. A mistake ends the assignment that holds it.

#include <cctype>
#include <charconv>
#include <map>

#include "lexer.h"
#include "notation.h"

namespace {

/// Thrown where an assignment cannot be read on; `line` is where.
struct Mistake {
    int line;
    std::string path;
    std::string text;
};

constexpr int kMaxNesting = 100;

const std::map<std::string, Kind> kStringKinds = {
    {"NumericString", Kind::numericString}, {"PrintableString", Kind::printableString},
    {"VisibleString", Kind::visibleString}, {"IA5String", Kind::ia5String},
    {"GeneralString", Kind::generalString}, {"BMPString", Kind::bmpString},
};

/// Notation that X.680 has and this generator has not. As no type name may be one of these, each is
/// told by its name.
constexpr const char* kUnsupported[] = {
    "REAL",          "ENUMERATED",      "SET",           "EMBEDDED",        "EXTERNAL",
    "UTF8String",    "UniversalString", "TeletexString", "T61String",       "VideotexString",
    "GraphicString", "ISO646String",    "UTCTime",       "GeneralizedTime", "ObjectDescriptor",
    "RELATIVE-OID",  "CHARACTER",       "ANY",           "INSTANCE",
};

class Parser {
  public:
    Parser(const std::string& file, const std::string& text, Errors& errors)
        : tokens_(tokenize(text)), errors_(errors) {
        module_.file = file;
    }

    ModuleNotation parse() {
        try {
            header();
        } catch (const Mistake& mistake) {
            report(mistake);
        }
        while (!at("END") && !atEnd()) assignment();
        if (atEnd()) errors_.add(module_.file, peek().line, module_.name, "END is missing");
        return std::move(module_);
    }

  private:
    const Token& peek(size_t ahead = 0) const {
        return tokens_[std::min(next_ + ahead, tokens_.size() - 1)];
    }
    bool atEnd() const { return peek().tokenClass == Token::end; }
    bool at(const char* value) const {
        return peek().tokenClass != Token::text && peek().value == value;
    }
    Token take() {
        Token token = peek();
        if (!atEnd()) ++next_;
        return token;
    }
    bool takeIf(const char* value) {
        if (!at(value)) return false;
        take();
        return true;
    }
    [[noreturn]] void fail(const std::string& text) const {
        throw Mistake{peek().line, path_, text};
    }
    [[noreturn]] void failExpected(const std::string& what) const {
        fail(what + " expected, not " +
             (atEnd() ? "the end of the file" : "'" + peek().value + "'"));
    }
    void expect(const char* value) {
        if (!takeIf(value)) failExpected("'" + std::string(value) + "'");
    }
    std::string word(const char* what, bool upper) {
        const Token& token = peek();
        if (token.tokenClass != Token::word ||
            (std::isupper(static_cast<unsigned char>(token.value[0])) != 0) != upper)
            failExpected(what);
        return take().value;
    }
    int64_t number() {
        const Token& token = peek();
        if (token.tokenClass != Token::number) failExpected("number");
        int64_t value = 0;
        const char* const end = token.value.data() + token.value.size();
        if (std::from_chars(token.value.data(), end, value).ec != std::errc())
            fail("number " + token.value + " is too large");
        take();
        return value;
    }
    void report(const Mistake& mistake) {
        errors_.add(module_.file, mistake.line, mistake.path, mistake.text);
    }

    void header() {
        path_ = module_.file;
        module_.name = path_ = word("module name", true);
        expect("DEFINITIONS");
        expect("AUTOMATIC");
        expect("TAGS");
        expect("::=");
        expect("BEGIN");
        if (takeIf("IMPORTS")) imports();
    }

    void imports() {
        std::vector<Import> pending;
        while (!takeIf(";")) {
            const int line = peek().line;
            pending.push_back({word("imported type", true), "", line});
            if (takeIf(",")) continue;
            expect("FROM");
            const std::string module = word("module name", true);
            for (Import& import : pending) import.module = module;
            module_.imports.insert(module_.imports.end(), pending.begin(), pending.end());
            pending.clear();
        }
    }

    /// One assignment, or the reason why there is none and a move to the next one.
    void assignment() {
        const size_t start = next_;
        try {
            Assignment assignment;
            path_ = module_.name;
            assignment.line = peek().line;
            assignment.name = path_ = word("type name", true);
            expect("::=");
            assignment.type = type(0);
            module_.assignments.push_back(std::move(assignment));
        } catch (const Mistake& mistake) {
            report(mistake);
            next_ = std::max(next_, start + 1);
            while (!atEnd() && !at("END") && peek(1).value != "::=") take();
        }
    }

    TypeNotation type(int depth) {
        if (depth > kMaxNesting) fail("types are nested too deep");
        TypeNotation type;
        type.line = peek().line;
        if (peek().tokenClass != Token::word) failExpected("type");
        const std::string first = peek().value;
        for (const char* name : kUnsupported)
            if (first == name) fail(first + " is not supported");
        take();
        if (first == "NULL") {
            type.kind = Kind::null;
        } else if (first == "BOOLEAN") {
            type.kind = Kind::boolean;
        } else if (first == "INTEGER") {
            type.kind = Kind::integer;
        } else if (first == "OCTET" || first == "BIT") {
            expect("STRING");
            type.kind = first == "BIT" ? Kind::bitString : Kind::octetString;
        } else if (first == "OBJECT") {
            expect("IDENTIFIER");
            type.kind = Kind::objectIdentifier;
        } else if (const auto found = kStringKinds.find(first); found != kStringKinds.end()) {
            type.kind = found->second;
        } else if (first == "CHOICE") {
            type.kind = Kind::choice;
            components(type, depth);
        } else if (first == "SEQUENCE" && at("{")) {
            type.kind = Kind::sequence;
            components(type, depth);
        } else if (first == "SEQUENCE") {
            list(type, depth);
        } else if (first == "TYPE-IDENTIFIER") {
            expect(".");
            expect("&");
            expect("Type");
            type.kind = Kind::openType;
        } else if (std::isupper(static_cast<unsigned char>(first[0])) != 0) {
            type.kind = Kind::reference;
            type.reference = first;
        } else {
            --next_;
            failExpected("type");
        }
        while (at("(")) constraint(type);
        if (at("{")) fail("parameters and named values are not supported");
        return type;
    }

    void list(TypeNotation& type, int depth) {
        type.kind = Kind::sequenceOf;
        if (takeIf("SIZE")) type.size = bounds();
        while (at("(")) constraint(type);
        expect("OF");
        const std::string outer = path_;
        path_ += ".elem";
        type.element = std::make_unique<TypeNotation>(this->type(depth + 1));
        path_ = outer;
    }

    void components(TypeNotation& type, int depth) {
        expect("{");
        const std::string outer = path_;
        while (!takeIf("}")) {
            if (takeIf("...")) {
                if (type.extensible) fail("a second extension marker is not supported");
                type.extensible = true;
            } else {
                ComponentNotation component;
                component.line = peek().line;
                if (at("[")) fail("extension addition groups are not supported");
                if (at("COMPONENTS")) fail("COMPONENTS OF is not supported");
                component.name = word("component name", false);
                path_ = outer + "." + component.name;
                component.type = this->type(depth + 1);
                if (takeIf("OPTIONAL")) {
                    if (type.kind == Kind::choice) fail("an alternative cannot be OPTIONAL");
                    component.optional = true;
                }
                if (at("DEFAULT")) fail("DEFAULT is not supported");
                path_ = outer;
                (type.extensible ? type.additions : type.root).push_back(std::move(component));
            }
            if (at("}")) continue;
            expect(",");
            if (at("}")) failExpected("component");
        }
    }

    /// "(a..b)", or "(a)".
    Bounds bounds() {
        expect("(");
        const Bounds bounds = boundsWithin();
        expect(")");
        return bounds;
    }
    Bounds boundsWithin() {
        Bounds bounds;
        bounds.lower = bounds.upper = number();
        if (takeIf("..")) bounds.upper = number();
        if (takeIf(",")) {
            expect("...");
            bounds.extensible = true;
        }
        if (bounds.lower > bounds.upper) fail("lower bound is greater than upper");
        return bounds;
    }

    void constraint(TypeNotation& type) {
        expect("(");
        do constraintItem(type);
        while (takeIf("^"));
        if (at("|") || at("UNION")) fail("unions of constraints are not supported");
        expect(")");
    }

    void constraintItem(TypeNotation& type) {
        if (takeIf("SIZE")) {
            if (type.size) fail("a second SIZE is not supported");
            type.size = bounds();
        } else if (takeIf("FROM")) {
            expect("(");
            if (peek().tokenClass != Token::text) failExpected("alphabet");
            type.alphabet = take().value;
            expect(")");
        } else if (peek().tokenClass == Token::number) {
            if (type.kind != Kind::integer && type.kind != Kind::reference)
                fail("only an INTEGER has a range");
            type.range = boundsWithin();
        } else {
            fail("constraint '" + peek().value + "' is not supported");
        }
    }

    std::vector<Token> tokens_;
    size_t next_ = 0;
    std::string path_;  // of what is being read, for messages
    ModuleNotation module_;
    Errors& errors_;
};

}  // namespace

void Errors::add(const std::string& file, int line, const std::string& path,
                 const std::string& text) {
    lines.push_back(file + ":" + std::to_string(line) + ": " + path + ": " + text);
}

ModuleNotation parseModule(const std::string& file, const std::string& text, Errors& errors) {
    return Parser(file, text, errors).parse();
}
