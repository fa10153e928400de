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

/// A decoder; `body` is what it does.
std::string decoder(const Type& type, const std::string& body) {
    const std::string unused = body == "return kAsnOk;\n" ? "[[maybe_unused]] " : "";
    return fill(R"(
template <bool Tracing>
AsnStatus Decode$Type($in, $value) {
    $nesting
    $body
}
)",
                {{"Type", type.cppName},
                 {"in", unused + "AsnReader<Tracing> in"},
                 {"value", unused + type.cppName + "& value"},
                 {"nesting", nesting(type)},
                 {"body", body}});
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
    Where where = valueIn("value." + member.cppName);
    where.reader = "in.component(" + literal(member.dumpName) + ")";
    return where;
}

/// The extension bit and the presence bits.
std::string preamble(const Type& type) {
    const auto flags = std::count_if(type.root.begin(), type.root.end(),
                                     [](const Member& member) { return !member.flag.empty(); });
    const std::string bits = "(in, value.m, " + std::to_string(flags) + ");\n";
    if (!type.extensible) return flags != 0 ? "asnPresenceBits" + bits : "";
    const std::string extended = "const bool extended = ";
    if (flags == 0 && type.additions.empty()) return extended + "asnExtensionBit(in);\n";
    if (flags < 32) return extended + "asnExtensionAndPresenceBits" + bits;
    return extended + "asnExtensionBit(in);\nasnPresenceBits" + bits;
}

/// A component that others follow. `status` is "AsnStatus status" if it is not declared yet.
std::string checkedComponent(const Member& member, const std::string& status) {
    std::string read = fill(R"(
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

/// The function that reads the additions; most messages have none.
std::string additions(const Type& type) {
    size_t index = 0;
    return fill(
        R"(
template <bool Tracing>
AsnStatus ${Type}_additions(AsnReader<Tracing> in, $Type& value) {
    AsnAdditions additions;
    AsnStatus status = asnFirstAddition(in, additions);
    while (status == kAsnOk && !additions.done) {
        switch (additions.index) {
            $cases
            default:
                break;  // an addition that is not known is skipped
        }
        if (status == kAsnOk) status = asnNextAddition(in, additions);
    }
    return status;
}

)",
        {{"Type", type.cppName}, {"cases", joined(type.additions, [&](const Member& member) {
                                      return addition(member, index++);
                                  })}});
}

/// What follows the root components.
std::string sequenceEnd(const Type& type) {
    if (!type.extensible) return "return kAsnOk;\n";
    if (!type.keepsUnknown)
        return "return extended ? " + type.cppName + "_additions(in, value) : kAsnOk;\n";
    return R"(if (extended)
    return pd_OpenTypeExt(in.component("extElem1"), &value.extElem1.data, &value.extElem1.numocts);
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
    const AsnStatus status = pd_ChoiceOpenTypeExt(
        in.alternative("extElem1"), &value.u.extElem1->data, &value.u.extElem1->numocts);
    if (status == kAsnOk) return kAsnOk;
    return asnLogError(in.ctx.errInfo, status, $module, $line);
}
)",
        {{"module", moduleConstant(*type.module)}, {"line", std::to_string(type.trailLine)}});
}

/// Reads an alternative. It is the result, or goes to `status` inside of an open type.
std::string alternative(const Type& type, const Member& member, bool inOpenType) {
    const std::string pointer = heldInUnion(*member.type) ? "" : "value.u." + member.cppName;
    return fill(R"(
case $Type::$name:
    $pointer = asnNewValue<$Value>(in);
    if ($pointer == nullptr) return kAsnNoMemory;
    asnSetSize(in, $size);
    $result $read;
    $break
)",
                {{"Type", type.cppName},
                 {"name", member.cppName},
                 {"pointer", pointer},
                 {"Value", member.type->cppName},
                 {"size", sizeToSet(*member.type)},
                 {"result", inOpenType ? "status =" : "return"},
                 {"read", readCall(*member.type, valueOf(member))},
                 {"break", inOpenType ? "break;" : ""}});
}

std::string rootAlternatives(const Type& type) {
    const std::vector<const Member*> read = valued(type.root);
    const std::string index =
        "asnRootAlternative(in, &value.t, " + std::to_string(type.root.size()) + ");";
    if (read.empty()) return "return " + index + "\n";
    return fill(
        R"(
const AsnStatus status = $index
if (status != kAsnOk) return status;
switch (value.t) {
    $cases
    default:
        $otherwise
}
)",
        {{"index", index},
         {"cases",
          joined(read, [&](const Member* member) { return alternative(type, *member, false); })},
         {"otherwise", read.size() < type.root.size()
                           ? "return kAsnOk;  // NULL"
                           : "return kAsnInvalidChoice;  // there is no other"}});
}

/// Reads the extension alternative that the tag names; nothing if all are NULL.
std::string extensionValues(const Type& type) {
    const std::vector<const Member*> read = valued(type.additions);
    if (read.empty()) return "";
    const bool hasNull = read.size() < type.additions.size();
    return fill(
        R"(
if (status != kAsnOk) return status;
switch (value.t) {
    $cases
    $null
}
)",
        {{"cases",
          joined(read, [&](const Member* member) { return alternative(type, *member, true); })},
         {"null", hasNull ? "default:\n    break;  // NULL\n" : ""}});
}

std::string extensionAlternatives(const Type& type) {
    const std::string values = extensionValues(type);
    return fill(R"(
if (asnExtensionBit(in)) {
    AsnCursor outer;
    $status = asnEnterAlternative(in, &value.t, $roots, $known, outer);
    $values
    if (status == kAsnOk) asnLeaveOpenType(in, outer);
    return status;
}
)",
                {{"status", values.empty() ? "const AsnStatus status" : "AsnStatus status"},
                 {"roots", std::to_string(type.root.size())},
                 {"known", std::to_string(type.additions.size())},
                 {"values", values}});
}

// --- the files ---

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

std::string decodeSimple(const Type& type) {
    return decoder(type, fill(R"(
asnSetSize(in, $size);
return $read;
)",
                              {{"size", kindSizeToSet(type)},
                               {"read", kindReadCall(type, valueIn("value"))}}));
}

std::string decodeOtherName(const Type& type) {
    return decoder(type, fill(R"(
asnSetSize(in, $size);
return $read;
)",
                              {{"size", sizeToSet(*type.target)},
                               {"read", readCall(*type.target, valueIn("value"))}}));
}

std::string decodeSequence(const Type& type) {
    std::vector<const Member*> checked = valued(type.root);
    std::string end = sequenceEnd(type);
    if (!type.extensible && !checked.empty()) {
        end = lastComponent(*checked.back());
        checked.pop_back();
    }
    const bool declaredFirst = !checked.empty() && !checked.front()->flag.empty();
    std::string status = declaredFirst ? "status" : "AsnStatus status";
    return (type.additions.empty() ? "" : additions(type)) +
           decoder(type, fill(R"(
$preamble
$status
$components
$end
)",
                              {{"preamble", preamble(type)},
                               {"status", declaredFirst ? "AsnStatus status = kAsnOk;" : ""},
                               {"components", joined(checked,
                                                     [&](const Member* member) {
                                                         return checkedComponent(
                                                             *member,
                                                             std::exchange(status, "status"));
                                                     })},
                               {"end", end}}));
}

std::string decodeChoice(const Type& type) {
    return decoder(type, (type.keepsUnknown ? unknownAlternative(type) : "") +
                             (type.additions.empty() ? "" : extensionAlternatives(type)) +
                             rootAlternatives(type));
}

std::string decodeList(const Type& type) {
    Where element = valueIn("value.elem[i]");
    element.reader = "in.element(i)";
    return decoder(type, fill(R"(
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
                              {{"size", type.sizeName},
                               {"least", bitsText(type.element->least)},
                               {"Element", type.element->cppName},
                               {"module", moduleConstant(*type.module)},
                               {"line", std::to_string(type.trailLine)},
                               {"elementSize", sizeToSet(*type.element)},
                               {"readElement", readCall(*type.element, element)}}));
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
         {"decoders", joined(module.ordered, [](const Type* type) {
              return "\n" + typeComment(*type) + "\n" + kindRow(type->kind).text.decode(*type);
          })}}));
}

std::string emitPlainReading(const Module& module) {
    return instances(module, "decoders for the silent reader", "AsnPlainReader");
}

std::string emitTracedReading(const Module& module) {
    return instances(module, "decoders for the tracing reader", "AsnTracingReader");
}
