#include "message_facts.h"

#include "2009/H245Names.h"
#include "2009/H323Names.h"
#include "H245Names.h"
#include "H323Names.h"
#include "message_body.h"

namespace {

// The types of each set of modules.
struct Modules1998 {
    using Ras = H225RasMessage;
    using Ui = H225H323_UserInformation;
    using H245 = H245MultimediaSystemControlMessage;
};
struct Modules2009 {
    using Ras = asn2009::H225RasMessage;
    using Ui = asn2009::H225H323_UserInformation;
    using H245 = asn2009::H245MultimediaSystemControlMessage;
};

/// Sets the name to that of the chosen alternative.
template <class Choice>
void readName(const Choice& chosen, MessageFacts& facts) {
    facts.name = asnAlternativeName(chosen);
    if (facts.name.empty())
        facts.alternative = chosen.t > 0 ? "alternative " + std::to_string(chosen.t) : "unknown";
}

/// Whether an identifier is that of H.225.0, of any version: 0 0 8 2250 0 VERSION.
bool isOfH323(const AsnObjId& protocol) {
    constexpr uint32_t kH2250[] = {0, 0, 8, 2250, 0};
    return protocol.numids == std::size(kH2250) + 1 &&
           std::equal(std::begin(kH2250), std::end(kH2250), protocol.subid);
}

template <class Octets>
void readGuid(const Octets& octets, Guid& guid) {
    if (octets.numocts == guid.size()) std::copy_n(octets.data, guid.size(), guid.begin());
}

/// Adds a transport address, or a list of them. An absent component has the tag 0, so it adds
/// nothing.
template <class Type>
void announce(const Type& addresses, Purpose purpose, MessageFacts& facts) {
    if constexpr (requires { addresses.elem; }) {
        for (uint32_t i = 0; i < addresses.n; ++i) announce(addresses.elem[i], purpose, facts);
    } else {
        const auto add = [&](const auto& address) {
            facts.announcements.push_back(
                {purpose, makeEndpoint({address.ip.data, address.ip.numocts},
                                       static_cast<unsigned>(address.port))});
        };
        if (addresses.t == Type::ipAddress) add(*addresses.u.ipAddress);
        if (addresses.t == Type::ip6Address) add(*addresses.u.ip6Address);
    }
}

template <class Octets>
void keepH245(const Octets& messages, MessageFacts& facts) {
    for (uint32_t i = 0; i < messages.n; ++i)
        facts.h245Control.emplace_back(messages.elem[i].data, messages.elem[i].numocts);
}

/// Reads the facts from those components that the type of the body has.
template <class Body>
void readBody(const Body& body, MessageFacts& facts) {
    if constexpr (requires { body.requestSeqNum; })
        facts.sequenceNumber = static_cast<uint32_t>(body.requestSeqNum);
    if constexpr (requires { body.protocolIdentifier; })
        facts.isOfH323 = isOfH323(body.protocolIdentifier);
    if constexpr (requires { body.callIdentifier; })
        readGuid(body.callIdentifier.guid, facts.call.callIdentifier);
    if constexpr (requires { body.conferenceID; })
        readGuid(body.conferenceID, facts.call.conferenceID);
    if constexpr (requires { body.perCallInfo; })
        if (body.perCallInfo.n == 1) readBody(body.perCallInfo.elem[0], facts);

    if constexpr (requires { body.h245Address; }) announce(body.h245Address, Purpose::kH245, facts);
    if constexpr (requires { body.rasAddress; }) announce(body.rasAddress, Purpose::kRas, facts);
    if constexpr (requires { body.replyAddress; })
        announce(body.replyAddress, Purpose::kRas, facts);
    if constexpr (requires { body.callSignalAddress; })
        announce(body.callSignalAddress, Purpose::kSignalling, facts);
    if constexpr (requires { body.destCallSignalAddress; })
        announce(body.destCallSignalAddress, Purpose::kSignalling, facts);
    if constexpr (requires { body.srcCallSignalAddress; })
        announce(body.srcCallSignalAddress, Purpose::kSignalling, facts);
    if constexpr (requires { body.sourceCallSignalAddress; })
        announce(body.sourceCallSignalAddress, Purpose::kSignalling, facts);
    if constexpr (requires { body.alternativeAddress; })
        announce(body.alternativeAddress, Purpose::kSignalling, facts);

    if constexpr (requires { body.alternateGatekeeper; })
        for (uint32_t i = 0; i < body.alternateGatekeeper.n; ++i)
            announce(body.alternateGatekeeper.elem[i].rasAddress, Purpose::kRas, facts);
    if constexpr (requires { body.altGKInfo; }) readBody(body.altGKInfo, facts);
    if constexpr (requires { body.alternateEndpoints; })
        for (uint32_t i = 0; i < body.alternateEndpoints.n; ++i)
            readBody(body.alternateEndpoints.elem[i], facts);

    if constexpr (requires { body.parallelH245Control; }) keepH245(body.parallelH245Control, facts);
    if constexpr (requires { body.fastStart; })
        for (uint32_t i = 0; i < body.fastStart.n; ++i)
            facts.fastStart.emplace_back(body.fastStart.elem[i].data,
                                         body.fastStart.elem[i].numocts);
}

template <class Ras>
void readRas(const Ras& message, MessageFacts& facts) {
    visitRas(message, [&](const auto& body) { readBody(body, facts); });
    facts.isRequest = isRasRequest(facts.name);
}

template <class Ui>
void readUi(const Ui& message, MessageFacts& facts) {
    visitUi(message, [&](const auto& body) { readBody(body, facts); });
    keepH245(message.h323_uu_pdu.h245Control, facts);
}

/// The name of an H.245 message is in the inner of two CHOICEs. A message that did not decode may
/// lack the inner one.
template <class H245>
void readH245Name(const H245& message, MessageFacts& facts) {
    const auto& u = message.u;
    if (message.t == H245::request && u.request != nullptr)
        readName(*u.request, facts);
    else if (message.t == H245::response && u.response != nullptr)
        readName(*u.response, facts);
    else if (message.t == H245::command && u.command != nullptr)
        readName(*u.command, facts);
    else if (message.t == H245::indication && u.indication != nullptr)
        readName(*u.indication, facts);
    else
        facts.alternative = "unknown";
}

template <class Modules>
void readFactsOf(FamilyId family, const TamselDecoder& decoder, MessageFacts& facts) {
    const bool isDecoded = decoder.status() == kAsnOk;
    if (family == FamilyId::kRas) {
        const auto& message = decoder.value<typename Modules::Ras>();
        readName(message, facts);
        if (isDecoded) readRas(message, facts);
    } else if (family == FamilyId::kUi) {
        const auto& message = decoder.value<typename Modules::Ui>();
        readName(message.h323_uu_pdu.h323_message_body, facts);
        if (isDecoded) readUi(message, facts);
    } else {
        readH245Name(decoder.value<typename Modules::H245>(), facts);
    }
}

}  // namespace

std::string_view nameOf(FamilyId family) {
    return familyOf(kTamsel1998, family).name;
}

bool isRasRequest(std::string_view name) {
    return name.ends_with("Request") || name.ends_with("Indicate") || name.ends_with("Indication");
}

const TamselFamily& familyOf(const TamselModules& modules, FamilyId family) {
    return family == FamilyId::kRas  ? modules.ras
           : family == FamilyId::kUi ? modules.ui
                                     : modules.h245;
}

void readFacts(const TamselModules& modules, FamilyId family, const TamselDecoder& decoder,
               MessageFacts& facts) {
    facts.name = {};
    facts.alternative.clear();
    facts.call = {};
    facts.sequenceNumber = 0;
    facts.isOfH323 = false;
    facts.isRequest = false;
    facts.announcements.clear();
    facts.h245Control.clear();
    facts.fastStart.clear();
    if (&modules == &kTamsel2009)
        readFactsOf<Modules2009>(family, decoder, facts);
    else
        readFactsOf<Modules1998>(family, decoder, facts);
}
