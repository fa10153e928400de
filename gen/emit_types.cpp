// The table of a module's types, for tests and fuzzers that walk all of them.

#include "emit.h"
#include "layout.h"
#include "template.h"

namespace {

std::string row(const Type& type) {
    const Type* const element = type.element;
    return fill(R"(
{"$name",
 sizeof($Type),
 $least,
 $elementSize,
 $elementLeast,
 asnDecodeAny<$Type, Decode$Type>,
 asnPrintAny<$Type, Print$Type>},
)",
                {{"Type", type.cppName},
                 {"name", (type.module->set.space.empty() ? "" : type.module->set.space + "::") +
                              type.cppName},
                 {"least", bitsText(type.least)},
                 {"elementSize", element != nullptr ? "sizeof(" + element->cppName + ")" : "0"},
                 {"elementLeast", element != nullptr ? bitsText(element->least) : "{0, 0}"}});
}

}  // namespace

std::string emitTypes(const Module& module) {
    std::string rows;
    for (const Type* type : module.ordered) rows += row(*type);
    return layOut(fill(R"(
$heading
#include "$stem.h"
#include "asn1per/typetable.h"
$begin

extern const AsnTypeInfo k${stem}Types[] = {
    $rows
};
extern const size_t k${stem}TypeCount = $count;
$end
)",
                       {{"heading", heading(module, "the table of its types")},
                        {"begin", namespaceBegin(module)},
                        {"end", namespaceEnd(module)},
                        {"stem", module.stem},
                        {"rows", rows},
                        {"count", std::to_string(module.ordered.size())}}));
}
