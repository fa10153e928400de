// The decoders of SEQUENCE types.

#include <algorithm>
#include <utility>

#include "emit_decoders.h"

namespace {

Where component(const Member& member) {
    Where where = valueIn("value." + member.cppName);
    where.reader = "in.component(" + literal(member.dumpName) + ")";
    return where;
}

/// The extension bit and the presence bits as published, with a status that is checked. (As
/// designed, bits that are missing at the end of the data count as 0.)
std::string checkedPreamble(const Type& type, const std::string& flags) {
    const bool hasFlags = flags != "0" || !type.additions.empty();
    if (!hasFlags && !type.extensible) return "";
    const std::string arguments =
        std::string(type.extensible ? ", &extended" : "") + (hasFlags ? ", value.m, " + flags : "");
    return fill(R"(
$extended
AsnStatus status = asnRead$What(in$arguments);
$check
)",
                {{"extended", type.extensible ? "bool extended = false;" : ""},
                 {"What", !hasFlags         ? "ExtensionBit"
                          : type.extensible ? "Preamble"
                                            : "PresenceBits"},
                 {"arguments", arguments},
                 {"check", kCheckStatus}});
}

std::string preamble(const Type& type) {
    const auto flags = std::count_if(type.root.begin(), type.root.end(),
                                     [](const Member& member) { return !member.flag.empty(); });
    if (type.published) return checkedPreamble(type, std::to_string(flags));
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
AsnStatus ${Type}_additions($Reader in, $Type& value) {
    AsnAdditions additions;
    AsnStatus status = asnFirstAddition(in, additions);
    while (status == kAsnOk && !additions.done) {
        switch (additions.index) {
            $cases
            default:
                $unknown
        }
        if (status == kAsnOk) status = asnNextAddition(in, additions);
    }
    return status;
}

)",
        {{"Type", type.cppName},
         {"Reader", readerOf(type)},
         {"cases",
          joined(type.additions, [&](const Member& member) { return addition(member, index++); })},
         {"unknown", type.keepsUnknown
                         ? "status = asnKeepAddition(in, additions, " +
                               std::to_string(type.additions.size()) + ", value.extElem1);\n"
                         : "break;  // an addition that is not known is skipped"}});
}

/// What follows the root components.
std::string sequenceEnd(const Type& type) {
    if (!type.extensible) return "return kAsnOk;\n";
    if (type.published && type.additions.empty())
        return "return extended ? asnKeepAdditions(in, value.extElem1) : kAsnOk;\n";
    if (!type.additions.empty())
        return "return extended ? " + type.cppName + "_additions(in, value) : kAsnOk;\n";
    return R"(if (extended)
    return pd_OpenTypeExt(in.component("extElem1"), &value.extElem1.data, &value.extElem1.numocts);
value.extElem1 = {};
return kAsnOk;
)";
}

}  // namespace

std::string decodeSequence(const Type& type) {
    std::vector<const Member*> checked = valued(type.root);
    std::string end = sequenceEnd(type);
    if (!type.extensible && !checked.empty()) {
        end = lastComponent(*checked.back());
        checked.pop_back();
    }
    const std::string begin = preamble(type);
    const bool isDeclared = begin.find("AsnStatus status") != std::string::npos;
    const bool declaredFirst = !isDeclared && !checked.empty() && !checked.front()->flag.empty();
    std::string status = declaredFirst || isDeclared ? "status" : "AsnStatus status";
    return (type.additions.empty() ? "" : additions(type)) +
           decoder(type, fill(R"(
$preamble
$status
$components
$end
)",
                              {{"preamble", begin},
                               {"status", declaredFirst ? "AsnStatus status = kAsnOk;" : ""},
                               {"components", joined(checked,
                                                     [&](const Member* member) {
                                                         return checkedComponent(
                                                             *member,
                                                             std::exchange(status, "status"));
                                                     })},
                               {"end", end}}));
}
