// What tells calls apart.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "hex_digits.h"

/// A globally unique identifier; all zero if there is none.
using Guid = std::array<uint8_t, 16>;

struct CallNames {
    Guid callIdentifier{};
    Guid conferenceID{};  // before 1998 it told calls apart

    auto operator<=>(const CallNames&) const = default;
    bool isEmpty() const { return callIdentifier == Guid{} && conferenceID == Guid{}; }

    /// Takes the identifier that it lacks from another that has the same other one.
    void complete(const CallNames& other) {
        if (callIdentifier == Guid{} && conferenceID == other.conferenceID)
            callIdentifier = other.callIdentifier;
        if (conferenceID == Guid{} && callIdentifier == other.callIdentifier)
            conferenceID = other.conferenceID;
    }

    /// The identifier that is shown.
    const Guid& shown() const { return callIdentifier == Guid{} ? conferenceID : callIdentifier; }
};

/// Whether an identifier of a call starts with these lower-case hex digits.
inline bool isNamed(const CallNames& call, std::string_view digits) {
    const auto starts = [&](const Guid& guid) {
        std::string text;
        appendHex(text, guid);
        return guid != Guid{} && text.starts_with(digits);
    };
    return starts(call.callIdentifier) || starts(call.conferenceID);
}
