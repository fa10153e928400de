#include "details.h"

#include <algorithm>

#include "detail_writer.h"

namespace {

std::string textOf(std::span<const uint8_t> octets) {
    return {reinterpret_cast<const char*>(octets.data()), octets.size()};
}

/// What Q.931 says around a message.
void readQ931(const Q931Message& q931, DetailWriter& writer) {
    const std::string calling = textOf(q931.calling);
    const std::string called = textOf(q931.called);
    writer.fact("from", calling);
    writer.fact("to", called);
    writer.fact("calling", calling);
    writer.fact("called", called);
    writer.fact("display", textOf(q931.display));
    if (!calling.empty() || !called.empty()) {
        writer.sayWire(calling);
        writer.say("->");
        writer.sayWire(called);
    }
    if (q931.cause) {
        const std::string_view words = causeName(*q931.cause);
        writer.number("cause", *q931.cause);
        writer.fact("causeText", std::string(words));
        writer.sayNumber(*q931.cause);
        writer.say(words);
    }
}

}  // namespace

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

void readDetails(const TamselModules& /*modules*/, const CapturedMessage& message,
                 MessageDetails& details) {
    details.clear();
    DetailWriter writer(details);
    if (message.q931 != nullptr) readQ931(*message.q931, writer);
}
