#include "emit.h"

#include <algorithm>

#include "template.h"

namespace {

/// A call of the table of kinds.
std::string fillCall(std::string_view call, const Type& type, const Where& where) {
    const Bounds range = type.range.value_or(Bounds());
    const std::string full =
        std::string(kindRow(type.kind).alphabetName) + (type.published ? "PublishedSet" : "Set");
    return fill(call, {{"in", where.reader},
                       {"value", where.value},
                       {"address", where.address},
                       {"record", where.record},
                       {"lower", std::to_string(range.lower)},
                       {"upper", std::to_string(range.upper)},
                       {"size", type.sizeName},
                       {"permitted", type.alphabetName.empty() ? full : type.alphabetName}});
}

}  // namespace

Where valueIn(const std::string& name) {
    return {.value = name, .address = "&" + name, .record = name + "."};
}

Where valueAt(const std::string& pointer) {
    return {.value = "*" + pointer, .address = pointer, .record = pointer + "->"};
}

Where valueOf(const Member& alternative) {
    const std::string name = "value.u." + alternative.cppName;
    Where where = heldInUnion(*alternative.type) ? valueIn(name) : valueAt(name);
    where.reader = "in.alternative(" + literal(alternative.dumpName) + ")";
    return where;
}

std::string kindReadCall(const Type& type, const Where& where) {
    return fillCall(kindRow(type.kind).read, type, where);
}

std::string readCall(const Type& type, const Where& where) {
    if (!hasValue(type)) return "";
    if (type.hasFunctions)
        return "Decode" + type.cppName + "(" + where.reader + ", " + where.value + ")";
    return kindReadCall(type, where);
}

std::string printCall(const Type& type, const Where& where) {
    if (type.hasFunctions) return "Print" + type.cppName + "(dump, " + where.value + ")";
    return fillCall(kindRow(type.kind).print, type, where);
}

std::string dumpSimple(const Type& type) {
    return fillCall(kindRow(type.kind).print, type, valueIn("value")) + ";\n";
}

std::string dumpOtherName(const Type& type) {
    return printCall(*type.target, valueIn("value")) + ";\n";
}

std::string kindSizeToSet(const Type& type) {
    const bool reads = kindRow(type.kind).read.find("$size") != std::string_view::npos;
    return reads ? "" : type.sizeName;
}

std::string sizeToSet(const Type& type) {
    return type.hasFunctions ? "" : kindSizeToSet(type);
}

std::string bitsText(LeastBits bits) {
    const auto text = [](uint64_t n) { return std::to_string(std::min<uint64_t>(n, UINT32_MAX)); };
    return "{" + text(bits.aligned) + ", " + text(bits.unaligned) + "}";
}

std::string typeComment(const Type& type) {
    return "// " + type.path + " ::= " + type.notation + " (" + type.module->source + ":" +
           std::to_string(type.line) + ")";
}

std::string heading(const Module& module, const std::string& purpose) {
    return "// Made by tamsel-gen from " + module.source + ": " + purpose + ". Do not edit.\n";
}

std::string namespaceBegin(const Module& module) {
    return module.set.space.empty() ? "" : "\nnamespace " + module.set.space + " {\n";
}

std::string namespaceEnd(const Module& module) {
    return module.set.space.empty() ? "" : "\n}  // namespace " + module.set.space + "\n";
}

std::string literal(const std::string& text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') quoted += '\\';
        quoted += c;
    }
    return quoted + "\"";
}
