#include "details.h"

#include <algorithm>

#include "detail_writer.h"

const Fact* MessageDetails::find(std::string_view name) const {
    const auto found = std::find_if(facts.begin(), facts.end(),
                                    [&](const Fact& fact) { return fact.name == name; });
    return found != facts.end() ? &*found : nullptr;
}

std::string_view MessageDetails::text(std::string_view name) const {
    const Fact* const fact = find(name);
    const auto* const text = fact != nullptr ? std::get_if<std::string>(&fact->value) : nullptr;
    return text != nullptr ? std::string_view(*text) : std::string_view();
}

const int64_t* MessageDetails::number(std::string_view name) const {
    const Fact* const fact = find(name);
    return fact != nullptr ? std::get_if<int64_t>(&fact->value) : nullptr;
}

const std::vector<std::string>* MessageDetails::list(std::string_view name) const {
    const Fact* const fact = find(name);
    return fact != nullptr ? std::get_if<std::vector<std::string>>(&fact->value) : nullptr;
}

void MessageDetails::clear() {
    summary.clear();
    facts.clear();
}

void readDetails(const TamselModules& modules, const CapturedMessage& message,
                 MessageDetails& details) {
    details.clear();
    DetailWriter writer(details);
    if (message.outcome != Outcome::kDecoded) {
        if (message.q931 != nullptr) readQ931Details(*message.q931, writer);
    } else if (message.family == FamilyId::kRas) {
        readRasDetails(modules, *message.decoder, writer);
    } else if (message.family == FamilyId::kUi) {
        readUiDetails(modules, *message.decoder, message.q931, writer);
    } else {
        readH245Details(modules, *message.decoder, writer);
    }
}
