// The header of a module: structures, and the prototypes of decoders and printers.

#include "emit.h"
#include "layout.h"
#include "template.h"

namespace {

/// The member that holds a component, or a pointer to an alternative; none for NULL.
std::string memberLine(const Member& member, bool pointer) {
    if (!hasValue(*member.type)) return "";
    const std::string type = member.type->cppName + (pointer ? "*" : "");
    const std::string comment = member.type->hasFunctions ? "" : "  // " + member.type->notation;
    return type + " " + member.cppName + ";" + comment + "\n";
}

std::string componentLines(const std::vector<Member>& members) {
    std::string lines;
    for (const Member& member : members) lines += memberLine(member, false);
    return lines;
}

std::string uncleared(const Type& type) {
    const std::string& space = type.module->set.space;
    const std::string name = (space.empty() ? "" : space + "::") + type.cppName;
    std::string spans;
    for (const InlineOctets& octets : type.uncleared)
        spans += fill(
            R"(
{offsetof($Type, $member), $size},
)",
            {{"Type", name}, {"member", octets.member}, {"size", std::to_string(octets.size)}});
    if (spans.empty() || !kindRow(type.kind).cppType.empty() || type.target != nullptr) return "";
    return fill(
        R"(
template <>
inline constexpr std::array<AsnSpan, $count> asnUncleared<$Type>{{
    $spans
}};
)",
        {{"count", std::to_string(type.uncleared.size())}, {"Type", name}, {"spans", spans}});
}

std::string declarations(const Type& type) {
    return fill(R"(

$comment
$structure
$uncleared
template <bool Tracing>
[[nodiscard]] AsnStatus Decode$Type($Reader in, $Type& value);
[[nodiscard]] inline AsnStatus Decode$Type(AsnContext& ctx, $Type& value) {
    return $asnRead(ctx, [&value](auto in) { return Decode$Type(in, value); });
}
void Print$Type(AsnDump& dump, const $Type& value);
inline void Print$Type(const char* path, const $Type& value) {
    AsnDump dump(stdout, path);
    Print$Type(dump, value);
}
)",
                {{"comment", typeComment(type)},
                 {"structure", kindRow(type.kind).text.structure(type)},
                 {"uncleared", type.module->set.space.empty() ? uncleared(type) : ""},
                 {"Reader", type.published ? "AsnPublishedReader<Tracing>" : "AsnReader<Tracing>"},
                 {"asnRead", type.published ? "asnRead<AsnRules::published>" : "asnRead"},
                 {"Type", type.cppName}});
}

}  // namespace

std::string aliasStructure(const Type& type) {
    const std::string value(type.target != nullptr ? type.target->cppName
                                                   : kindRow(type.kind).cppType);
    return "using " + type.cppName + " = " + value + ";\n";
}

std::string octetsStructure(const Type& type) {
    return fill(R"(
struct $Type {
    uint32_t numocts;
    uint8_t data[$capacity];
};
)",
                {{"Type", type.cppName}, {"capacity", std::to_string(type.capacity)}});
}

std::string bitsStructure(const Type& type) {
    return fill(R"(
struct $Type {
    uint32_t numbits;
    uint8_t data[$capacity];
};
)",
                {{"Type", type.cppName}, {"capacity", std::to_string(type.capacity)}});
}

std::string sequenceStructure(const Type& type) {
    std::string flags;
    for (const Member* member : allMembers(type))
        if (!member->flag.empty()) flags += "uint32_t " + member->flag + " : 1;\n";
    const std::string word = flags.empty() ? ""
                                           : fill(R"(
struct {
    $flags
} m;
)",
                                                  {{"flags", flags}});
    const std::string additions = componentLines(type.additions);
    const std::string members =
        fill(R"(
$word
$root
$comment
$additions
$unknown
)",
             {{"word", word},
              {"root", componentLines(type.root)},
              {"comment", additions.empty() ? "" : "// extension additions"},
              {"additions", additions},
              {"unknown", !type.keepsUnknown ? ""
                          : type.published   ? "AsnUnknownAdditions extElem1;"
                                             : "AsnOpenType extElem1;"}});
    if (members.empty()) return "struct " + type.cppName + " {};\n";
    return fill(R"(
struct $Type {
    $members
};
)",
                {{"Type", type.cppName}, {"members", members}});
}

std::string choiceStructure(const Type& type) {
    std::string enumerators;
    std::string values;
    for (const Member* member : allMembers(type)) {
        enumerators += member->cppName + " = " + std::to_string(member->tag) + ",\n";
        values += memberLine(*member, !heldInUnion(*member->type));
    }
    if (type.keepsUnknown) {
        enumerators += "extElem1 = " + std::to_string(allMembers(type).size() + 1) + ",\n";
        values += "AsnOpenType* extElem1;\n";
    }
    const std::string alternatives = values.empty() ? ""
                                                    : fill(R"(
union {
    $values
} u;
)",
                                                           {{"values", values}});
    return fill(R"(
struct $Type {
    enum Alternative : uint32_t {
        $enumerators
    };
    uint32_t t;
    $union
};
)",
                {{"Type", type.cppName}, {"enumerators", enumerators}, {"union", alternatives}});
}

std::string listStructure(const Type& type) {
    return fill(R"(
struct $Type {
    uint32_t n;
    $Element* elem;
};
)",
                {{"Type", type.cppName}, {"Element", type.element->cppName}});
}

std::string emitHeader(const Module& module) {
    std::string includes;
    for (const Module* import : module.imports) includes += "#include \"" + import->stem + ".h\"\n";
    std::string forward;
    for (const Type* type : module.forward) forward += "struct " + type->cppName + ";\n";
    if (!forward.empty()) forward = "\n" + forward;
    std::string types;
    for (const Type* type : module.ordered) types += declarations(*type);
    std::string spans;  // of templates that are in no namespace
    if (!module.set.space.empty())
        for (const Type* type : module.ordered) spans += uncleared(*type);
    if (!spans.empty()) spans = "\n" + spans;
    return layOut(fill(R"(
$heading
#pragma once

$includes
#include "asn1per/asn1per.h"
$begin
$forward
$types
$end
$spans
)",
                       {{"heading", heading(module, "value structures, decoders and printers")},
                        {"includes", includes},
                        {"forward", forward},
                        {"begin", namespaceBegin(module)},
                        {"end", namespaceEnd(module)},
                        {"spans", spans},
                        {"types", types}}));
}
