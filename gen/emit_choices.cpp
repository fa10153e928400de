// The decoders of CHOICE types.

#include "emit_decoders.h"

namespace {

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

/// Reads an alternative. Its status is returned or, inside an open type, assigned to `status`.
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
$status = $index
if (status != kAsnOk) return status;
switch (value.t) {
    $cases
    default:
        $otherwise
}
)",
        {{"status", type.published && type.extensible ? "status" : "const AsnStatus status"},
         {"index", index},
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

/// The same as published: an alternative that is not known is kept.
std::string valueOrUnknown(const Type& type) {
    std::string keep = "value.u.extElem1 = asnKeepAlternative(in, &status);\n";
    if (type.additions.empty()) return keep;
    std::string nulls;
    for (const Member& member : type.additions)
        if (!hasValue(*member.type))
            nulls += "case " + type.cppName + "::" + member.cppName + ":\n";
    return fill(
        R"(
switch (value.t) {
    $cases
    $nulls
    default:
        $keep
}
)",
        {{"cases", joined(valued(type.additions),
                          [&](const Member* member) { return alternative(type, *member, true); })},
         {"nulls", nulls.empty() ? "" : nulls + "    break;\n"},
         {"keep", keep}});
}

std::string checkedAlternatives(const Type& type) {
    return fill(R"(
bool extended = false;
AsnStatus status = asnReadExtensionBit(in, &extended);
if (status != kAsnOk) return status;
if (extended) {
    AsnCursor outer;
    status = asnEnterAnyAlternative(in, &value.t, $roots, outer);
    if (status != kAsnOk) return status;
    $value
    asnLeaveOpenType(in, outer);
    return status;
}
)",
                {{"roots", std::to_string(type.root.size())}, {"value", valueOrUnknown(type)}});
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

}  // namespace

std::string decodeChoice(const Type& type) {
    if (type.published)
        return decoder(type,
                       (type.extensible ? checkedAlternatives(type) : "") + rootAlternatives(type));
    return decoder(type, (type.keepsUnknown ? unknownAlternative(type) : "") +
                             (type.additions.empty() ? "" : extensionAlternatives(type)) +
                             rootAlternatives(type));
}
