#include "detail_writer.h"

#include <algorithm>

#include "escaped_text.h"

namespace {

constexpr size_t kMaxListed = 8;
constexpr uint32_t kReplacement = 0xFFFD;

void appendUtf8(std::string& text, uint32_t code) {
    const auto octet = [&](uint32_t value) { text += static_cast<char>(value); };
    const auto tail = [&](unsigned shift) { octet(0x80 | (code >> shift & 0x3F)); };
    if (code < 0x80) {
        octet(code);
    } else if (code < 0x800) {
        octet(0xC0 | code >> 6);
        tail(0);
    } else if (code < 0x10000) {
        octet(0xE0 | code >> 12);
        tail(6);
        tail(0);
    } else {
        octet(0xF0 | code >> 18);
        tail(12);
        tail(6);
        tail(0);
    }
}

bool isHighSurrogate(uint32_t code) {
    return (code & 0xFC00) == 0xD800;
}
bool isLowSurrogate(uint32_t code) {
    return (code & 0xFC00) == 0xDC00;
}

template <class Value>
void add(std::vector<Fact>& facts, std::string_view name, Value value) {
    Fact& fact = facts.emplace_back();
    fact.name = name;
    fact.value = std::move(value);
}

}  // namespace

void DetailWriter::fact(std::string_view name, std::string value) {
    if (!value.empty()) add(details_.facts, name, std::move(value));
}

void DetailWriter::fact(std::string_view name, std::vector<std::string> value) {
    if (!value.empty()) add(details_.facts, name, std::move(value));
}

void DetailWriter::fact(std::string_view name, int64_t value) {
    add(details_.facts, name, value);
}

void DetailWriter::fact(std::string_view name, bool value) {
    add(details_.facts, name, value);
}

void DetailWriter::separate() {
    if (!details_.summary.empty()) details_.summary += ' ';
}

void DetailWriter::say(std::string_view words) {
    if (words.empty()) return;
    separate();
    details_.summary += words;
}

void DetailWriter::sayWire(std::string_view wire) {
    if (wire.empty()) return;
    separate();
    appendEscaped(details_.summary, wire);
}

void DetailWriter::sayParties(std::string_view from, std::string_view to) {
    if (from.empty() && to.empty()) return;
    sayWire(from);
    say("->");
    sayWire(to);
}

void DetailWriter::sayList(const std::vector<std::string>& list) {
    const size_t shown = std::min(list.size(), kMaxListed);
    for (size_t i = 0; i < shown; ++i) {
        if (i > 0) details_.summary += ',';
        sayWire(list[i]);
    }
    if (shown < list.size()) say("and " + std::to_string(list.size() - shown) + " more");
}

void DetailWriter::sayAddress(std::string_view label, std::string_view address) {
    if (address.empty()) return;
    say(label);
    say(address);
}

void readCause(const Q931Message& q931, DetailWriter& writer) {
    if (!q931.cause) return;
    const std::string_view words = causeName(*q931.cause);
    writer.fact("cause", static_cast<int64_t>(*q931.cause));
    writer.fact("causeText", std::string(words));
    writer.sayNumber(*q931.cause);
    writer.say(words);
}

void readQ931Details(const Q931Message& q931, DetailWriter& writer) {
    const std::string calling = textOf(q931.calling);
    const std::string called = textOf(q931.called);
    writer.sayParties(calling, called);
    writer.fact("from", calling);
    writer.fact("to", called);
    writer.fact("calling", calling);
    writer.fact("called", called);
    writer.fact("display", textOf(q931.display));
    readCause(q931, writer);
}

std::string utf8Of(std::span<const uint16_t> characters) {
    std::string text;
    for (size_t i = 0; i < characters.size(); ++i) {
        uint32_t code = characters[i];
        const bool isPair =
            isHighSurrogate(code) && i + 1 < characters.size() && isLowSurrogate(characters[i + 1]);
        if (isPair)
            code = 0x10000 + ((code & 0x3FF) << 10 | (characters[++i] & 0x3FFU));
        else if (isHighSurrogate(code) || isLowSurrogate(code))
            code = kReplacement;
        appendUtf8(text, code);
    }
    return text;
}

std::string textOf(std::span<const uint8_t> octets) {
    return {reinterpret_cast<const char*>(octets.data()), octets.size()};
}
