// Q.931 as H.225.0 uses it (H.225.0 clause 7.2): what is around a call-signalling message.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

struct Q931Message {
    uint8_t type = 0;                   // the message type
    unsigned callReference = 0;         // without the flag that tells the side
    std::span<const uint8_t> userUser;  // H323-UserInformation as encoded; empty if there is none
    // Information elements; empty if the message does not have them.
    std::optional<unsigned> cause;  // a cause value, 0 to 127
    std::span<const uint8_t> display;
    std::span<const uint8_t> calling;  // digits
    std::span<const uint8_t> called;

    /// The message's name, as H.225.0 writes it: "setup". "q931-0x7f" if it has none.
    std::string name() const;

    /// Appends the facts for people: "reference 42, 4711 -> 4712, cause 16 normal call clearing".
    void describe(std::string& text) const;
};

/// Whether octets start as a Q.931 message does: with its protocol discriminator.
inline bool startsQ931(std::span<const uint8_t> octets) {
    return !octets.empty() && octets[0] == 0x08;
}

/// Reads a message. Returns false if it is none, or ends within an information element; what is
/// before that has been read then.
bool readQ931(std::span<const uint8_t> octets, Q931Message& message);

/// A cause value in words (Q.850); empty if it has none.
std::string_view causeName(unsigned cause);
