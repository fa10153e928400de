// What following a call needs to know of a message, from its decoded value.
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

/// What a family is in a set of modules.
const TamselFamily& familyOf(const TamselModules& modules, FamilyId family);

/// Whether a RAS message asks for an answer, by its name.
bool isRasRequest(std::string_view name);

/// What an address is for.
enum class Purpose { kNone, kRas, kSignalling, kH245 };

/// An address that a message asks others to send to.
struct Announcement {
    Purpose purpose = Purpose::kNone;
    Endpoint endpoint;
};

/// The views are of the decoder's memory.
struct MessageFacts {
    std::string_view name;    // "setup"; empty if it is not known
    std::string alternative;  // if it is not known: "alternative 31"
    CallNames call;
    uint32_t sequenceNumber = 0;  // of RAS; 0 if it has none
    bool isOfH323 = false;        // it names H.225.0 as its protocol
    bool isRequest = false;       // of RAS: it begins a dialogue, it does not answer
    std::vector<Announcement> announcements;
    std::vector<std::span<const uint8_t>> h245Control;  // tunnelled, parallelH245Control first
    std::vector<std::span<const uint8_t>> fastStart;    // each an OpenLogicalChannel

    std::string_view shownName() const { return name.empty() ? alternative : name; }
};

/// Reads the facts of the message that was decoded last, with these modules. Of one that did not
/// decode, only the name.
void readFacts(const TamselModules& modules, FamilyId family, const TamselDecoder& decoder,
               MessageFacts& facts);
