// Details of H.225.0 RAS.

#include "detail_values.h"
#include "message_body.h"

namespace {

/// The unit of BandWidth, in bit/s.
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

/// Reads the calling and the called party of a request.
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

/// Reads the identifier and the address of a gatekeeper. An endpoint has these components as well,
/// but is shown with its aliases.
template <class Body>
void readGatekeeper(const Body& body, DetailWriter& writer) {
    constexpr bool hasAliases = requires {
        body.terminalAlias;
    }
    || requires {
        body.endpointAlias;
    };
    if constexpr (requires { body.gatekeeperIdentifier; }) {
        const std::string identifier = textOf(body.gatekeeperIdentifier);
        if (!hasAliases) writer.sayWire(identifier);
        writer.fact("gatekeeperIdentifier", identifier);
    }
    if constexpr (requires { body.rasAddress.t; }) {
        const std::string address = addressText(body.rasAddress);
        if (!hasAliases) writer.say(address);
        writer.fact("rasAddress", address);
    }
}

/// Reads the reason of a reject, or of another message.
template <class Body>
void readReason(const Body& body, DetailWriter& writer) {
    if constexpr (requires { body.rejectReason; })
        writer.both("reason", chosenText(body.rejectReason));
    if constexpr (requires { body.nakReason; }) writer.both("reason", chosenText(body.nakReason));
    if constexpr (requires { body.disengageReason; })
        writer.both("reason", chosenText(body.disengageReason));
}

/// Reads bandwidth, times and the number of calls.
template <class Body>
void readNumbers(const Body& body, DetailWriter& writer) {
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
}

/// Reads those components of a body that are shown.
template <class Body>
void readRasBody(const Body& body, DetailWriter& writer) {
    readReason(body, writer);
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
    readNumbers(body, writer);
    if constexpr (requires { body.endpointIdentifier; })
        writer.fact("endpointIdentifier", textOf(body.endpointIdentifier));
    readGatekeeper(body, writer);
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
