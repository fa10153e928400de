// Q.931 as H.225.0 uses it (H.225.0 clause 7.2): what stands around a call-signalling message.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

struct Q931Message {
    unsigned callReference = 0;  // without the flag that tells the side
    std::span<const uint8_t>
        userUser;  // H323-UserInformation as encoded; empty where there is none
};

/// Whether octets start as a Q.931 message does: with its protocol discriminator.
bool startsQ931(std::span<const uint8_t> octets);

/// Reads a whole message; nothing where it is none, or ends within an information element.
std::optional<Q931Message> readQ931(std::span<const uint8_t> octets);
