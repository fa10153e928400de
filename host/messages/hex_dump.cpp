#include "hex_dump.h"

#include <algorithm>
#include <cstdio>

namespace {

std::string asOffset(size_t value) {
    char text[24];
    std::snprintf(text, sizeof text, "%04zx", value);
    return text;
}

}  // namespace

bool HexDumpReader::isDump(std::string_view text) {
    HexDumpReader reader(text);
    while (reader.at_ < text.size() && isBlank(text[reader.at_])) ++reader.at_;
    const Offset offset = reader.offsetAt(reader.at_);
    if (offset.kind == Offset::kBeforePairs && offset.value != 0) {
        const std::string_view rest = text.substr(offset.end);
        if (rest.starts_with("  ") || rest.starts_with("\t"))
            reader.fail(reader.at_, "an offset needs a colon, unless the first one is 0");
        return false;
    }
    return offset.kind != Offset::kNone;
}

std::vector<PastedMessage> HexDumpReader::read() {
    for (; at_ < text_.size(); ++at_) {
        const size_t end = lineEnd();
        while (at_ < end && isBlank(text_[at_])) ++at_;
        if (at_ == end) continue;
        const Offset offset = offsetAt(at_);
        if (offset.kind == Offset::kNone) fail(at_, "no offset");
        if (offset.value == 0 || messages_.empty())
            endMessage();
        else if (offset.value != next_)
            fail(at_,
                 "offset " + asOffset(offset.value) + ", but " + asOffset(next_) + " is expected");
        readLine(offset);
    }
    return std::move(messages_);
}

size_t HexDumpReader::lineEnd() const {
    return std::min(text_.find('\n', at_), text_.size());
}

HexDumpReader::Offset HexDumpReader::offsetAt(size_t at) const {
    Offset offset;
    if (text_.substr(at).starts_with("0x")) at += 2;
    const size_t digits = digitsAt(at);
    if (digits < 3 || digits > 8) return offset;
    for (size_t i = 0; i < digits; ++i)
        offset.value = offset.value * 16 + static_cast<size_t>(hexDigit(text_[at + i]));
    at += digits;
    const auto endsAt = [&](size_t place) {
        return place >= text_.size() || isBlank(text_[place]);
    };
    const bool hasColon = at < text_.size() && text_[at] == ':';
    offset.end = at + (hasColon ? 1 : 0);
    if (!endsAt(offset.end)) return offset;
    while (at < text_.size() && (text_[at] == ' ' || text_[at] == '\t')) ++at;
    const bool moreFollow = text_.substr(std::min(at + 2, text_.size())).starts_with(' ');
    const bool arePairs =
        digitsAt(at) == 2 && endsAt(at + 2) && (!moreFollow || digitsAt(at + 3) <= 2);
    // Some programs end a dump with a line that has only its size.
    const bool isSize = !messages_.empty() && endsAt(at);
    if (hasColon)
        offset.kind = Offset::kWithColon;
    else if (arePairs || isSize)
        offset.kind = Offset::kBeforePairs;
    return offset;
}

void HexDumpReader::readLine(const Offset& offset) {
    const size_t lineEnds = lineEnd();
    size_t end = lineEnds;
    while (isBlank(text_[end - 1])) --end;  // ends at the offset, at the latest
    size_t octets = 0;                      // of this line
    at_ = offset.end;
    while (at_ < end) {
        if (octets != 0 && areCharacters(at_, end, octets)) {
            at_ = end;
        } else if (isBlank(text_[at_])) {
            const size_t gap = at_;
            while (isBlank(text_[at_])) ++at_;
            const bool isWide = at_ - gap > 1 || text_[gap] == '\t';
            if (isWide && octets != 0 && octets != 8)
                fail(at_, "these are not the characters of the octets");
        } else {
            const size_t digits = digitsAt(at_);
            readDigits(false);
            octets += digits / 2;
        }
    }
    next_ = offset.value + octets;
    at_ = lineEnds;
}

/// Whether the rest of a line is at least two blanks, and then the last `octets` octets as
/// characters.
bool HexDumpReader::areCharacters(size_t at, size_t end, size_t octets) const {
    const std::string_view rest = text_.substr(at, end - at);
    const size_t first = rest.find_first_not_of(" \t");
    if (first < 2 && rest[0] != '\t') return false;
    const Octets& all = messages_.back().octets;
    const std::span<const unsigned char> shown = std::span(all).last(octets);
    std::string_view inner = rest.substr(first);
    if (inner.size() >= 2 && ((inner.front() == '|' && inner.back() == '|') ||
                              (inner.front() == '>' && inner.back() == '<'))) {
        inner = inner.substr(1, inner.size() - 2);
        if (agrees(inner, shown)) return true;
    }
    // The characters may begin with blanks, so each blank may be the first of them.
    for (size_t start = rest[0] == '\t' ? 1 : 2; start <= first; ++start)
        if (agrees(rest.substr(start), shown)) return true;
    return false;
}

/// Whether a text shows octets as characters. Blanks at its end may be missing. Some dumps have an
/// additional blank after eight characters.
bool HexDumpReader::agrees(std::string_view text, std::span<const unsigned char> octets) {
    if (octets.size() > 8 && text.size() > 9 && text[8] == ' ' && octets[8] != ' ')
        return agrees(text.substr(0, 8), octets.first(8)) &&
               agrees(text.substr(9), octets.subspan(8));
    if (text.size() > octets.size()) return false;
    for (size_t i = 0; i < octets.size(); ++i) {
        const char c = i < text.size() ? text[i] : ' ';
        if (c != '.' && c != static_cast<char>(octets[i])) return false;
    }
    return true;
}
