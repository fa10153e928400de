#include "model.h"

#include <algorithm>
#include <list>
#include <map>
#include <set>

#include "names.h"
#include "order.h"
#include "sizes.h"

namespace {

/// The flags of a SEQUENCE are one word, or two. Those of the root are read as one.
constexpr size_t kMostFlags = 64;
constexpr size_t kMostRootFlags = 32;

/// Builds the types of one module.
class Builder {
  public:
    Builder(const ModuleNotation& notation, const ModuleSet& set, Model& model, Errors& errors)
        : notation_(notation),
          model_(model),
          errors_(errors),
          module_(model.modules.emplace_back()) {
        module_.set = set;
        module_.source = notation.file;
        module_.name = notation.name;
        module_.stem = fileStem(notation.file);
        module_.prefix = modulePrefix(module_.stem);
    }

    /// Declares the named types, so that any type can refer to any other.
    void declare() {
        for (const Assignment& assignment : notation_.assignments) {
            Type& type = newType(assignment.type, typeName(module_.prefix, assignment.name));
            if (!named_.emplace(assignment.name, &type).second)
                error(assignment.line, assignment.name, "assigned twice");
            module_.named.push_back(&type);
        }
    }

    void import(const std::map<std::string, const Builder*>& builders) {
        for (const Import& import : notation_.imports) {
            const auto from = builders.find(import.module);
            Type* const type = from != builders.end() ? from->second->find(import.symbol) : nullptr;
            if (type == nullptr || type->module != &from->second->module_) {
                error(import.line, import.symbol, "not found in module " + import.module);
                continue;
            }
            if (!named_.emplace(import.symbol, type).second)
                error(import.line, import.symbol, "imported, and assigned or imported elsewhere");
            const Module* const module = &from->second->module_;
            if (std::count(module_.imports.begin(), module_.imports.end(), module) == 0)
                module_.imports.push_back(module);
        }
    }

    void build() {
        for (size_t i = 0; i < notation_.assignments.size(); ++i) {
            const Assignment& assignment = notation_.assignments[i];
            module_.named[i]->hasFunctions = true;
            fill(*module_.named[i], assignment.type, assignment.name);
        }
        std::sort(module_.sizes.begin(), module_.sizes.end(),
                  [](const SizeConstant& a, const SizeConstant& b) {
                      return std::pair(a.lower, a.upper) < std::pair(b.lower, b.upper);
                  });
    }

  private:
    Type* find(const std::string& name) const {
        const auto found = named_.find(name);
        return found != named_.end() ? found->second : nullptr;
    }

    void error(int line, const std::string& path, const std::string& text) {
        errors_.add(notation_.file, line, path, text);
    }

    Type& newType(const TypeNotation& notation, const std::string& cppName) {
        Type& type = model_.types.emplace_back();
        type.kind = exactKind(notation, module_.set.published);
        type.cppName = cppName;
        type.module = &module_;
        return type;
    }

    /// The type that a name refers to; if there is none, a substitute, so that work continues.
    Type* referred(const TypeNotation& notation, const std::string& path) {
        if (notation.range || notation.size || notation.alphabet)
            error(notation.line, path, "a constraint on a referenced type is not supported");
        if (Type* const type = find(notation.reference)) return type;
        error(notation.line, path, "type " + notation.reference + " is not defined");
        return &model_.types.emplace_back();
    }

    /// A type inside another one: its structure, if it needs one, is named after its place.
    Type* inner(const TypeNotation& notation, const std::string& cppName, const std::string& path) {
        if (notation.kind == Kind::reference) return referred(notation, path);
        Type& type = newType(notation, cppName);
        const KindRow& row = kindRow(type.kind);
        type.hasFunctions = row.hasValue && row.cppType.empty();
        if (!type.hasFunctions) type.cppName = row.cppType;
        fill(type, notation, path);
        return &type;
    }

    void fill(Type& type, const TypeNotation& notation, const std::string& path) {
        const KindRow& row = kindRow(type.kind);
        type.path = path;
        type.line = notation.line;
        type.notation = notationText(notation);
        type.range = notation.range;
        type.size = notation.size;
        type.extensible = notation.extensible;
        type.published = module_.set.published;
        type.keepsUnknown =
            row.keepsUnknown && type.extensible && (type.published || notation.additions.empty());
        if (notation.kind == Kind::reference) {
            type.target = referred(notation, path);
            return;
        }
        checkConstraints(type.kind, notation,
                         [&](const std::string& text) { error(type.line, path, text); });
        if (type.size) type.sizeName = sizeConstant(*type.size);
        if (type.size && row.octetsInline != nullptr)
            type.capacity = static_cast<uint32_t>(row.octetsInline(type.size->upper));
        if (row.alphabet != nullptr) characters(type, row, notation);
        if (notation.element != nullptr)
            type.element =
                inner(*notation.element, innerTypeName(type.cppName, "elem"), path + ".elem");
        if (row.takesMembers) members(type, notation);
    }

    const std::string& sizeConstant(const Bounds& size) {
        for (const SizeConstant& known : module_.sizes)
            if (known.lower == size.lower && known.upper == size.upper) return known.name;
        std::string name = "k" + module_.prefix + "Size" + std::to_string(size.lower);
        if (size.upper != size.lower) name += "To" + std::to_string(size.upper);
        module_.sizes.push_back({name, size.lower, size.upper});
        return module_.sizes.back().name;
    }

    void characters(Type& type, const KindRow& row, const TypeNotation& notation) {
        const char* const permitted = notation.alphabet ? notation.alphabet->c_str() : nullptr;
        const AsnCharSet set = type.published ? asnPublishedCharSet(*row.alphabet, permitted)
                                              : asnCharSet(*row.alphabet, permitted);
        if (type.published && set.unalignedBits == 0)
            error(type.line, type.path, "an alphabet of one character is not supported");
        type.characterBits = {set.alignedBits, set.unalignedBits};
        if (notation.alphabet) type.alphabetName = alphabetConstant(row, *notation.alphabet);
    }

    const std::string& alphabetConstant(const KindRow& row, const std::string& permitted) {
        for (const AlphabetConstant& known : module_.alphabets)
            if (known.alphabet == row.alphabetName && known.permitted == permitted)
                return known.name;
        const std::string number = std::to_string(module_.alphabets.size() + 1);
        module_.alphabets.push_back({"k" + module_.prefix + "Alphabet" + number, row.alphabetName,
                                     permitted, module_.set.published});
        return module_.alphabets.back().name;
    }

    void members(Type& type, const TypeNotation& notation) {
        std::set<std::string> names;
        for (const ComponentNotation& component : notation.root)
            type.root.push_back(member(type, component, component.optional, names));
        const bool flagged = type.kind == Kind::sequence;
        for (const ComponentNotation& component : notation.additions)
            type.additions.push_back(member(type, component, flagged, names));
        const auto all = allMembers(type);
        const auto flags = std::count_if(
            all.begin(), all.end(), [](const Member* member) { return !member->flag.empty(); });
        const auto rootFlags =
            std::count_if(type.root.begin(), type.root.end(),
                          [](const Member& member) { return !member.flag.empty(); });
        if (static_cast<size_t>(flags) > kMostFlags)
            error(type.line, type.path, "more than 64 presence bits are not supported");
        if (static_cast<size_t>(rootFlags) > kMostRootFlags)
            error(type.line, type.path, "more than 32 optional root components are not supported");
        if (type.kind == Kind::choice && type.root.empty())
            error(type.line, type.path, "a CHOICE without root alternatives is not supported");
    }

    Member member(const Type& type, const ComponentNotation& component, bool hasFlag,
                  std::set<std::string>& names) {
        Member member;
        member.path = type.path + "." + component.name;
        member.cppName = memberName(component.name);
        member.dumpName = component.name;
        member.tag = static_cast<uint32_t>(names.size() + 1);
        if (hasFlag) member.flag = member.cppName + "Present";
        member.type =
            inner(component.type, innerTypeName(type.cppName, component.name), member.path);
        if (isSharedMember(member.cppName))
            error(component.line, member.path, "the name is reserved");
        if (!names.insert(member.cppName).second) error(component.line, member.path, "named twice");
        return member;
    }

    const ModuleNotation& notation_;
    Model& model_;
    Errors& errors_;
    Module& module_;
    std::map<std::string, Type*> named_;  // assigned or imported
};

}  // namespace

const Type& actual(const Type& type) {
    return type.target != nullptr ? actual(*type.target) : type;
}

bool hasValue(const Type& type) {
    return kindRow(actual(type).kind).hasValue;
}

bool heldInUnion(const Type& type) {
    return kindRow(actual(type).kind).inUnion;
}

std::vector<const Member*> allMembers(const Type& type) {
    std::vector<const Member*> all;
    for (const auto* members : {&type.root, &type.additions})
        for (const Member& member : *members) all.push_back(&member);
    return all;
}

Model resolve(const std::vector<ModuleNotation>& notations, const ModuleSet& set, Errors& errors) {
    Model model;
    for (const ModuleNotation& notation : notations)
        if (!notation.headerRead) return model;
    std::list<Builder> builders;
    std::map<std::string, const Builder*> byName;
    for (const ModuleNotation& notation : notations)
        byName.emplace(notation.name, &builders.emplace_back(notation, set, model, errors));
    checkModuleNames(model, errors);
    for (Builder& builder : builders) builder.declare();
    for (Builder& builder : builders) builder.import(byName);
    for (Builder& builder : builders) builder.build();
    if (!errors.lines.empty()) return model;

    checkOtherNames(model, errors);
    checkImportOrder(model, errors);
    for (Module& module : model.modules) orderTypes(module, errors);
    checkTypeNames(model, errors);
    if (!errors.lines.empty()) return model;

    measure(model, errors);
    for (Module& module : model.modules) {
        for (Type* type : module.ordered) type->uncleared = unclearedSpans(*type);
        applyNameExceptions(module, errors);
        numberTrailLines(module, errors);
    }
    return model;
}
