// Details of H.225.0 RAS.

#include "detail_values.h"
#include "message_body.h"

namespace {

/// A BandWidth counts in 100 bit/s.
constexpr int64_t kBandwidthUnit = 100;

void readBandwidth(int64_t bandwidth, DetailWriter& writer) {
    const int64_t bits = bandwidth * kBandwidthUnit;
    writer.fact("bandwidth", bits);
    writer.say(bits % 1000 == 0 ? std::to_string(bits / 1000) + " kbit/s"
                                : std::to_string(bits) + " bit/s");
}

template <class Aliases>
void readAliases(const Aliases& aliases, DetailWriter& writer) {
    const auto texts = aliasTexts(aliases);
    writer.sayList(texts);
    writer.fact("aliases", texts);
}

template <class Address>
void readAddress(std::string_view label, std::string_view name, const Address& address,
                 DetailWriter& writer) {
    if constexpr (requires { address.elem; }) {
        if (address.n > 0) readAddress(label, name, address.elem[0], writer);
    } else {
        const std::string text = addressText(address);
        writer.sayAddress(label, text);
        writer.fact(name, text);
    }
}

/// Who calls whom, of the requests that tell.
template <class Body>
void readParties(const Body& body, DetailWriter& writer) {
    std::string from;
    std::string to;
    if constexpr (requires { body.srcInfo; }) from = firstAlias(body.srcInfo);
    if constexpr (requires { body.sourceInfo; }) from = firstAlias(body.sourceInfo);
    to = firstAlias(body.destinationInfo);
    writer.sayParties(from, to);
    writer.fact("from", std::move(from));
    writer.fact("to", std::move(to));
    if constexpr (requires { body.answerCall; })
        if (body.answerCall != 0) {
            writer.say("answer");
            writer.fact("answerCall", true);
        }
}

/// Reads what a body has of what is worth a word.
template <class Body>
void readRasBody(const Body& body, DetailWriter& writer) {
    if constexpr (requires { body.rejectReason; })
        writer.both("reason", chosenText(body.rejectReason));
    if constexpr (requires { body.nakReason; }) writer.both("reason", chosenText(body.nakReason));
    if constexpr (requires { body.disengageReason; })
        writer.both("reason", chosenText(body.disengageReason));
    if constexpr (requires { body.destinationInfo; }) readParties(body, writer);
    if constexpr (requires { body.terminalAlias; }) readAliases(body.terminalAlias, writer);
    if constexpr (requires { body.endpointAlias; }) readAliases(body.endpointAlias, writer);
    if constexpr (requires { body.keepAlive; })
        if (body.keepAlive != 0) {
            writer.say("keepAlive");
            writer.fact("keepAlive", true);
        }
    if constexpr (requires { body.reason; }) writer.both("reason", chosenText(body.reason));
    if constexpr (requires { body.destCallSignalAddress; })
        readAddress("at", "signalAddress", body.destCallSignalAddress, writer);
    if constexpr (requires { body.callSignalAddress; })
        readAddress("at", "signalAddress", body.callSignalAddress, writer);
    if constexpr (requires { body.bandWidth; })
        if (body.bandWidth > 0) readBandwidth(body.bandWidth, writer);
    if constexpr (requires { body.allowedBandWidth; }) readBandwidth(body.allowedBandWidth, writer);
    if constexpr (requires { body.timeToLive; })
        if (body.timeToLive > 0) {
            writer.say("for " + std::to_string(body.timeToLive) + " s");
            writer.fact("timeToLive", static_cast<int64_t>(body.timeToLive));
        }
    if constexpr (requires { body.delay; }) {
        writer.say(std::to_string(body.delay) + " ms");
        writer.fact("delay", static_cast<int64_t>(body.delay));
    }
    if constexpr (requires { body.perCallInfo; })
        if (body.perCallInfo.n > 0) {
            writer.say(std::to_string(body.perCallInfo.n) +
                       (body.perCallInfo.n == 1 ? " call" : " calls"));
            writer.fact("calls", static_cast<int64_t>(body.perCallInfo.n));
        }
    if constexpr (requires { body.endpointIdentifier; })
        writer.fact("endpointIdentifier", textOf(body.endpointIdentifier));
    // Where a gatekeeper is; of an endpoint the aliases say more.
    constexpr bool isEndpoint = requires {
        body.terminalAlias;
    }
    || requires {
        body.endpointAlias;
    };
    if constexpr (requires { body.gatekeeperIdentifier; }) {
        const std::string identifier = textOf(body.gatekeeperIdentifier);
        if (!isEndpoint) writer.sayWire(identifier);
        writer.fact("gatekeeperIdentifier", identifier);
    }
    if constexpr (requires { body.rasAddress.t; }) {
        const std::string address = addressText(body.rasAddress);
        if (!isEndpoint) writer.say(address);
        writer.fact("rasAddress", address);
    }
    writer.fact("sequenceNumber", static_cast<int64_t>(body.requestSeqNum));
}

}  // namespace

void readRasDetails(const TamselModules& modules, const TamselDecoder& decoder,
                    DetailWriter& writer) {
    const auto read = [&](const auto& body) { readRasBody(body, writer); };
    if (&modules == &kTamsel2009)
        visitRas(decoder.value<asn2009::H225RasMessage>(), read);
    else
        visitRas(decoder.value<H225RasMessage>(), read);
}
