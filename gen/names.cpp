#include "names.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <set>

#include "exceptions.h"

namespace {

/// Words that C++ keeps for itself, and the types that members are declared with.
const std::set<std::string> kCppWords = {
    "alignas",      "alignof",      "and",           "and_eq",
    "asm",          "auto",         "bitand",        "bitor",
    "bool",         "break",        "case",          "catch",
    "char",         "char16_t",     "char32_t",      "char8_t",
    "class",        "co_await",     "co_return",     "co_yield",
    "compl",        "concept",      "const",         "const_cast",
    "consteval",    "constexpr",    "constinit",     "continue",
    "decltype",     "default",      "delete",        "do",
    "double",       "dynamic_cast", "else",          "enum",
    "explicit",     "export",       "extern",        "false",
    "float",        "for",          "friend",        "goto",
    "if",           "inline",       "int",           "int32_t",
    "long",         "mutable",      "namespace",     "new",
    "noexcept",     "not",          "not_eq",        "nullptr",
    "operator",     "or",           "or_eq",         "private",
    "protected",    "public",       "register",      "reinterpret_cast",
    "requires",     "return",       "short",         "signed",
    "sizeof",       "static",       "static_assert", "static_cast",
    "struct",       "switch",       "template",      "this",
    "thread_local", "throw",        "true",          "try",
    "typedef",      "typeid",       "typename",      "uint16_t",
    "uint32_t",     "uint8_t",      "union",         "unsigned",
    "using",        "virtual",      "void",          "volatile",
    "wchar_t",      "while",        "xor",           "xor_eq",
};

const std::set<std::string> kSharedMembers = {"m", "t", "u", "n", "elem", "extElem1"};

std::string underscored(std::string name) {
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

bool isIdentifier(const std::string& text) {
    return !text.empty() && std::isalpha(static_cast<unsigned char>(text[0])) != 0 &&
           std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isalnum(c); });
}

void rename(Type& type, const NameException& exception, bool& matched) {
    for (auto* members : {&type.root, &type.additions})
        for (Member& member : *members) {
            if (member.path != exception.path || !hasValue(*member.type)) continue;
            member.dumpName = exception.dumpName;
            matched = true;
        }
}

}  // namespace

std::string fileStem(const std::string& file) {
    return file.substr(0, file.find('.'));
}

std::string modulePrefix(const std::string& stem) {
    for (const PrefixException& exception : kPrefixExceptions)
        if (exception.module == stem) return std::string(exception.prefix);
    return stem;
}

std::string typeName(const std::string& prefix, const std::string& name) {
    return prefix + underscored(name);
}

std::string innerTypeName(const std::string& outer, const std::string& name) {
    return outer + "_" + underscored(name);
}

std::string memberName(const std::string& name) {
    const std::string identifier = underscored(name);
    return kCppWords.count(identifier) != 0 ? identifier + "_" : identifier;
}

bool isSharedMember(const std::string& cppName) {
    return kSharedMembers.count(cppName) != 0;
}

void checkModuleNames(const Model& model, Errors& errors) {
    std::map<std::string, std::string> names;
    std::map<std::string, std::string> stems;
    std::map<std::string, std::string> prefixes;
    for (const Module& module : model.modules) {
        const auto refuse = [&](const std::string& text) {
            errors.add(module.source, 1, module.name, text);
        };
        if (!isIdentifier(module.stem))
            refuse("'" + module.stem + "' cannot begin the name of a structure");
        if (!names.emplace(module.name, module.source).second)
            refuse("two modules have this name");
        else if (!stems.emplace(module.stem, module.source).second)
            refuse("the files of " + stems[module.stem] + " have the same names");
        else if (!prefixes.emplace(module.prefix, module.source).second)
            refuse("the structures of " + prefixes[module.prefix] + " have the same prefix");
    }
}

void checkTypeNames(const Model& model, Errors& errors) {
    std::set<std::string> names;
    for (const Module& module : model.modules)
        for (const Type* type : module.ordered)
            if (!names.insert(type->cppName).second)
                errors.add(module.source, type->line, type->path,
                           "two types are named " + type->cppName);
}

void applyNameExceptions(Module& module, Errors& errors) {
    if (module.set.published) return;
    for (const NameException& exception : kNameExceptions) {
        if (exception.module != module.stem) continue;
        bool matched = false;
        for (Type* type : module.ordered) rename(*type, exception, matched);
        if (!matched)
            errors.add(module.source, 1, std::string(exception.path),
                       "the name exception matches nothing that is dumped");
    }
}
