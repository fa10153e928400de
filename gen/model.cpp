#include "model.h"

#include <algorithm>
#include <list>
#include <map>
#include <set>

#include "exceptions.h"

namespace {

/// Inline octets from this size on are worth a span of their own in the clearing of a record.
constexpr uint64_t kWorthSkipping = 1024;

const std::set<std::string> kCppKeywords = {
    "auto",     "bool",      "break",   "case",     "catch",    "char",      "class",  "concept",
    "const",    "continue",  "default", "delete",   "do",       "double",    "else",   "enum",
    "explicit", "export",    "extern",  "false",    "float",    "for",       "friend", "goto",
    "if",       "inline",    "int",     "long",     "mutable",  "namespace", "new",    "operator",
    "private",  "protected", "public",  "register", "requires", "return",    "short",  "signed",
    "sizeof",   "static",    "struct",  "switch",   "template", "this",      "throw",  "true",
    "try",      "typedef",   "typeid",  "typename", "union",    "unsigned",  "using",  "virtual",
    "void",     "volatile",  "while",   "and",      "or",       "not",       "xor",
};
const std::set<std::string> kReservedMembers = {"m", "t", "u", "n", "elem", "extElem1"};

std::string underscored(std::string name) {
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

std::string cppIdentifier(const std::string& name) {
    const std::string identifier = underscored(name);
    return kCppKeywords.count(identifier) != 0 ? identifier + "_" : identifier;
}

std::string dumpName(const std::string& structure, const std::string& component) {
    for (const NameException& exception : kNameExceptions)
        if (exception.type == structure && exception.component == component)
            return std::string(exception.dumpName);
    return component;
}

bool isString8(Kind kind) {
    return kind >= Kind::numericString && kind <= Kind::generalString;
}

bool takesSize(Kind kind) {
    return isString8(kind) || kind == Kind::bmpString || kind == Kind::octetString ||
           kind == Kind::bitString || kind == Kind::sequenceOf;
}

std::string boundsText(const Bounds& bounds) {
    std::string text = std::to_string(bounds.lower);
    if (bounds.upper != bounds.lower) text += ".." + std::to_string(bounds.upper);
    return text + (bounds.extensible ? ", ..." : "");
}

std::string kindText(const TypeNotation& type) {
    switch (type.kind) {
        case Kind::null:
            return "NULL";
        case Kind::boolean:
            return "BOOLEAN";
        case Kind::integer:
            return "INTEGER";
        case Kind::octetString:
            return "OCTET STRING";
        case Kind::bitString:
            return "BIT STRING";
        case Kind::objectIdentifier:
            return "OBJECT IDENTIFIER";
        case Kind::openType:
            return "open type";
        case Kind::numericString:
            return "NumericString";
        case Kind::printableString:
            return "PrintableString";
        case Kind::visibleString:
            return "VisibleString";
        case Kind::ia5String:
            return "IA5String";
        case Kind::generalString:
            return "GeneralString";
        case Kind::bmpString:
            return "BMPString";
        case Kind::sequence:
            return "SEQUENCE";
        case Kind::choice:
            return "CHOICE";
        case Kind::sequenceOf:
            return "SEQUENCE OF";
        case Kind::reference:
            return type.reference;
    }
    return "";
}

std::string notationText(const TypeNotation& type) {
    if (type.kind == Kind::sequenceOf) {
        const std::string size = type.size ? " SIZE (" + boundsText(*type.size) + ")" : "";
        return "SEQUENCE" + size + " OF " + notationText(*type.element);
    }
    std::string text = kindText(type);
    if (type.range) text += " (" + boundsText(*type.range) + ")";
    if (type.size) text += " (SIZE (" + boundsText(*type.size) + "))";
    if (type.alphabet) text += " (FROM (\"" + *type.alphabet + "\"))";
    return text;
}

/// The C++ type of a value whose type has no structure.
std::string valueType(const TypeNotation& type) {
    switch (type.kind) {
        case Kind::boolean:
            return "uint8_t";
        case Kind::integer:
            return type.range && type.range->upper > INT32_MAX ? "uint32_t" : "int32_t";
        case Kind::octetString:
            return "AsnDynOctStr";
        case Kind::bitString:
            return "AsnDynBitStr";
        case Kind::objectIdentifier:
            return "AsnObjId";
        case Kind::openType:
            return "AsnOpenType";
        case Kind::bmpString:
            return "AsnBMPString";
        default:
            return isString8(type.kind) ? "const char*" : "";
    }
}

/// The smallest n for which `number` is below 2^n.
uint32_t bitCount(uint64_t number) {
    uint32_t n = 0;
    while (number >> n != 0) ++n;
    return n;
}

/// The fewest bits that a whole number of a range takes in either variant.
uint32_t rangeBits(const Bounds& bounds) {
    const uint64_t last = static_cast<uint64_t>(bounds.upper - bounds.lower);
    const uint32_t unaligned = bitCount(last);
    return last >= 65536 ? std::min(unaligned, 10U) : unaligned;
}

uint32_t lengthBits(const std::optional<Bounds>& size) {
    return size && size->upper < 65536 ? rangeBits(*size) : 8;
}

uint32_t characterBits(const Type& type) {
    if (type.kind == Kind::bmpString) return 16;
    if (!type.characterSet.empty()) return 1;  // few characters may be permitted
    return type.kind == Kind::numericString ? 4 : 7;
}

/// The fewest bits of a value; 0 for a type that is still being measured, which is never too much.
class Measure {
  public:
    uint32_t of(const Type& type) {
        const auto [entry, isNew] = known_.try_emplace(&type, 0);
        if (isNew) known_[&type] = measure(type);
        return known_[&type];
    }

  private:
    uint32_t measure(const Type& type) {
        const auto lower = static_cast<uint32_t>(type.size ? type.size->lower : 0);
        switch (type.kind) {
            case Kind::null:
                return 0;
            case Kind::boolean:
                return 1;
            case Kind::integer:
                if (!type.range) return 8;
                return (type.range->extensible ? 1 : 0) + rangeBits(*type.range);
            case Kind::objectIdentifier:
            case Kind::openType:
                return 8;
            case Kind::octetString:
                return lengthBits(type.size) + lower * 8;
            case Kind::bitString:
                return lengthBits(type.size) + lower;
            case Kind::sequenceOf:
                return lengthBits(type.size) + lower * of(*type.element);
            case Kind::reference:
                return of(*type.target);
            case Kind::sequence:
                return sequence(type);
            case Kind::choice:
                return choice(type);
            default:
                return lengthBits(type.size) + lower * characterBits(type);
        }
    }
    uint32_t sequence(const Type& type) {
        uint32_t bits = type.extensible ? 1 : 0;
        for (const Member& member : type.root) bits += member.optional ? 1 : of(*member.type);
        return bits;
    }
    uint32_t choice(const Type& type) {
        uint32_t least =
            type.extensible ? 15 : UINT32_MAX;  // index 7, octet count of an open type 8
        const uint32_t index = bitCount(type.root.size() - 1);
        for (const Member& member : type.root) least = std::min(least, index + of(*member.type));
        return (type.extensible ? 1 : 0) + least;
    }
    std::map<const Type*, uint32_t> known_;
};

/// Builds the types of one module.
class Builder {
  public:
    Builder(const ModuleNotation& notation, Model& model, Errors& errors)
        : notation_(notation), model_(model), errors_(errors) {
        module_.source = notation.file;
        module_.stem = module_.prefix = notation.file.substr(0, notation.file.find('.'));
        for (const ModuleException& exception : kModuleExceptions)
            if (exception.file == module_.stem) {
                module_.prefix = exception.prefix;
                lastTrailLine_ = exception.lastTrailLine;
            }
    }

    /// Declares the named types, so that any type can refer to any other.
    void declare() {
        for (const Assignment& assignment : notation_.assignments) {
            Type& type = model_.types.emplace_back();
            type.kind = assignment.type.kind;
            type.cppName = module_.prefix + underscored(assignment.name);
            if (!named_.emplace(assignment.name, &type).second)
                error(assignment.line, assignment.name, "assigned twice");
        }
    }

    const Type* find(const std::string& name) const {
        const auto found = named_.find(name);
        return found != named_.end() ? found->second : nullptr;
    }

    void import(const std::map<std::string, const Builder*>& builders) {
        for (const Import& import : notation_.imports) {
            const auto from = builders.find(import.module);
            const Type* type = from != builders.end() ? from->second->find(import.symbol) : nullptr;
            if (type == nullptr) {
                error(import.line, import.symbol, "not found in module " + import.module);
                continue;
            }
            imported_[import.symbol] = type;
            foreign_.insert(type);
            const std::string& stem = from->second->module_.stem;
            if (std::count(module_.includes.begin(), module_.includes.end(), stem) == 0)
                module_.includes.push_back(stem);
        }
    }

    void build() {
        for (const Assignment& assignment : notation_.assignments) {
            Type& type = *named_[assignment.name];
            if (!type.path.empty()) continue;  // assigned twice
            fill(type, assignment.type, assignment.name);
            type.hasFunctions = true;
        }
    }

    /// Orders the types, and decides what follows from the order.
    Module finish() {
        for (const Assignment& assignment : notation_.assignments) visit(*named_[assignment.name]);
        std::set<std::string> names;
        int sites = 0;
        for (Type* type : ordered_) {
            if (!names.insert(type->cppName).second)
                error(type->line, type->path, "two types are named " + type->cppName);
            if (type->element != nullptr && !hasMember(*type->element))
                error(type->line, type->path, "a list of NULL is not supported");
            if (logs(*type)) ++sites;
        }
        if (!errors_.lines.empty()) return std::move(module_);  // a circle has no measure
        int trailLine = lastTrailLine_ != 0 ? lastTrailLine_ - 10 * sites : 0;
        for (Type* type : ordered_) {
            type->uncleared = uncleared(*type);
            if (logs(*type)) type->trailLine = trailLine += 10;
            module_.ordered.push_back(type);
        }
        std::sort(module_.sizes.begin(), module_.sizes.end(), [](const Bounds& a, const Bounds& b) {
            return std::pair(a.lower, a.upper) < std::pair(b.lower, b.upper);
        });
        return std::move(module_);
    }

    /// Refuses the module as a whole.
    void refuse(const std::string& text) { error(1, notation_.name, text); }

    /// Whether all that it imports from is among the modules that are finished.
    bool ready(const std::set<std::string>& finished) const {
        return std::all_of(module_.includes.begin(), module_.includes.end(),
                           [&](const std::string& stem) { return finished.count(stem) != 0; });
    }

  private:
    void error(int line, const std::string& path, const std::string& text) {
        errors_.add(notation_.file, line, path, text);
    }

    /// Unknown extensions of a choice and arrays that are not to be had are logged by the decoder.
    static bool logs(const Type& type) {
        return type.kind == Kind::sequenceOf ||
               (type.kind == Kind::choice && type.extensible && type.additions.empty());
    }

    /// The type that a name stands for; where there is none, something to go on with.
    const Type* referred(const TypeNotation& notation, const std::string& path) {
        if (notation.range || notation.size || notation.alphabet)
            error(notation.line, path, "a constraint on a referenced type is not supported");
        if (const Type* const own = find(notation.reference)) return own;
        const auto found = imported_.find(notation.reference);
        if (found != imported_.end()) return found->second;
        error(notation.line, path, "type " + notation.reference + " is not defined");
        return &model_.types.emplace_back();
    }

    /// A type inside another one: its structure, if it needs one, is named after its place.
    const Type* inner(const TypeNotation& notation, const std::string& cppName,
                      const std::string& path) {
        if (notation.kind == Kind::reference) return referred(notation, path);
        Type& type = model_.types.emplace_back();
        type.cppName = cppName;
        fill(type, notation, path);
        const bool sizedOctets = (type.kind == Kind::octetString || type.kind == Kind::bitString) &&
                                 type.size.has_value();
        type.hasFunctions = type.kind == Kind::sequence || type.kind == Kind::choice ||
                            type.kind == Kind::sequenceOf || sizedOctets;
        if (!type.hasFunctions) type.cppName = type.valueType;
        return &type;
    }

    void fill(Type& type, const TypeNotation& notation, const std::string& path) {
        type.kind = notation.kind;
        type.path = path;
        type.line = notation.line;
        type.notation = notationText(notation);
        type.valueType = valueType(notation);
        type.range = notation.range;
        type.size = notation.size;
        if (notation.alphabet) type.characterSet = characterSet(notation);
        type.extensible = notation.extensible;
        check(type, notation);
        if (type.size &&
            std::none_of(module_.sizes.begin(), module_.sizes.end(), [&](const Bounds& known) {
                return known.lower == type.size->lower && known.upper == type.size->upper;
            }))
            module_.sizes.push_back(*type.size);
        switch (type.kind) {
            case Kind::reference:
                type.target = referred(notation, path);
                break;
            case Kind::sequenceOf:
                type.element = inner(*notation.element, type.cppName + "_elem", path + ".elem");
                break;
            case Kind::sequence:
            case Kind::choice:
                members(type, notation);
                break;
            default:
                break;
        }
    }

    std::string characterSet(const TypeNotation& notation) {
        const std::string kind = kindText(notation);
        for (const CharacterSet& set : module_.characterSets)
            if (set.alphabet == kind && set.permitted == *notation.alphabet) return set.name;
        std::string name = "kAlphabet" + std::to_string(module_.characterSets.size() + 1);
        module_.characterSets.push_back({name, kind, *notation.alphabet});
        return name;
    }

    void members(Type& type, const TypeNotation& notation) {
        std::set<std::string> names;
        const auto add = [&](const ComponentNotation& component, bool isAddition) {
            const std::string path = type.path + "." + component.name;
            Member member;
            member.notationName = component.name;
            member.cppName = cppIdentifier(component.name);
            member.dumpName = dumpName(type.cppName, component.name);
            member.optional = type.kind == Kind::sequence && (component.optional || isAddition);
            member.type =
                inner(component.type, type.cppName + "_" + underscored(component.name), path);
            if (kReservedMembers.count(member.cppName) != 0)
                error(component.line, path, "the name is reserved");
            if (!names.insert(member.cppName).second) error(component.line, path, "named twice");
            (isAddition ? type.additions : type.root).push_back(std::move(member));
        };
        for (const ComponentNotation& component : notation.root) add(component, false);
        for (const ComponentNotation& component : notation.additions) add(component, true);
        const auto flags = std::count_if(type.root.begin(), type.root.end(),
                                         [](const Member& member) { return member.optional; });
        const size_t others = std::max<size_t>(type.additions.size(), type.extensible ? 1 : 0);
        if (static_cast<size_t>(flags) + others > 32 && type.kind == Kind::sequence)
            error(type.line, type.path, "more than 32 presence bits are not supported");
        if (type.kind == Kind::choice && type.root.size() > 255)
            error(type.line, type.path, "more than 255 root alternatives are not supported");
        if (type.kind == Kind::choice && type.root.empty())
            error(type.line, type.path, "a CHOICE without root alternatives is not supported");
    }

    void check(const Type& type, const TypeNotation& notation) {
        const auto refuse = [&](const std::string& text) { error(type.line, type.path, text); };
        if (type.range && type.kind == Kind::integer) {
            const bool isUnsigned = type.range->upper > INT32_MAX;
            if (type.range->lower < (isUnsigned ? 0 : INT32_MIN) || type.range->upper > UINT32_MAX)
                refuse("range " + boundsText(*type.range) + " does not fit 32 bits");
            if (isUnsigned && type.range->extensible)
                refuse("an extensible range above 2147483647 is not supported");
        }
        if (type.size) {
            if (!takesSize(type.kind) && type.kind != Kind::reference)
                refuse(kindText(notation) + " has no SIZE");
            if (type.size->extensible) refuse("an extensible SIZE is not supported");
            if (type.size->lower < 0 || type.size->upper > UINT32_MAX)
                refuse("SIZE " + boundsText(*type.size) + " does not fit 32 bits");
        }
        if (notation.alphabet && !isString8(type.kind) && type.kind != Kind::reference)
            refuse(kindText(notation) + " with FROM is not supported");
    }

    /// Depth first, so that a type stands behind those that it uses. A way back to a type that is
    /// being visited is a recursion: fine through a pointer, else the type would hold itself.
    void visit(Type& type) {
        if (foreign_.count(&type) != 0 || !done_.insert(&type).second) return;
        open_.push_back({&type, false});
        for (const Member& member : type.root) follow(type, member.type);
        for (const Member& member : type.additions) follow(type, member.type);
        if (type.element != nullptr) follow(type, type.element);
        if (type.target != nullptr) follow(type, type.target);
        open_.pop_back();
        if (type.hasFunctions && hasMember(type)) ordered_.push_back(&type);
    }

    void follow(const Type& user, const Type* used) {
        open_.back().second = user.kind == Kind::choice || user.kind == Kind::sequenceOf;
        const auto back = std::find_if(open_.begin(), open_.end(),
                                       [&](const auto& entry) { return entry.first == used; });
        Type& type = *const_cast<Type*>(used);
        if (back == open_.end()) {
            visit(type);
        } else if (std::none_of(back, open_.end(),
                                [](const auto& entry) { return entry.second; })) {
            error(type.line, type.path, "the type contains itself");
        } else if (type.kind == Kind::reference) {
            error(type.line, type.path, "recursion through another name is not supported");
        } else if (!type.recursive) {
            type.recursive = true;
            module_.forward.push_back(&type);
        }
    }

    /// The spans of a record that need no clearing, those of inline records included.
    static std::vector<InlineOctets> uncleared(const Type& type) {
        std::vector<InlineOctets> spans;
        const Type& own = actual(type);
        if (inlineCapacity(own) >= kWorthSkipping) spans.push_back({"data", inlineCapacity(own)});

        if (own.kind != Kind::sequence) return spans;
        const auto addMembers = [&](const std::vector<Member>& members) {
            for (const Member& member : members)
                for (InlineOctets& inner : uncleared(*member.type))
                    spans.push_back({member.cppName + "." + inner.member, inner.size});
        };
        addMembers(own.root);
        addMembers(own.additions);
        return spans;
    }

    const ModuleNotation& notation_;
    Model& model_;
    Errors& errors_;
    Module module_;
    int lastTrailLine_ = 0;
    std::map<std::string, Type*> named_;
    std::map<std::string, const Type*> imported_;
    std::set<const Type*> foreign_;  // imported: ordered by their own module
    std::set<const Type*> done_;
    std::vector<std::pair<const Type*, bool>> open_;  // being visited; and whether by pointer
    std::vector<Type*> ordered_;
};

}  // namespace

const Type& actual(const Type& type) {
    return type.target != nullptr ? actual(*type.target) : type;
}

bool heldInline(const Type& type) {
    const Kind kind = actual(type).kind;
    return kind == Kind::integer || isString8(kind);
}

bool hasMember(const Type& type) {
    return actual(type).kind != Kind::null;
}

uint64_t inlineCapacity(const Type& type) {
    if (!type.size) return 0;
    const auto upper = static_cast<uint64_t>(type.size->upper);
    if (type.kind == Kind::octetString) return upper;
    return type.kind == Kind::bitString ? (upper + 7) / 8 : 0;
}

Model resolve(const std::vector<ModuleNotation>& notations, Errors& errors) {
    Model model;
    std::list<Builder> builders;
    std::map<std::string, const Builder*> byName;
    for (const ModuleNotation& notation : notations) {
        Builder& builder = builders.emplace_back(notation, model, errors);
        builder.declare();
        if (!byName.emplace(notation.name, &builder).second)
            builder.refuse("two modules have this name");
    }
    for (Builder& builder : builders) builder.import(byName);
    for (Builder& builder : builders) builder.build();
    if (!errors.lines.empty()) return model;

    std::set<std::string> finished;
    while (!builders.empty()) {
        const auto next =
            std::find_if(builders.begin(), builders.end(),
                         [&](const Builder& builder) { return builder.ready(finished); });
        if (next == builders.end()) {
            builders.front().refuse("modules import from each other in a circle");
            return model;
        }
        model.modules.push_back(next->finish());
        finished.insert(model.modules.back().stem);
        builders.erase(next);
    }
    if (!errors.lines.empty()) return model;  // a circle has no measure
    Measure measure;
    for (Type& type : model.types) type.minBits = measure.of(type);
    return model;
}
