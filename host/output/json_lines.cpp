#include "json_lines.h"

#include <nlohmann/json.hpp>

#include "hex_text.h"
#include "json_dump.h"
#include "json_text.h"
#include "text_format.h"

namespace {

using Json = nlohmann::ordered_json;

/// Text, or null if there is none.
Json textOrNull(const std::string& text) {
    if (text.empty()) return nullptr;
    return text;
}

Json hostOrNull(const Address& host) {
    if (host == Address{}) return nullptr;
    return toString(host);
}

/// The identifier that a call is shown with, or null.
Json identifierOf(const CallNames& call) {
    if (call.isEmpty()) return nullptr;
    return formatHex(call.shown());
}

/// Why there is no dump, or null.
Json reasonOf(const CapturedMessage& message) {
    if (message.outcome == Outcome::kDecoded) return nullptr;
    if (message.outcome == Outcome::kBare) return "without a user-user element";
    return message.reason;
}

void writeLine(Writer& writer, const Json& object) {
    appendJson(writer.text(), object);
    writer.text() += '\n';
    writer.toOutput();
}

}  // namespace

void appendMessage(Json& object, const CapturedMessage& message, const MessageDetails& details) {
    Json facts = Json::object();
    for (const Fact& fact : details.facts)
        std::visit([&](const auto& value) { facts.emplace(fact.name, value); }, fact.value);
    object["frame"] = message.frame();
    object["time"] = dateText(message.time);
    object["from"] = toString(message.flow.source);
    object["to"] = toString(message.flow.destination);
    object["transport"] = toString(message.transport);
    object["family"] = nameOf(message.family);
    object["name"] = message.name;
    object["call"] = identifierOf(message.call);
    object["octets"] = formatHex(message.octets);
    object["decoded"] = message.outcome == Outcome::kDecoded;
    object["reason"] = reasonOf(message);
    object["facts"] = std::move(facts);
}

void appendCall(Json& object, const CallRecord& call) {
    constexpr double kMicroseconds = 1e6;
    object["number"] = call.number;
    object["call"] = identifierOf(call.names);
    object["start"] = dateText(call.start);
    object["end"] = dateText(call.end);
    object["duration"] = static_cast<double>(call.end - call.start) / kMicroseconds;
    object["from"] = textOrNull(call.from);
    object["to"] = textOrNull(call.to);
    object["fromHost"] = hostOrNull(call.fromHost);
    object["toHost"] = hostOrNull(call.toHost);
    object["state"] = toString(call.state);
    object["why"] = textOrNull(call.why);
    object["cause"] = call.cause ? Json(*call.cause) : Json(nullptr);
    object["reason"] = textOrNull(call.reason);
    object["codecs"] = call.codecs;
    object["messages"] = call.messages;
    object["refused"] = call.refused;
    object["losses"] = call.losses;
}

void JsonMessages::message(const CapturedMessage& message, const MessageDetails& details,
                           const CallRecord* /*call*/) {
    Json object;
    appendMessage(object, message, details);
    if (isFull_) {
        Json values = Json::array();
        if (message.outcome == Outcome::kDecoded) appendDump(values, *message.decoder);
        object["dump"] = std::move(values);
    }
    writeLine(writer_, object);
}

void JsonCalls::message(const CapturedMessage& /*message*/, const MessageDetails& /*details*/,
                        const CallRecord* /*call*/) {
}

void JsonCalls::forgotten(const CallRecord& call, const CallBook& /*book*/) {
    Json object;
    appendCall(object, call);
    writeLine(writer_, object);
}

void JsonCalls::end(const CallBook& book) {
    for (const CallRecord& call : book.calls())
        if (call.isShown) forgotten(call, book);
}
