// The details of a message, for people and for programs. They are read from its typed value and
// from the Q.931 message around it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "message.h"

/// One fact of a message.
struct Fact {
    using Value = std::variant<std::string, int64_t, bool, std::vector<std::string>>;

    std::string_view name;  // in lowerCamelCase; valid as long as the program
    Value value;            // text as on the wire, not escaped; a BMPString as UTF-8
};

struct MessageDetails {
    /// What is shown after the name of the message: "4711 -> 4712", "1 g711Alaw64k rtp
    /// 10.0.0.1:5004". Text from the wire is escaped (escaped_text.h).
    std::string summary;
    std::vector<Fact> facts;

    /// The first fact of a name; null if there is none.
    const Fact* find(std::string_view name) const;
    /// A fact that is text; empty if there is none.
    std::string_view text(std::string_view name) const;
    /// A fact that is a number; null if there is none.
    const int64_t* number(std::string_view name) const;
    /// A fact that is a list; null if there is none.
    const std::vector<std::string>* list(std::string_view name) const;
    void clear();
};

/// Sets the details of a message. If it did not decode, they come only from Q.931.
///   modules  those that the message was decoded with
void readDetails(const TamselModules& modules, const CapturedMessage& message,
                 MessageDetails& details);
