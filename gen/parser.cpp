// Reads tokens into notation. A mistake ends the assignment that has it.

#include <algorithm>
#include <cctype>
#include <charconv>

#include "lexer.h"
#include "notation.h"

namespace {

/// Thrown if an assignment cannot be read to its end.
struct Mistake {
    int line;
    std::string path;
    std::string text;
};

constexpr int kMaxNesting = 100;

/// Types of X.680 that this generator does not support. No type name may be one of these.
constexpr std::string_view kUnsupported[] = {
    "REAL",
    "SET",
    "EMBEDDED",
    "EXTERNAL",
    "UTF8String",
    "UniversalString",
    "TeletexString",
    "T61String",
    "VideotexString",
    "GraphicString",
    "ISO646String",
    "UTCTime",
    "GeneralizedTime",
    "ObjectDescriptor",
    "RELATIVE-OID",
    "CHARACTER",
    "ANY",
    "INSTANCE",
};

bool isUpper(const Token& token) {
    return token.tokenClass == Token::word &&
           std::isupper(static_cast<unsigned char>(token.value[0])) != 0;
}
bool isLower(const Token& token) {
    return token.tokenClass == Token::word && !isUpper(token);
}

bool isUnsupported(std::string_view word) {
    return std::find(std::begin(kUnsupported), std::end(kUnsupported), word) !=
           std::end(kUnsupported);
}

class Parser {
  public:
    Parser(const std::string& file, const std::string& text, Errors& errors)
        : tokens_(tokenize(text)), errors_(errors) {
        module_.file = file;
    }

    ModuleNotation parse() {
        try {
            header();
            module_.headerRead = true;
        } catch (const Mistake& mistake) {
            report(mistake);
            return std::move(module_);
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
        if (peek().tokenClass == Token::unclosedText) fail("a text is not closed on its line");
        fail(what + " expected, not " +
             (atEnd() ? "the end of the file" : "'" + peek().value + "'"));
    }
    void expect(const char* value) {
        if (!takeIf(value)) failExpected("'" + std::string(value) + "'");
    }
    std::string word(const char* what, bool upper) {
        if (!(upper ? isUpper(peek()) : isLower(peek()))) failExpected(what);
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
        if (at("EXPORTS")) fail("EXPORTS is not supported");
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

    /// One assignment. If it has a mistake, that is reported, and its name is assigned NULL.
    void assignment() {
        const size_t start = next_;
        path_ = module_.name;
        Assignment assignment;
        assignment.line = peek().line;
        try {
            if (isLower(peek())) valueAssignment();
            if (isReserved(peek().value)) failExpected("type name");
            assignment.name = path_ = word("type name", true);
            expect("::=");
            assignment.type = type(0);
        } catch (const Mistake& mistake) {
            report(mistake);
            next_ = std::max(next_, start + 1);
            while (!atEnd() && !at("END") && !startsAssignment()) take();
            assignment.type = {};
        }
        if (!assignment.name.empty()) module_.assignments.push_back(std::move(assignment));
    }

    [[noreturn]] void valueAssignment() {
        const int line = peek().line;
        path_ = take().value;
        while (!atEnd() && !at("END") && !takeIf("::=")) take();
        throw Mistake{line, path_, "value assignments are not supported"};
    }

    /// Whether the next tokens look like an assignment: that of a type, or one of a value on a
    /// line of its own.
    bool startsAssignment() const {
        if (isUpper(peek())) return peek(1).value == "::=" && !isReserved(peek().value);
        if (!isLower(peek()) || !isUpper(peek(1))) return false;
        const Token& end = peek(2).value == "::=" ? peek(2) : peek(3);
        return end.value == "::=" && end.line == peek().line;
    }

    /// Whether a word begins the notation of a type, so that it names none.
    static bool isReserved(const std::string& word) {
        if (isUnsupported(word)) return true;
        for (size_t i = 0; i < kKindCount; ++i) {
            const std::string_view notation = kindRow(static_cast<Kind>(i)).notation;
            if (notation.substr(0, notation.find_first_of(" .")) == word) return true;
        }
        return false;
    }

    TypeNotation type(int depth) {
        if (depth > kMaxNesting) fail("types are nested too deep");
        TypeNotation type;
        type.line = peek().line;
        if (!isUpper(peek())) failExpected("type");
        if (isUnsupported(peek().value)) fail(peek().value + " is not supported");
        type.kind = kind();
        if (type.kind == Kind::sequence && !at("{")) type.kind = Kind::sequenceOf;
        if (type.kind == Kind::reference) type.reference = take().value;
        if (type.kind == Kind::sequenceOf) list(type, depth);
        if (kindRow(type.kind).takesMembers) components(type, depth);
        if (type.kind == Kind::enumerated) enumeration(type);
        while (at("(")) constraint(type);
        if (at("{")) fail("parameters and named values are not supported");
        return type;
    }

    /// Takes the words of a kind. A word that begins none is left: it refers to a type.
    Kind kind() {
        for (size_t i = 0; i < kKindCount; ++i) {
            const KindRow& row = kindRow(static_cast<Kind>(i));
            const std::vector<Token> words = tokenize(std::string(row.notation));
            if (!at(words[0].value.c_str())) continue;
            for (size_t word = 0; words[word].tokenClass != Token::end; ++word)
                expect(words[word].value.c_str());
            return row.kind;
        }
        return Kind::reference;
    }

    void list(TypeNotation& type, int depth) {
        if (takeIf("SIZE")) type.size = bounds();
        while (at("(")) constraint(type);
        expect("OF");
        const std::string outer = path_;
        path_ += ".elem";
        type.element = std::make_unique<TypeNotation>(this->type(depth + 1));
        path_ = outer;
    }

    /// The items of an ENUMERATED. Their numbers have to be those that they get without any.
    void enumeration(TypeNotation& type) {
        expect("{");
        bool extensible = false;
        int64_t roots = 0;
        do {
            if (takeIf("...")) {
                if (extensible) fail("a second extension marker is not supported");
                extensible = true;
                continue;
            }
            const std::string item = word("item name", false);
            if (std::count(type.items.begin(), type.items.end(), item) != 0)
                fail("item " + item + " is named twice");
            const auto position = static_cast<int64_t>(type.items.size());
            if (takeIf("(")) {
                if (number() != position)
                    fail("item " + item + " has a number other than " + std::to_string(position));
                expect(")");
            }
            type.items.push_back(item);
            if (!extensible) ++roots;
        } while (takeIf(","));
        if (roots == 0) fail("an ENUMERATED without root items is not supported");
        expect("}");
        type.range = Bounds{0, roots - 1, extensible};
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

    /// "(a..b)", "(a..MAX)", or "(a)".
    Bounds bounds() {
        expect("(");
        const Bounds bounds = boundsWithin();
        expect(")");
        return bounds;
    }
    Bounds boundsWithin() {
        Bounds bounds;
        bounds.lower = bounds.upper = number();
        if (takeIf("..")) bounds.upper = takeIf("MAX") ? kNoUpperBound : number();
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
            if (type.alphabet) fail("a second FROM is not supported");
            expect("(");
            if (peek().tokenClass != Token::text) failExpected("text of permitted characters");
            type.alphabet = take().value;
            if (at("..") || at("|")) fail("FROM takes one text");
            expect(")");
        } else if (peek().tokenClass == Token::number) {
            if (type.range) fail("a second range is not supported");
            type.range = boundsWithin();
        } else if (peek().tokenClass == Token::word) {
            fail("constraint '" + peek().value + "' is not supported");
        } else {
            failExpected("constraint");
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

std::string boundsText(const Bounds& bounds) {
    std::string text = std::to_string(bounds.lower);
    if (bounds.upper != bounds.lower)
        text += ".." + (bounds.upper == kNoUpperBound ? "MAX" : std::to_string(bounds.upper));
    return text + (bounds.extensible ? ", ..." : "");
}

/// "{ a, b, ..., c }"
static std::string itemsText(const TypeNotation& type) {
    std::string text = "{ ";
    for (size_t i = 0; i < type.items.size(); ++i) {
        if (i != 0) text += ", ";
        if (type.range->extensible && static_cast<int64_t>(i) == type.range->upper + 1)
            text += "..., ";
        text += type.items[i];
    }
    const bool noAdditions = static_cast<int64_t>(type.items.size()) == type.range->upper + 1;
    return text + (type.range->extensible && noAdditions ? ", ... }" : " }");
}

std::string notationText(const TypeNotation& type) {
    if (type.kind == Kind::sequenceOf) {
        const std::string size = type.size ? " SIZE (" + boundsText(*type.size) + ")" : "";
        return "SEQUENCE" + size + " OF " + notationText(*type.element);
    }
    std::string text(kindRow(type.kind).notation);
    if (type.kind == Kind::enumerated) return text + " " + itemsText(type);
    if (type.kind == Kind::reference) text = type.reference;
    if (type.range) text += " (" + boundsText(*type.range) + ")";
    if (type.size) text += " (SIZE (" + boundsText(*type.size) + "))";
    if (type.alphabet) text += " (FROM (\"" + *type.alphabet + "\"))";
    return text;
}

ModuleNotation parseModule(const std::string& file, const std::string& text, Errors& errors) {
    return Parser(file, text, errors).parse();
}
