// What all emitters share: lines that are wrapped as a person would.

#include "emit.h"

namespace {
constexpr size_t kColumns = 100;
}

Lines::Lines(const Module& module, const std::string& purpose) {
    text_ = "// Made by tamsel-gen from " + module.source + ": " + purpose + ". Do not edit.\n";
}

void Lines::operator()(int indent, const std::string& line) {
    const std::string margin(static_cast<size_t>(indent) * 4, ' ');
    const size_t cut = line.rfind(", ", kColumns - margin.size() - 2);
    if (margin.size() + line.size() <= kColumns || cut == std::string::npos ||
        line.find("//") < cut) {
        text_ += margin + line + "\n";
        return;
    }
    text_ += margin + line.substr(0, cut + 1) + "\n";
    text_ += margin + "        " + line.substr(cut + 2) + "\n";
}

std::string typeComment(const Module& module, const Type& type) {
    return "// " + type.path + " ::= " + type.notation + " (" + module.source + ":" +
           std::to_string(type.line) + ")";
}
