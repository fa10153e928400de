// The names of the alternatives of all CHOICE types of a module, for programs that show them.

#include "emit.h"
#include "layout.h"
#include "template.h"

namespace {

std::string alternativeNames(const Type& type) {
    std::string names;
    for (const Member* member : allMembers(type)) names += literal(member->dumpName) + ",\n";
    const std::string& space = type.module->set.space;
    return fill(R"(

template <>
struct AsnNames<$Type> {
    static constexpr std::string_view all[] = {
        $names
    };
};
)",
                {{"Type", (space.empty() ? "" : space + "::") + type.cppName}, {"names", names}});
}

}  // namespace

std::string emitNames(const Module& module) {
    std::string names;
    for (const Type* type : module.ordered)
        if (type->kind == Kind::choice && type->target == nullptr) names += alternativeNames(*type);
    return layOut(fill(R"(
$heading
#pragma once

#include "$stem.h"
#include "asn1per/names.h"
$names
)",
                       {{"heading", heading(module, "the names of alternatives")},
                        {"stem", module.stem},
                        {"names", names}}));
}
