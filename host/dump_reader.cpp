#include "dump_reader.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "hex_text.h"

namespace {

constexpr size_t kOctetsPerLine = 16;

unsigned numberOf(std::string_view text) {
    unsigned number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

/// Cuts ".component" off the end of a path; false, and nothing cut, where another stands there.
bool cutEnd(std::string_view& path, std::string_view component) {
    if (!path.ends_with(component)) return false;
    path.remove_suffix(component.size());
    return true;
}

/// The last component of a path, list indexes aside: "a.b.elem[3]" gives "b".
std::string_view lastComponent(std::string_view path) {
    if (path.ends_with(']')) path = path.substr(0, path.rfind(".elem["));
    return path.substr(path.rfind('.') + 1);
}

/// Whom a component of type TransportAddress lets reach its sender, or its receiver.
std::optional<Purpose> purposeOf(std::string_view component) {
    if (component == "h245Address") return Purpose::kForH245;
    if (component == "rasAddress" || component == "replyAddress") return Purpose::kForRas;
    if (component.ends_with("allSignalAddress") || component == "alternativeAddress")
        return Purpose::kForSignalling;
    return {};
}

/// The message's name: the alternative chosen at the last of the CHOICEs that tell messages apart.
/// A choice has "t" on a line and, unless NULL was chosen, "u@name" in the paths below.
class NameFinder {
  public:
    explicit NameFinder(const Family& family) : choices_(&family == &kH245 ? 2 : 1) {
        root_ = &family == &kRas  ? "RasMessage."
                : &family == &kUi ? "H323-UserInformation.h323-uu-pdu.h323-message-body."
                                  : "MultimediaSystemControlMessage.";
    }

    void look(const Leaf& leaf) {
        if (found_ == choices_ || !leaf.path.starts_with(root_)) return;
        std::string_view rest = leaf.path.substr(root_.size());
        if (rest == "t" && leaf.value == kEmpty) name_ = "empty";
        for (found_ = 0; found_ < choices_ && rest.starts_with("u@"); ++found_) {
            const size_t end = std::min(rest.find('.'), rest.size());
            name_ = rest.substr(2, end - 2);
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
    }

    std::string_view name() const { return name_; }

  private:
    static constexpr std::string_view kEmpty = "9";  // the one message that is NULL

    std::string_view root_;
    int choices_;
    int found_ = 0;
    std::string_view name_ = "unknown";
};

/// Collects transport addresses: each is an IP address followed by a port.
class AddressFinder {
  public:
    void look(const Leaf& leaf, std::vector<Announcement>& announcements) {
        std::string_view path = leaf.path;
        if (cutEnd(path, ".u@ipAddress.ip.data") || cutEnd(path, ".u@ip6Address.ip.data")) {
            address_ = octetsOf(leaf);
        } else if (cutEnd(path, ".u@ipAddress.port") || cutEnd(path, ".u@ip6Address.port")) {
            if (const auto purpose = purposeOf(lastComponent(path)))
                announcements.push_back({*purpose, makeEndpoint(address_, numberOf(leaf.value))});
        }
    }

  private:
    Octets address_;
};

/// An element of a list of octet strings that hold messages of their own, or parts of them.
void collectElement(const Leaf& leaf, MessageFacts& facts) {
    const std::string_view list = lastComponent(leaf.path.substr(0, leaf.path.rfind('.')));
    if (list == "h245Control") facts.h245Control.push_back(octetsOf(leaf));
    if (list == "fastStart") facts.fastStart.push_back(octetsOf(leaf));
}

}  // namespace

std::string_view DumpReader::takeLine() {
    const size_t end = std::min(rest_.find('\n'), rest_.size());
    const std::string_view line = rest_.substr(0, end);
    rest_.remove_prefix(std::min(end + 1, rest_.size()));
    return line;
}

bool DumpReader::next(Leaf& leaf) {
    while (!rest_.empty()) {
        const std::string_view line = takeLine();
        const size_t equals = line.find(" = ");
        if (equals == std::string_view::npos) continue;
        leaf = {.path = line.substr(0, equals), .value = line.substr(equals + 3)};
        if (leaf.path.ends_with(".numocts")) numocts_ = numberOf(leaf.value);
        if (leaf.path.ends_with(".data")) {
            leaf.numocts = numocts_;
            const char* const begin = rest_.data();
            size_t count = (numocts_ + kOctetsPerLine - 1) / kOctetsPerLine;
            for (count = std::max(count, size_t{1}); count > 0 && !rest_.empty(); --count)
                takeLine();
            leaf.lines = {begin, static_cast<size_t>(rest_.data() - begin)};
        }
        return true;
    }
    return false;
}

Octets octetsOf(const Leaf& leaf) {
    Octets octets;
    std::string_view rest = leaf.lines;
    while (octets.size() < leaf.numocts && !rest.empty()) {
        const size_t here = std::min(leaf.numocts - octets.size(), kOctetsPerLine);
        const Octets line = parseHex(rest.substr(0, here * 3));
        octets.insert(octets.end(), line.begin(), line.end());
        rest.remove_prefix(std::min(rest.find('\n'), rest.size() - 1) + 1);
    }
    return octets;
}

MessageFacts readFacts(const Family& family, std::string_view dump) {
    MessageFacts facts;
    NameFinder names(family);
    AddressFinder addresses;
    DumpReader reader(dump);
    for (Leaf leaf; reader.next(leaf);) {
        names.look(leaf);
        if (&family == &kH245) continue;  // announces nothing but media
        addresses.look(leaf, facts.announcements);
        if (leaf.path.ends_with(".callIdentifier.guid.data"))
            facts.callIdentifier = formatHex(octetsOf(leaf));
        else if (leaf.path.ends_with(".conferenceID.data"))
            facts.conferenceID = formatHex(octetsOf(leaf));
        else if (leaf.path.ends_with(".requestSeqNum"))
            facts.sequenceNumber = leaf.value;
        else if (leaf.path.ends_with("].data"))
            collectElement(leaf, facts);
    }
    facts.name = names.name();
    return facts;
}
