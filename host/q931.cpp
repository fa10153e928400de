#include "q931.h"

namespace {

constexpr uint8_t kProtocolDiscriminator = 0x08;
constexpr uint8_t kUserUser = 0x7E;
constexpr uint8_t kX680 = 0x05;  // the user-user element's own discriminator: ASN.1

}  // namespace

bool startsQ931(std::span<const uint8_t> octets) {
    return !octets.empty() && octets[0] == kProtocolDiscriminator;
}

std::optional<Q931Message> readQ931(std::span<const uint8_t> octets) {
    // Discriminator, call reference with its length, message type, information elements.
    if (!startsQ931(octets) || octets.size() < 3 || octets[1] > 2) return {};
    const size_t referenceOctets = octets[1];
    if (octets.size() < referenceOctets + 3) return {};
    Q931Message message;
    for (size_t i = 0; i < referenceOctets; ++i)
        message.callReference =
            message.callReference << 8 | (i == 0 ? octets[2] & 0x7FU : octets[2 + i]);
    octets = octets.subspan(referenceOctets + 3);
    while (!octets.empty()) {
        const uint8_t element = octets[0];
        if ((element & 0x80) != 0) {  // an element of one octet
            octets = octets.subspan(1);
            continue;
        }
        // The user-user element's length takes two octets, unlike Q.931's own.
        const size_t lengthOctets = element == kUserUser ? 2 : 1;
        if (octets.size() <= lengthOctets) return {};
        const size_t length = lengthOctets == 2 ? octets[1] * size_t{256} + octets[2] : octets[1];
        octets = octets.subspan(1 + lengthOctets);
        if (octets.size() < length) return {};
        if (element == kUserUser && length > 0 && octets[0] == kX680)
            message.userUser = octets.first(length).subspan(1);
        octets = octets.subspan(length);
    }
    return message;
}
