// Q.931 as H.225.0 uses it (H.225.0 clause 7.2). It surrounds each call-signalling message.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// The spans are parts of the octets that were read.
struct Q931Message {
    uint8_t type = 0;                   // the message type
    unsigned callReference = 0;         // without the call reference flag
    std::span<const uint8_t> userUser;  // H323-UserInformation as encoded; empty if there is none
    // Information elements; empty if the message does not have them.
    std::optional<unsigned> cause;  // the cause value, 0 to 127 (Q.850)
    std::span<const uint8_t> display;
    std::span<const uint8_t> calling;  // digits
    std::span<const uint8_t> called;

    /// The name of the message type, as H.225.0 writes it: "setup"; "q931-0x7f" if it has no name.
    std::string name() const;

    /// Appends a description: "reference 42, 4711 -> 4712, cause 16 normal call clearing". It is
    /// printable ASCII.
    void describe(std::string& text) const;
};

/// Whether octets start with the protocol discriminator of Q.931.
inline bool startsQ931(std::span<const uint8_t> octets) {
    return !octets.empty() && octets[0] == 0x08;
}

/// Reads a message. Returns false if it is not Q.931, or if it ends within an information element;
/// then `message` has the elements before that one.
bool readQ931(std::span<const uint8_t> octets, Q931Message& message);

/// The name of a cause value (Q.850); empty if it has no name.
std::string_view causeName(unsigned cause);
