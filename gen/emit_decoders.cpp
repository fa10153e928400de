// The decoders of a module, as templates, and their instances.

#include <algorithm>
#include <utility>

#include "emit.h"
#include "layout.h"
#include "template.h"

namespace {

/// Calls `text(member)` for each and joins what it returns.
template <class Members, class Text>
std::string joined(const Members& members, Text text) {
    std::string all;
    for (const auto& member : members) all += text(member);
    return all;
}

/// The constant that names the module in a trail.
std::string moduleConstant(const Module& module) {
    return "k" + module.prefix + "Module";
}

std::string nesting(const Type& type) {
    if (!type.recursive) return "";
    return R"(const AsnNesting nesting(in.ctx);
if (nesting.tooDeep()) return kAsnTooDeep;
)";
}

// --- SEQUENCE ---

/// The root components that have something to read.
std::vector<const Member*> valued(const std::vector<Member>& members) {
    std::vector<const Member*> all;
    for (const Member& member : members)
        if (hasValue(*member.type)) all.push_back(&member);
    return all;
}

Where component(const Member& member) {
    return valueIn("value." + member.cppName);
}

std::string presenceBits(const Type& type) {
    const auto flags = std::count_if(type.root.begin(), type.root.end(),
                                     [](const Member& member) { return !member.flag.empty(); });
    if (flags != 0) return "asnPresenceBits(in, value.m, " + std::to_string(flags) + ");";
    return type.additions.empty() ? "" : "value.m = {};";
}

/// A component that others follow. `status` is "AsnStatus status" if it is not declared yet.
std::string checkedComponent(const Member& member, const std::string& status) {
    const std::string read = fill(R"(
asnSetSize(in, $size);
$status = $read;
if (status != kAsnOk) return status;
)",
                                  {{"size", sizeToSet(*member.type)},
                                   {"status", status},
                                   {"read", readCall(*member.type, component(member))}});
    if (member.flag.empty()) return read;
    return fill(R"(
if (value.m.$flag != 0) {
    $read
}
)",
                {{"flag", member.flag}, {"read", read}});
}

/// The last component of a SEQUENCE that is not extensible.
std::string lastComponent(const Member& member) {
    const std::string absent =
        member.flag.empty() ? "" : "if (value.m." + member.flag + " == 0) return kAsnOk;";
    return fill(R"(
$absent
asnSetSize(in, $size);
return $read;
)",
                {{"absent", absent},
                 {"size", sizeToSet(*member.type)},
                 {"read", readCall(*member.type, component(member))}});
}

std::string addition(const Member& member, size_t index) {
    const std::string read = readCall(*member.type, component(member));
    return fill(R"(
case $index:
    value.m.$flag = 1;
    asnSetSize(in, $size);
    $read
    break;
)",
                {{"index", std::to_string(index)},
                 {"flag", member.flag},
                 {"size", sizeToSet(*member.type)},
                 {"read", read.empty() ? "" : "status = " + read + ";"}});
}

std::string additions(const Type& type, const std::string& status) {
    size_t index = 0;
    return fill(R"(
if (!extended) return kAsnOk;
AsnAdditions additions;
$status = asnFirstAddition(in, additions);
while (status == kAsnOk && !additions.done) {
    switch (additions.index) {
        $cases
        default:
            break;  // an addition that is not known is skipped
    }
    if (status == kAsnOk) status = asnNextAddition(in, additions);
}
return status;
)",
                {{"status", status}, {"cases", joined(type.additions, [&](const Member& member) {
                                          return addition(member, index++);
                                      })}});
}

/// What follows the root components.
std::string sequenceEnd(const Type& type, const std::string& status) {
    if (!type.extensible) return "return kAsnOk;\n";
    if (!type.keepsUnknown) return additions(type, status);
    return R"(if (extended) return pd_OpenTypeExt(in, &value.extElem1.data, &value.extElem1.numocts);
value.extElem1 = {};
return kAsnOk;
)";
}

// --- CHOICE ---

std::string unknownAlternative(const Type& type) {
    return fill(
        R"(
if (asnExtensionBit(in)) {
    value.u.extElem1 = asnNewValue<AsnOpenType>(in);
    if (value.u.extElem1 == nullptr) return kAsnNoMemory;
    const AsnStatus status =
        pd_ChoiceOpenTypeExt(in, &value.u.extElem1->data, &value.u.extElem1->numocts);
    if (status == kAsnOk) return kAsnOk;
    return asnLogError(in.ctx.errInfo, status, $module, $line);
}
)",
        {{"module", moduleConstant(*type.module)}, {"line", std::to_string(type.trailLine)}});
}

std::string alternative(const Type& type, const Member& member) {
    const std::string pointer = heldInUnion(*member.type) ? "" : "value.u." + member.cppName;
    return fill(R"(
case $Type::$name:
    $pointer = asnNewValue<$Value>(in);
    if ($pointer == nullptr) return kAsnNoMemory;
    asnSetSize(in, $size);
    status = $read;
    break;
)",
                {{"Type", type.cppName},
                 {"name", member.cppName},
                 {"pointer", pointer},
                 {"Value", member.type->cppName},
                 {"size", sizeToSet(*member.type)},
                 {"read", readCall(*member.type, valueOf(member))}});
}

/// Reads the alternative that the tag names; nothing if all are NULL.
std::string alternatives(const Type& type) {
    std::string cases;
    bool hasNull = false;
    for (const Member* member : allMembers(type)) {
        if (hasValue(*member->type))
            cases += alternative(type, *member);
        else
            hasNull = true;
    }
    if (cases.empty()) return "";
    return fill(R"(
if (status != kAsnOk) return status;
switch (value.t) {
    $cases
    $null
}
)",
                {{"cases", cases}, {"null", hasNull ? "default:\n    break;  // NULL\n" : ""}});
}

/// A CHOICE that knows extension alternatives.
std::string extensibleChoice(const Type& type) {
    return fill(R"(
$nesting
AsnCursor outer;
const bool extended = asnExtensionBit(in);
AsnStatus status = extended ? asnEnterAlternative(in, &value.t, $roots, $known, outer)
                            : asnRootAlternative(in, &value.t, $roots);
$alternatives
if (extended && status == kAsnOk) asnLeaveOpenType(in, outer);
return status;
)",
                {{"nesting", nesting(type)},
                 {"roots", std::to_string(type.root.size())},
                 {"known", std::to_string(type.additions.size())},
                 {"alternatives", alternatives(type)}});
}

// --- the files ---

std::string decoder(const Type& type) {
    const std::string body = kindRow(type.kind).text.decode(type);
    const std::string unused = body == "return kAsnOk;\n" ? "[[maybe_unused]] " : "";
    return fill(R"(

$comment
template <bool Tracing>
AsnStatus Decode$Type($in, $value) {
    $body
}
)",
                {{"comment", typeComment(type)},
                 {"Type", type.cppName},
                 {"in", unused + "AsnReader<Tracing> in"},
                 {"value", unused + type.cppName + "& value"},
                 {"body", body}});
}

std::string sizeConstant(const SizeConstant& size) {
    return fill(R"(
inline constexpr AsnSizeConstraint $name{0, $lower, $upper, nullptr};
)",
                {{"name", size.name},
                 {"lower", std::to_string(size.lower)},
                 {"upper", std::to_string(size.upper)}});
}

std::string alphabetConstant(const AlphabetConstant& alphabet) {
    return fill(R"(
inline constexpr AsnCharSet $name = asnCharSet($alphabet, $permitted);
)",
                {{"name", alphabet.name},
                 {"alphabet", std::string(alphabet.alphabet)},
                 {"permitted", literal(alphabet.permitted)}});
}

std::string instances(const Module& module, const std::string& purpose, const std::string& reader) {
    return layOut(fill(R"(
$heading
#include "${stem}Decode.h"

$decoders
)",
                       {{"heading", heading(module, purpose)},
                        {"stem", module.stem},
                        {"decoders", joined(module.ordered, [&](const Type* type) {
                             return fill("template AsnStatus Decode$Type($reader, $Type&);\n",
                                         {{"Type", type->cppName}, {"reader", reader}});
                         })}}));
}

}  // namespace

std::string decodeSequence(const Type& type) {
    std::vector<const Member*> checked = valued(type.root);
    std::string last;
    if (!type.extensible && !checked.empty()) {
        last = lastComponent(*checked.back());
        checked.pop_back();
    }
    const bool declaredFirst = !checked.empty() && !checked.front()->flag.empty();
    std::string status = declaredFirst ? "status" : "AsnStatus status";
    const std::string components = joined(checked, [&](const Member* member) {
        return checkedComponent(*member, std::exchange(status, "status"));
    });
    return fill(R"(
$nesting
$extended
$presence
$status
$components
$end
)",
                {{"nesting", nesting(type)},
                 {"extended", type.extensible ? "const bool extended = asnExtensionBit(in);" : ""},
                 {"presence", presenceBits(type)},
                 {"status", declaredFirst ? "AsnStatus status = kAsnOk;" : ""},
                 {"components", components},
                 {"end", last.empty() ? sequenceEnd(type, status) : last}});
}

std::string decodeChoice(const Type& type) {
    if (!type.additions.empty()) return extensibleChoice(type);
    const std::string decode = alternatives(type);
    const std::string root =
        "asnRootAlternative(in, &value.t, " + std::to_string(type.root.size()) + ")";
    return fill(R"(
$nesting
$unknown
$root;
$alternatives
$end
)",
                {{"nesting", nesting(type)},
                 {"unknown", type.keepsUnknown ? unknownAlternative(type) : ""},
                 {"root", (decode.empty() ? "return " : "AsnStatus status = ") + root},
                 {"alternatives", decode},
                 {"end", decode.empty() ? "" : "return status;"}});
}

std::string decodeList(const Type& type) {
    return fill(R"(
$nesting
asnSetSize(in, $size);
AsnStatus status = asnListLength(in, &value.n, $least);
if (status != kAsnOk) return status;
value.elem = asnNewElements<$Element>(in, value.n);
if (value.elem == nullptr) return asnLogError(in.ctx.errInfo, kAsnNoMemory, $module, $line);
for (uint32_t i = 0; i < value.n; ++i) {
    asnSetSize(in, $elementSize);
    status = $readElement;
    if (status != kAsnOk) return status;
}
return kAsnOk;
)",
                {{"nesting", nesting(type)},
                 {"size", type.sizeName},
                 {"least", bitsText(type.element->least)},
                 {"Element", type.element->cppName},
                 {"module", moduleConstant(*type.module)},
                 {"line", std::to_string(type.trailLine)},
                 {"elementSize", sizeToSet(*type.element)},
                 {"readElement", readCall(*type.element, valueIn("value.elem[i]"))}});
}

std::string emitDecoders(const Module& module) {
    return layOut(fill(
        R"(
$heading
#pragma once

#include "$stem.h"

// A decoder that logs a failure names this module and a line: not one of this file, but a number
// of its own, which grows by 10 from type to type, so that trails tell the types apart.
inline constexpr const char* $constant = "$stem";
$sizes
$alphabets
$decoders
)",
        {{"heading", heading(module, "decoders")},
         {"constant", moduleConstant(module)},
         {"stem", module.stem},
         {"sizes", joined(module.sizes, sizeConstant)},
         {"alphabets", joined(module.alphabets, alphabetConstant)},
         {"decoders", joined(module.ordered, [](const Type* type) { return decoder(*type); })}}));
}

std::string emitPlainReading(const Module& module) {
    return instances(module, "decoders for the silent reader", "AsnPlainReader");
}

std::string emitTracedReading(const Module& module) {
    return instances(module, "decoders for the tracing reader", "AsnTracingReader");
}
