// Details of H.225.0 call signalling.

#include "detail_values.h"
#include "message_body.h"

namespace {

/// Reads the calling and the called party: the digits of Q.931, or else the first alias.
template <class Body>
void readParties(const Body& body, const Q931Message* q931, DetailWriter& writer) {
    const std::string calling = q931 != nullptr ? textOf(q931->calling) : "";
    const std::string called = q931 != nullptr ? textOf(q931->called) : "";
    std::string from = calling;
    std::string to = called;
    if constexpr (requires { body.sourceAddress; })
        if (from.empty()) from = firstAlias(body.sourceAddress);
    if constexpr (requires { body.destinationAddress; })
        if (to.empty()) to = firstAlias(body.destinationAddress);
    writer.sayParties(from, to);
    writer.fact("from", std::move(from));
    writer.fact("to", std::move(to));
    writer.fact("calling", calling);
    writer.fact("called", called);
    if constexpr (requires { body.sourceAddress; })
        writer.fact("sourceAliases", aliasTexts(body.sourceAddress));
    if constexpr (requires { body.destinationAddress; })
        writer.fact("destinationAliases", aliasTexts(body.destinationAddress));
}

template <class Body>
void readUiBody(const Body& body, const Q931Message* q931, DetailWriter& writer) {
    readParties(body, q931, writer);
    if (q931 != nullptr) {
        writer.fact("display", textOf(q931->display));
        readCause(*q931, writer);
    }
    if constexpr (requires { body.reason; }) {
        // The cause of Q.931 says more than the reason. The reason follows it unless it is
        // undefined.
        const bool hasCause = q931 != nullptr && q931->cause;
        const std::string reason = chosenText(body.reason);
        if (!hasCause)
            writer.say(reason);
        else if (!reason.empty() && reason != "undefinedReason")
            writer.say("(" + reason + ")");
        writer.fact("reason", reason);
    }
    if constexpr (requires { body.alternativeAddress; }) {
        const std::string address = addressText(body.alternativeAddress);
        writer.sayAddress("to", address);
        writer.fact("alternativeAddress", address);
    }
    if constexpr (requires { body.alternativeAliasAddress; }) {
        const auto aliases = aliasTexts(body.alternativeAliasAddress);
        writer.sayList(aliases);
        writer.fact("alternativeAliases", aliases);
    }
    if constexpr (requires { body.connectedAddress; })
        writer.fact("connectedAliases", aliasTexts(body.connectedAddress));
    if constexpr (requires { body.fastStart; })
        if (body.fastStart.n > 0) {
            writer.say("fastStart");
            writer.sayNumber(body.fastStart.n);
            writer.fact("fastStart", static_cast<int64_t>(body.fastStart.n));
        }
    if constexpr (requires { body.h245Address; }) {
        const std::string address = addressText(body.h245Address);
        writer.sayAddress("h245", address);
        writer.fact("h245Address", address);
    }
}

template <class Ui>
void readUi(const Ui& message, const Q931Message* q931, DetailWriter& writer) {
    bool isRead = false;
    visitUi(message, [&](const auto& body) {
        readUiBody(body, q931, writer);
        isRead = true;
    });
    if (!isRead && q931 != nullptr) readQ931Details(*q931, writer);
}

}  // namespace

void readUiDetails(const TamselModules& modules, const TamselDecoder& decoder,
                   const Q931Message* q931, DetailWriter& writer) {
    if (&modules == &kTamsel2009)
        readUi(decoder.value<asn2009::H225H323_UserInformation>(), q931, writer);
    else
        readUi(decoder.value<H225H323_UserInformation>(), q931, writer);
}
