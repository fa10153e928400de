#include "q931.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "hex_digits.h"

namespace {

constexpr uint8_t kUserUser = 0x7E;
constexpr uint8_t kX680 = 0x05;  // the user-user element's own discriminator: ASN.1
constexpr uint8_t kCause = 0x08;
constexpr uint8_t kDisplay = 0x28;
constexpr uint8_t kCalling = 0x6C;
constexpr uint8_t kCalled = 0x70;

struct Name {
    unsigned value;
    const char* text;
};

constexpr Name kTypes[] = {
    {0x01, "alerting"},   {0x02, "callProceeding"},  {0x03, "progress"},
    {0x05, "setup"},      {0x07, "connect"},         {0x0D, "setupAcknowledge"},
    {0x0F, "connectAck"}, {0x20, "userInformation"}, {0x45, "disconnect"},
    {0x4D, "release"},    {0x5A, "releaseComplete"}, {0x62, "facility"},
    {0x6E, "notify"},     {0x75, "statusEnquiry"},   {0x7B, "information"},
    {0x7D, "status"},
};

constexpr Name kCauses[] = {
    {1, "unallocated number"},
    {2, "no route to transit network"},
    {3, "no route to destination"},
    {6, "channel unacceptable"},
    {16, "normal call clearing"},
    {17, "user busy"},
    {18, "no user responding"},
    {19, "no answer from user"},
    {20, "subscriber absent"},
    {21, "call rejected"},
    {22, "number changed"},
    {26, "non-selected user clearing"},
    {27, "destination out of order"},
    {28, "invalid number format"},
    {29, "facility rejected"},
    {30, "response to status enquiry"},
    {31, "normal, unspecified"},
    {34, "no circuit or channel available"},
    {38, "network out of order"},
    {41, "temporary failure"},
    {42, "switching equipment congestion"},
    {43, "access information discarded"},
    {44, "requested circuit or channel not available"},
    {47, "resource unavailable, unspecified"},
    {49, "quality of service unavailable"},
    {50, "requested facility not subscribed"},
    {55, "incoming calls barred"},
    {57, "bearer capability not authorized"},
    {58, "bearer capability not presently available"},
    {63, "service or option not available, unspecified"},
    {65, "bearer capability not implemented"},
    {66, "channel type not implemented"},
    {69, "requested facility not implemented"},
    {79, "service or option not implemented, unspecified"},
    {81, "invalid call reference value"},
    {82, "identified channel does not exist"},
    {84, "call identity in use"},
    {86, "call having the requested call identity has been cleared"},
    {88, "incompatible destination"},
    {91, "invalid transit network selection"},
    {95, "invalid message, unspecified"},
    {96, "mandatory information element is missing"},
    {97, "message type non-existent or not implemented"},
    {98, "message not compatible with call state"},
    {99, "information element non-existent or not implemented"},
    {100, "invalid information element contents"},
    {101, "message not compatible with call state"},
    {102, "recovery on timer expiry"},
    {111, "protocol error, unspecified"},
    {127, "interworking, unspecified"},
};

template <size_t kCount>
const char* find(const Name (&names)[kCount], unsigned value) {
    const auto* const found = std::find_if(std::begin(names), std::end(names),
                                           [&](const Name& name) { return name.value == value; });
    return found != std::end(names) ? found->text : nullptr;
}

/// Skips the octets up to the first whose extension bit, the top bit, is set, and that octet.
std::span<const uint8_t> afterExtension(std::span<const uint8_t> octets) {
    while (!octets.empty()) {
        const bool isLast = (octets[0] & 0x80) != 0;
        octets = octets.subspan(1);
        if (isLast) break;
    }
    return octets;
}

/// Reads an information element, if it is one of those that Q931Message has.
void readElement(uint8_t element, std::span<const uint8_t> octets, Q931Message& message) {
    switch (element) {
        case kUserUser:
            if (!octets.empty() && octets[0] == kX680) message.userUser = octets.subspan(1);
            break;
        case kCause:
            octets = afterExtension(octets);
            if (!octets.empty()) message.cause = octets[0] & 0x7F;
            break;
        case kDisplay:
            message.display = octets;
            break;
        case kCalling:
            message.calling = afterExtension(octets);
            break;
        case kCalled:
            message.called = afterExtension(octets);
            break;
        default:
            break;
    }
}

/// Text from the wire that is shown between quotation marks: a quotation mark, a backslash and
/// every octet that is not printable ASCII become \xNN.
std::string escaped(std::span<const uint8_t> octets) {
    std::string text;
    for (const uint8_t octet : octets) {
        if (octet >= 0x20 && octet < 0x7F && octet != '\\' && octet != '"') {
            text += static_cast<char>(octet);
            continue;
        }
        text += "\\x";
        appendHex(text, octet);
    }
    return text;
}

}  // namespace

std::string_view causeName(unsigned cause) {
    const char* const text = find(kCauses, cause);
    return text != nullptr ? text : "";
}

std::string Q931Message::name() const {
    if (const char* const text = find(kTypes, type)) return text;
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "q931-0x%02x", type);
    return text.data();
}

void Q931Message::describe(std::string& text) const {
    text += "reference " + std::to_string(callReference);
    if (!calling.empty() || !called.empty())
        text += ", " + escaped(calling) + " -> " + escaped(called);
    if (!display.empty()) text += ", display \"" + escaped(display) + "\"";
    if (cause) {
        text += ", cause " + std::to_string(*cause);
        if (const std::string_view words = causeName(*cause); !words.empty())
            text.append(" ").append(words);
    }
}

bool readQ931(std::span<const uint8_t> octets, Q931Message& message) {
    message = {};
    // Protocol discriminator, call reference with its length, message type, information elements.
    if (!startsQ931(octets) || octets.size() < 3 || octets[1] > 2) return false;
    const size_t referenceOctets = octets[1];
    if (octets.size() < referenceOctets + 3) return false;
    for (size_t i = 0; i < referenceOctets; ++i)
        message.callReference =
            message.callReference << 8 | (i == 0 ? octets[2] & 0x7FU : octets[2 + i]);
    message.type = octets[2 + referenceOctets];
    octets = octets.subspan(referenceOctets + 3);
    while (!octets.empty()) {
        const uint8_t element = octets[0];
        if ((element & 0x80) != 0) {  // a single-octet element
            octets = octets.subspan(1);
            continue;
        }
        // The length of the user-user element has two octets, other than in Q.931 itself.
        const size_t lengthOctets = element == kUserUser ? 2 : 1;
        if (octets.size() <= lengthOctets) return false;
        const size_t length = lengthOctets == 2 ? octets[1] * size_t{256} + octets[2] : octets[1];
        octets = octets.subspan(1 + lengthOctets);
        if (octets.size() < length) return false;
        readElement(element, octets.first(length), message);
        octets = octets.subspan(length);
    }
    return true;
}
