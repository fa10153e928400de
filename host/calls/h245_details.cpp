// Details of H.245.

#include "codec_names.h"

namespace {

/// Codecs of one message that become a fact, at most.
constexpr size_t kMaxMedia = 64;

template <class Address>
Endpoint endpointOf(const Address& address) {
    if (address.t != Address::unicastAddress) return {};
    using Unicast = std::remove_cvref_t<decltype(*address.u.unicastAddress)>;
    const Unicast& unicast = *address.u.unicastAddress;
    const auto endpoint = [](const auto& ip) {
        return makeEndpoint({ip.network.data, ip.network.numocts},
                            static_cast<unsigned>(ip.tsapIdentifier));
    };
    if (unicast.t == Unicast::iPAddress) return endpoint(*unicast.u.iPAddress);
    if (unicast.t == Unicast::iP6Address) return endpoint(*unicast.u.iP6Address);
    return {};
}

/// Reads the addresses of RTP and RTCP. The summary has that of RTCP only if it is not at the next
/// port of the same host.
template <class Parameters>
void readAddresses(const Parameters& parameters, DetailWriter& writer) {
    const Endpoint media = endpointOf(parameters.mediaChannel);
    const Endpoint control = endpointOf(parameters.mediaControlChannel);
    if (media != Endpoint{}) {
        const std::string text = toString(media);
        writer.sayAddress("rtp", text);
        writer.fact("rtp", text);
    }
    if (control == Endpoint{}) return;
    const std::string text = toString(control);
    if (control.address != media.address || control.port != media.port + 1)
        writer.sayAddress("rtcp", text);
    writer.fact("rtcp", text);
}

template <class Multiplex>
void readMultiplex(const Multiplex& multiplex, DetailWriter& writer) {
    if (multiplex.t == Multiplex::h2250LogicalChannelParameters)
        readAddresses(*multiplex.u.h2250LogicalChannelParameters, writer);
}

/// Reads an OpenLogicalChannel. In fastStart the media may be only in the reverse direction.
template <class Open>
void readOpen(const Open& open, DetailWriter& writer) {
    const auto& forward = open.forwardLogicalChannelParameters;
    const auto& reverse = open.reverseLogicalChannelParameters;
    using Type = std::remove_cvref_t<decltype(forward.dataType)>;
    const bool hasReverse = open.m.reverseLogicalChannelParametersPresent != 0;
    const bool isReverse = hasReverse && forward.dataType.t == Type::nullData;
    writer.both("codec", mediaName(isReverse ? reverse.dataType : forward.dataType));
    if (isReverse) writer.say("reverse");
    writer.fact("direction", std::string(isReverse ? "reverse" : hasReverse ? "both" : "forward"));
    if (isReverse)
        readMultiplex(reverse.multiplexParameters, writer);
    else
        readMultiplex(forward.multiplexParameters, writer);
}

template <class Input>
void readUserInput(const Input& input, DetailWriter& writer) {
    if (input.t == Input::alphanumeric) writer.both("userInput", input.u.alphanumeric);
    if (input.t == Input::signal && input.u.signal->signalType != nullptr)
        writer.both("userInput", input.u.signal->signalType);
}

/// Reads those components of a body that are shown.
template <class Body>
void readH245Body(const Body& body, DetailWriter& writer) {
    if constexpr (requires { body.forwardLogicalChannelNumber; }) {
        writer.sayNumber(body.forwardLogicalChannelNumber);
        writer.fact("channel", static_cast<int64_t>(body.forwardLogicalChannelNumber));
    }
    if constexpr (requires { body.logicalChannelNumber; }) {
        writer.sayNumber(body.logicalChannelNumber);
        writer.fact("channel", static_cast<int64_t>(body.logicalChannelNumber));
    }
    if constexpr (requires { body.forwardLogicalChannelParameters; }) readOpen(body, writer);
    if constexpr (requires { body.forwardMultiplexAckParameters; }) {
        const auto& parameters = body.forwardMultiplexAckParameters;
        using Chosen = std::remove_cvref_t<decltype(parameters)>;
        if (parameters.t == Chosen::h2250LogicalChannelAckParameters)
            readAddresses(*parameters.u.h2250LogicalChannelAckParameters, writer);
    }
    if constexpr (requires { body.cause; }) writer.both("reason", chosenText(body.cause));
    if constexpr (requires { body.reason; }) writer.both("reason", chosenText(body.reason));
    if constexpr (requires { body.capabilityTable; }) {
        CapabilityNames names;
        for (uint32_t i = 0; i < body.capabilityTable.n && names.media.size() < kMaxMedia; ++i)
            addCapability(body.capabilityTable.elem[i].capability, names);
        if (names.media.empty()) writer.say("no media");
        writer.sayList(names.media);
        writer.sayList(names.userInput);
        writer.fact("codecs", std::move(names.media));
        writer.fact("userInputCapabilities", std::move(names.userInput));
    }
    if constexpr (requires { body.terminalType; }) {
        writer.say("terminal type");
        writer.sayNumber(body.terminalType);
        writer.fact("terminalType", static_cast<int64_t>(body.terminalType));
        writer.fact("statusDeterminationNumber",
                    static_cast<int64_t>(body.statusDeterminationNumber));
    }
    if constexpr (requires { body.decision; }) writer.both("decision", chosenText(body.decision));
    if constexpr (requires { body.type.t; }) writer.both("type", chosenText(body.type));
    if constexpr (requires { Body::alphanumeric; }) readUserInput(body, writer);
    if constexpr (requires { Body::disconnect; }) writer.both("type", chosenText(body));
    if constexpr (requires { body.sequenceNumber; })
        writer.fact("sequenceNumber", static_cast<int64_t>(body.sequenceNumber));
}

#define TAMSEL_BODY(Choice, alternative)      \
    case Choice::alternative:                 \
        readH245Body(*u.alternative, writer); \
        break;

template <class Request>
void readRequest(const Request& message, DetailWriter& writer) {
    const auto& u = message.u;
    switch (message.t) {
        TAMSEL_BODY(Request, masterSlaveDetermination)
        TAMSEL_BODY(Request, terminalCapabilitySet)
        TAMSEL_BODY(Request, openLogicalChannel)
        TAMSEL_BODY(Request, closeLogicalChannel)
        TAMSEL_BODY(Request, requestChannelClose)
        TAMSEL_BODY(Request, requestMode)
        TAMSEL_BODY(Request, roundTripDelayRequest)
        default:
            break;
    }
}

template <class Response>
void readResponse(const Response& message, DetailWriter& writer) {
    const auto& u = message.u;
    switch (message.t) {
        TAMSEL_BODY(Response, masterSlaveDeterminationAck)
        TAMSEL_BODY(Response, masterSlaveDeterminationReject)
        TAMSEL_BODY(Response, terminalCapabilitySetAck)
        TAMSEL_BODY(Response, terminalCapabilitySetReject)
        TAMSEL_BODY(Response, openLogicalChannelAck)
        TAMSEL_BODY(Response, openLogicalChannelReject)
        TAMSEL_BODY(Response, closeLogicalChannelAck)
        TAMSEL_BODY(Response, requestChannelCloseAck)
        TAMSEL_BODY(Response, requestChannelCloseReject)
        TAMSEL_BODY(Response, requestModeAck)
        TAMSEL_BODY(Response, requestModeReject)
        TAMSEL_BODY(Response, roundTripDelayResponse)
        default:
            break;
    }
}

template <class Command>
void readCommand(const Command& message, DetailWriter& writer) {
    const auto& u = message.u;
    switch (message.t) {
        TAMSEL_BODY(Command, endSessionCommand)
        TAMSEL_BODY(Command, miscellaneousCommand)
        default:
            break;
    }
}

template <class Indication>
void readIndication(const Indication& message, DetailWriter& writer) {
    const auto& u = message.u;
    switch (message.t) {
        TAMSEL_BODY(Indication, openLogicalChannelConfirm)
        TAMSEL_BODY(Indication, miscellaneousIndication)
        TAMSEL_BODY(Indication, userInput)
        TAMSEL_BODY(Indication, functionNotSupported)
        default:
            break;
    }
}

#undef TAMSEL_BODY

template <class H245>
void readH245(const H245& message, DetailWriter& writer) {
    const auto& u = message.u;
    if (message.t == H245::request) readRequest(*u.request, writer);
    if (message.t == H245::response) readResponse(*u.response, writer);
    if (message.t == H245::command) readCommand(*u.command, writer);
    if (message.t == H245::indication) readIndication(*u.indication, writer);
}

}  // namespace

void readH245Details(const TamselModules& modules, const TamselDecoder& decoder,
                     DetailWriter& writer) {
    if (&modules == &kTamsel2009)
        readH245(decoder.value<asn2009::H245MultimediaSystemControlMessage>(), writer);
    else
        readH245(decoder.value<H245MultimediaSystemControlMessage>(), writer);
}
