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
        if (isDone() || !leaf.path.starts_with(root_)) return;
        std::string_view rest = leaf.path.substr(root_.size());
        if (rest == "t" && leaf.value == kEmpty) name_ = "empty";
        for (found_ = 0; found_ < choices_ && rest.starts_with("u@"); ++found_) {
            const size_t end = std::min(rest.find('.'), rest.size());
            name_ = rest.substr(2, end - 2);
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
    }

    bool isDone() const { return found_ == choices_; }
    std::string_view name() const { return name_; }

  private:
    static constexpr std::string_view kEmpty = "9";  // the one message that is NULL

    std::string_view root_;
    int choices_;
    int found_ = 0;
    std::string_view name_ = "unknown";
};

/// Collects a message's facts but for its name, leaf by leaf.
class FactFinder {
  public:
    explicit FactFinder(MessageFacts& facts) : facts_(facts) {}

    void look(const Leaf& leaf) {
        std::string_view path = leaf.path;
        const std::string_view last = lastComponent(path);
        if (last == "data") {
            lookAtOctets(leaf);
        } else if (last == "port") {
            if (!cutEnd(path, ".u@ipAddress.port") && !cutEnd(path, ".u@ip6Address.port")) return;
            if (const auto purpose = purposeOf(lastComponent(path)))
                facts_.announcements.push_back(
                    {*purpose, makeEndpoint(address_, numberOf(leaf.value))});
        } else if (last == "requestSeqNum") {
            facts_.sequenceNumber = leaf.value;
        }
    }

  private:
    void lookAtOctets(const Leaf& leaf) {
        const std::string_view path = leaf.path.substr(0, leaf.path.rfind('.'));
        const std::string_view of = lastComponent(path);
        if (of == "ip")
            address_ = octetsOf(leaf);  // its port comes next
        else if (of == "guid" && path.ends_with(".callIdentifier.guid"))
            facts_.callIdentifier = formatHex(octetsOf(leaf));
        else if (of == "conferenceID")
            facts_.conferenceID = formatHex(octetsOf(leaf));
        else if (of == "h245Control")
            facts_.h245Control.push_back(octetsOf(leaf));
        else if (of == "fastStart")
            facts_.fastStart.push_back(octetsOf(leaf));
    }

    MessageFacts& facts_;
    Octets address_;
};

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
        const size_t equals = line.find('=');  // none in a path
        if (equals == std::string_view::npos || equals == 0) continue;
        if (!line.substr(equals - 1).starts_with(" = ")) continue;
        leaf = {.path = line.substr(0, equals - 1), .value = line.substr(equals + 2)};
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

Octets octetsOf(const Leaf& leaf) try {
    Octets octets;
    std::string_view rest = leaf.lines;
    while (octets.size() < leaf.numocts && !rest.empty()) {
        const size_t here = std::min(leaf.numocts - octets.size(), kOctetsPerLine);
        const Octets line = parseHex(rest.substr(0, here * 3));
        octets.insert(octets.end(), line.begin(), line.end());
        rest.remove_prefix(std::min(rest.find('\n'), rest.size() - 1) + 1);
    }
    return octets;
} catch (const BadHex&) {
    return {};  // no octets, but text of a character string that passes for some
}

MessageFacts readFacts(const Family& family, std::string_view dump) {
    MessageFacts facts;
    NameFinder names(family);
    FactFinder finder(facts);
    DumpReader reader(dump);
    for (Leaf leaf; reader.next(leaf);) {
        names.look(leaf);
        if (&family != &kH245)
            finder.look(leaf);
        else if (names.isDone())
            break;  // an H.245 message announces nothing but media
    }
    facts.name = names.name();
    return facts;
}
