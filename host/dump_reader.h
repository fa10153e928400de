// Dumps, read back: one line a leaf, each with its full path.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "endpoint.h"
#include "message_dump.h"

/// One value of a dump. All views are into the dump.
struct Leaf {
    std::string_view path;
    std::string_view value;       // what stands behind " = " on the line
    std::string_view lines = {};  // of octets: the lines below, as hex and characters
    size_t numocts = 0;           // of octets: how many
};

/// Goes through a dump value by value; the arcs of object identifiers are passed over.
class DumpReader {
  public:
    explicit DumpReader(std::string_view dump) : rest_(dump) {}
    bool next(Leaf& leaf);

  private:
    std::string_view takeLine();

    std::string_view rest_;
    size_t numocts_ = 0;  // as the last value of that name told
};

/// The octets of a leaf whose path ends in ".data"; none where its lines are not hex. Dumps do not
/// escape line breaks in character strings, so a message can make lines that look like others.
Octets octetsOf(const Leaf& leaf);

/// What an announced address is for.
enum class Purpose { kForRas, kForSignalling, kForH245 };

struct Announcement {
    Purpose purpose;
    Endpoint endpoint;
};

/// What following a call needs to know of a message.
struct MessageFacts {
    std::string name;                         // "setup"
    std::string callIdentifier;               // 32 hex digits
    std::string conferenceID;                 // the same; before 1998 it told calls apart
    std::string sequenceNumber;               // RAS: requestSeqNum
    std::vector<Announcement> announcements;  // transport addresses to send to
    std::vector<Octets> h245Control;          // tunnelled H.245 messages
    std::vector<Octets> fastStart;            // proposals, each an OpenLogicalChannel
};

/// Reads them from the dump of a message of that family.
MessageFacts readFacts(const Family& family, std::string_view dump);
