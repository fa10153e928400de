// What is needed of a message in order to follow its call. It is read from the decoded value.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "TamselCore.h"
#include "call_names.h"
#include "endpoint.h"

/// The families of messages.
enum class FamilyId { kRas, kUi, kH245 };
constexpr FamilyId kFamilies[] = {FamilyId::kRas, FamilyId::kUi, FamilyId::kH245};

/// "ras", "ui" or "h245".
std::string_view nameOf(FamilyId family);

/// The family in a set of modules.
const TamselFamily& familyOf(const TamselModules& modules, FamilyId family);

/// Whether a RAS message asks for an answer, by its name.
bool isRasRequest(std::string_view name);

/// What an address is used for.
enum class Purpose { kNone, kRas, kSignalling, kH245 };

/// An address that a message asks others to send to.
struct Announcement {
    Purpose purpose = Purpose::kNone;
    Endpoint endpoint;
};

/// `name` is valid as long as the program; the spans are valid until the decoder's next message.
struct MessageFacts {
    std::string_view name;    // "setup"; empty if the modules do not know the alternative
    std::string alternative;  // if `name` is empty: "alternative 31"
    CallNames call;
    uint32_t sequenceNumber = 0;  // of RAS; 0 if it has none
    bool isOfH323 = false;        // its protocolIdentifier is H.225.0
    bool isRequest = false;       // of RAS: it asks for an answer
    std::vector<Announcement> announcements;
    std::vector<std::span<const uint8_t>> h245Control;  // of parallelH245Control, then h245Control
    std::vector<std::span<const uint8_t>> fastStart;    // each an OpenLogicalChannel

    std::string_view shownName() const { return name.empty() ? alternative : name; }
};

/// Reads the facts of the message that the decoder decoded last. If it did not decode, reads only
/// the name.
///   modules  those that it was decoded with
void readFacts(const TamselModules& modules, FamilyId family, const TamselDecoder& decoder,
               MessageFacts& facts);
