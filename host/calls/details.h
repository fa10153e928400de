// What a message says, for people and for programs: from its typed value and what was around it.
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

    std::string_view name;  // in lowerCamelCase; lives as long as the program
    Value value;            // text as it was on the wire, a BMPString as UTF-8; not escaped
};

struct MessageDetails {
    /// Follows the message's name: "4711 -> 4712", "1 g711Alaw64k rtp 10.0.0.1:5004". Text from the
    /// wire is escaped: what is not printable ASCII is \xNN, and a backslash is two.
    std::string summary;
    std::vector<Fact> facts;

    const Fact* find(std::string_view name) const;
    /// A fact that is text; empty if there is none.
    std::string_view text(std::string_view name) const;
    /// A fact that is a number.
    const int64_t* number(std::string_view name) const;
    /// A fact that is a list; null if there is none.
    const std::vector<std::string>* list(std::string_view name) const;
    void clear();
};

/// Reads what a message says. A message that did not decode has only what was around it.
///   modules  what the message was decoded with
void readDetails(const TamselModules& modules, const CapturedMessage& message,
                 MessageDetails& details);
