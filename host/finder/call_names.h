// The identifiers of a call.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "hex_digits.h"

/// A globally unique identifier; all zero if there is none.
using Guid = std::array<uint8_t, 16>;

/// A call has one identifier or both. The first version of H.225.0 has only the conferenceID.
struct CallNames {
    Guid callIdentifier{};
    Guid conferenceID{};

    auto operator<=>(const CallNames&) const = default;
    bool isEmpty() const { return callIdentifier == Guid{} && conferenceID == Guid{}; }

    /// Takes a missing identifier from `other`, if the other identifier is the same in both.
    void complete(const CallNames& other) {
        if (callIdentifier == Guid{} && conferenceID == other.conferenceID)
            callIdentifier = other.callIdentifier;
        if (conferenceID == Guid{} && callIdentifier == other.callIdentifier)
            conferenceID = other.conferenceID;
    }

    /// The identifier that is shown: the callIdentifier if there is one.
    const Guid& shown() const { return callIdentifier == Guid{} ? conferenceID : callIdentifier; }
};

/// Whether one of the identifiers starts with these hex digits, which are in lower case.
inline bool isNamed(const CallNames& call, std::string_view digits) {
    const auto starts = [&](const Guid& guid) {
        std::string text;
        appendHex(text, guid);
        return guid != Guid{} && text.starts_with(digits);
    };
    return starts(call.callIdentifier) || starts(call.conferenceID);
}
