#include "later_modules.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace {

void extend(TypeNotation& type) {
    if (type.element != nullptr) extend(*type.element);
    for (auto* members : {&type.root, &type.additions})
        for (ComponentNotation& member : *members) extend(member.type);
    if (type.range && type.range->extensible && !type.items.empty()) type.items.push_back("later");
    if (!type.extensible) return;
    for (const char* const name : {"later1", "later2"}) {
        ComponentNotation& later = type.additions.emplace_back();
        later.name = name;
        later.type.kind = Kind::octetString;
        later.optional = type.kind == Kind::sequence;
    }
}

std::string typeText(const TypeNotation& type);

std::string membersText(const TypeNotation& type) {
    std::string text;
    const auto add = [&](const std::string& member) {
        text += (text.empty() ? "\n  " : ",\n  ") + member;
    };
    const auto addAll = [&](const std::vector<ComponentNotation>& members) {
        for (const ComponentNotation& member : members)
            add(member.name + " " + typeText(member.type) + (member.optional ? " OPTIONAL" : ""));
    };
    addAll(type.root);
    if (type.extensible) add("...");
    addAll(type.additions);
    return " {" + text + "\n}";
}

std::string typeText(const TypeNotation& type) {
    if (type.kind != Kind::sequenceOf)
        return notationText(type) + (kindRow(type.kind).takesMembers ? membersText(type) : "");
    const std::string size = type.size ? " (SIZE (" + boundsText(*type.size) + "))" : "";
    return "SEQUENCE" + size + " OF " + typeText(*type.element);
}

}  // namespace

bool isLater(const std::string& name) {
    return name.starts_with("later");
}

std::vector<ModuleNotation> laterModules(const std::vector<std::string>& files) {
    Errors errors;
    std::vector<ModuleNotation> modules;
    for (const std::string& file : files) {
        std::ifstream in(file);
        const std::string text(std::istreambuf_iterator<char>(in), {});
        modules.push_back(
            parseModule(std::filesystem::path(file).filename().string(), text, errors));
        for (Assignment& assignment : modules.back().assignments) extend(assignment.type);
    }
    if (!errors.lines.empty()) throw std::runtime_error(errors.lines[0]);
    return modules;
}

std::string moduleText(const ModuleNotation& module) {
    std::string text = module.name + " DEFINITIONS AUTOMATIC TAGS ::=\nBEGIN\n";
    for (size_t i = 0; i < module.imports.size(); ++i) {
        const Import& import = module.imports[i];
        const bool isLast = i + 1 == module.imports.size();
        text += (i == 0 ? "IMPORTS " : "") + import.symbol;
        if (!isLast && module.imports[i + 1].module == import.module)
            text += ", ";
        else
            text += " FROM " + import.module + (isLast ? ";\n" : "\n");
    }
    for (const Assignment& assignment : module.assignments)
        text += assignment.name + " ::= " + typeText(assignment.type) + "\n";
    return text + "END\n";
}
