// The decoders of a module, as templates, and their instances.

#include "emit_decoders.h"

#include "layout.h"

namespace {

std::string nesting(const Type& type) {
    if (!type.recursive) return "";
    return R"(const AsnNesting nesting(in.ctx);
if (nesting.tooDeep()) return kAsnTooDeep;
)";
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
inline constexpr AsnCharSet $name = $function($alphabet, $permitted);
)",
                {{"name", alphabet.name},
                 {"function", alphabet.published ? "asnPublishedCharSet" : "asnCharSet"},
                 {"alphabet", std::string(alphabet.alphabet)},
                 {"permitted", literal(alphabet.permitted)}});
}

/// The constant that names the module in a trail, if any type logs.
std::string moduleName(const Module& module) {
    if (module.set.published) return "";
    return fill(R"(
// A decoder that logs a failure names this module and a line: not one of this file, but a number
// of its own, which grows by 10 from type to type, so that trails tell the types apart.
inline constexpr const char* $constant = "$stem";
)",
                {{"constant", moduleConstant(module)}, {"stem", module.stem}});
}

/// A list as published: its count may be in fragments.
std::string decodeListOfAnyLength(const Type& type) {
    Where element = valueIn("value.elem[i]");
    element.reader = "in.element(i)";
    return decoder(type, fill(R"(
asnSetSize(in, $size);
value.n = 0;
AsnStatus form = kAsnFragment;
while (form == kAsnFragment) {
    uint32_t i = value.n;
    form = asnMoreElements(in, value.n, value.elem, $least);
    if (form < 0) return form;
    for (; i < value.n; ++i) {
        asnSetSize(in, $elementSize);
        const AsnStatus status = $readElement;
        if (status != kAsnOk) return status;
    }
}
return kAsnOk;
)",
                              {{"size", type.sizeName},
                               {"least", bitsText(type.element->least)},
                               {"elementSize", sizeToSet(*type.element)},
                               {"readElement", readCall(*type.element, element)}}));
}

std::string instances(const Module& module, const std::string& purpose, std::string reader) {
    reader = "Asn" + reader + (module.set.published ? "PublishedReader" : "Reader");
    return layOut(fill(R"(
$heading
#include "${stem}Decode.h"
$begin

$decoders
$end
)",
                       {{"heading", heading(module, purpose)},
                        {"stem", module.stem},
                        {"begin", namespaceBegin(module)},
                        {"end", namespaceEnd(module)},
                        {"decoders", joined(module.ordered, [&](const Type* type) {
                             return fill("template AsnStatus Decode$Type($reader, $Type&);\n",
                                         {{"Type", type->cppName}, {"reader", reader}});
                         })}}));
}

}  // namespace

std::string readerOf(const Type& type) {
    return type.published ? "AsnPublishedReader<Tracing>" : "AsnReader<Tracing>";
}

std::string moduleConstant(const Module& module) {
    return "k" + module.prefix + "Module";
}

std::vector<const Member*> valued(const std::vector<Member>& members) {
    std::vector<const Member*> all;
    for (const Member& member : members)
        if (hasValue(*member.type)) all.push_back(&member);
    return all;
}

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
                 {"in", unused + readerOf(type) + " in"},
                 {"value", unused + type.cppName + "& value"},
                 {"nesting", nesting(type)},
                 {"body", body}});
}

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

std::string decodeList(const Type& type) {
    if (type.published) return decodeListOfAnyLength(type);
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
$begin

$constant
$sizes
$alphabets
$decoders
$end
)",
        {{"heading", heading(module, "decoders")},
         {"end", namespaceEnd(module)},
         {"begin", namespaceBegin(module)},
         {"constant", moduleName(module)},
         {"stem", module.stem},
         {"sizes", joined(module.sizes, sizeConstant)},
         {"alphabets", joined(module.alphabets, alphabetConstant)},
         {"decoders", joined(module.ordered, [](const Type* type) {
              return "\n" + typeComment(*type) + "\n" + kindRow(type->kind).text.decode(*type);
          })}}));
}

std::string emitPlainReading(const Module& module) {
    return instances(module, "decoders for the silent reader", "Plain");
}

std::string emitTracedReading(const Module& module) {
    return instances(module, "decoders for the tracing reader", "Tracing");
}
