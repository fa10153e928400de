// The printers of a module.

#include "emit.h"
#include "layout.h"
#include "template.h"

namespace {

std::string dumpPresence(const Member& member) {
    if (member.flag.empty()) return "";
    return fill(R"(
asnPrintPresence(dump, "$dumpName", value.m.$flag);
)",
                {{"dumpName", member.dumpName}, {"flag", member.flag}});
}

std::string dumpComponent(const Member& member) {
    if (!hasValue(*member.type)) return "";
    const std::string present = "if (value.m." + member.flag + " != 0) {";
    return fill(R"(
$begin
    const AsnDumpStep step(dump, ".$dumpName");
    $print;
}
)",
                {{"begin", member.flag.empty() ? "{" : present},
                 {"dumpName", member.dumpName},
                 {"print", printCall(*member.type, valueIn("value." + member.cppName))}});
}

std::string dumpAlternative(const Type& type, const Member& member) {
    if (!hasValue(*member.type)) return "";
    return fill(R"(
case $Type::$name: {
    const AsnDumpStep step(dump, ".u@$dumpName");
    $print;
    break;
}
)",
                {{"Type", type.cppName},
                 {"name", member.cppName},
                 {"dumpName", member.dumpName},
                 {"print", printCall(*member.type, valueOf(member))}});
}

std::string dumpUnknownAlternative(const Type& type) {
    if (!type.keepsUnknown) return "";
    return fill(R"(
case $Type::extElem1: {
    const AsnDumpStep step(dump, ".u@extElem1");
    asnPrintOpenType(dump, value.u.extElem1->numocts, value.u.extElem1->data, ".");
    break;
}
)",
                {{"Type", type.cppName}});
}

std::string printer(const Type& type) {
    const std::string body = kindRow(type.kind).text.dump(type);
    const std::string unused = body.empty() ? "[[maybe_unused]] " : "";
    return fill(R"(

$comment
void Print$Type($dump, $value) {
    $body
}
)",
                {{"comment", typeComment(type)},
                 {"Type", type.cppName},
                 {"dump", unused + "AsnDump& dump"},
                 {"value", unused + "const " + type.cppName + "& value"},
                 {"body", body}});
}

}  // namespace

/// Presence lines first, all of them; then the components that are present.
std::string dumpSequence(const Type& type) {
    std::string text;
    for (const Member* member : allMembers(type)) text += dumpPresence(*member);
    for (const Member* member : allMembers(type)) text += dumpComponent(*member);
    if (!type.keepsUnknown) return text;
    if (type.published) return text + "asnPrintUnknownAdditions(dump, value.extElem1);\n";
    return text + R"(const AsnDumpStep step(dump, ".extElem1");
asnPrintOpenType(dump, value.extElem1.numocts, value.extElem1.data, ".");
)";
}

/// As published, the tag of an unknown alternative continues those that are known.
std::string dumpAnyAlternative(const Type& type) {
    return fill(R"(
if (value.t >= $Type::extElem1) {
    const AsnDumpStep step(dump, ".u@extElem1");
    asnPrintOpenType(dump, value.u.extElem1->numocts, value.u.extElem1->data, ".");
}
)",
                {{"Type", type.cppName}});
}

std::string dumpChoice(const Type& type) {
    std::string cases;
    for (const Member* member : allMembers(type)) cases += dumpAlternative(type, *member);
    const bool anyAlternative = type.published && type.keepsUnknown;
    if (!anyAlternative) cases += dumpUnknownAlternative(type);
    if (cases.empty() && !anyAlternative) return "asnPrintTag(dump, value.t);\n";
    if (cases.empty()) return "asnPrintTag(dump, value.t);\n" + dumpAnyAlternative(type);
    return fill(
        R"(
asnPrintTag(dump, value.t);
switch (value.t) {
    $cases
    default:
        $otherwise
}
)",
        {{"cases", cases},
         {"otherwise", anyAlternative ? dumpAnyAlternative(type) : "break;  // only the tag"}});
}

std::string dumpList(const Type& type) {
    return fill(R"(
asnPrintCount(dump, value.n);
for (uint32_t i = 0; i < value.n; ++i) {
    const AsnElementStep step(dump, i);
    $print;
}
)",
                {{"print", printCall(*type.element, valueIn("value.elem[i]"))}});
}

std::string emitPrinters(const Module& module) {
    std::string printers;
    for (const Type* type : module.ordered) printers += printer(*type);
    return layOut(fill(
        R"(
$heading
#include "$stem.h"
$begin
$printers
$end
)",
        {{"heading", heading(module, "printers")},
         {"stem", module.stem},
         {"begin", namespaceBegin(module)},
         {"printers", printers},
         {"end", namespaceEnd(module)}}));
}
