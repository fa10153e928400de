#include "call_list.h"

#include <algorithm>

#include "call_text.h"
#include "escaped_text.h"
#include "message_text.h"
#include "text_format.h"

namespace {

constexpr size_t kWideList = 160;    // characters of a terminal that has room for all columns
constexpr size_t kGap = 2;           // characters between columns
constexpr size_t kNarrowIndent = 7;  // of the second line of a call

constexpr std::array<std::string_view, 8> kTitles = {"call", "start",   "duration", "messages",
                                                     "lost", "refused", "from",     "to"};
/// Which columns are numbers, and so aligned to the right.
constexpr std::array<bool, 8> kIsNumber = {true, false, true, true, true, true, false, false};

std::string stateText(const CallRecord& call) {
    return std::string(toString(call.state)) + outcomeText(call);
}

}  // namespace

CallList::CallList(Writer& writer, const Screen& screen)
    : writer_(writer), screen_(screen), isWide_(screen.width == 0 || screen.width >= kWideList) {
}

void CallList::message(const CapturedMessage& /*message*/, const MessageDetails& /*details*/,
                       const CallRecord* /*call*/) {
}

CallList::Row CallList::rowOf(const CallRecord& call) {
    std::string duration = durationText(call);
    return {std::to_string(call.number),
            dateText(call.start),
            std::move(duration),
            std::to_string(call.messages),
            std::to_string(call.losses),
            std::to_string(call.refused),
            fromText(call),
            toText(call)};
}

/// Sets the widths of the columns, from all calls that are known, and writes the headings.
void CallList::begin(const CallBook& book) {
    if (hasBegun_) return;
    hasBegun_ = true;
    if (!isWide_) return;
    for (size_t i = 0; i < kColumns; ++i) widths_.at(i) = kTitles.at(i).size();
    for (const CallRecord& call : book.calls()) {
        if (!call.isShown) continue;
        const Row row = rowOf(call);
        for (size_t i = 0; i < kColumns; ++i)
            widths_.at(i) = std::max(widths_.at(i), row.at(i).size());
    }
    std::string line;
    for (size_t i = 0; i < kColumns; ++i) {
        const std::string_view title = kTitles.at(i);
        kIsNumber.at(i) ? appendRight(line, title, widths_.at(i))
                        : appendPadded(line, title, widths_.at(i));
        line.append(kGap, ' ');
    }
    screen_.append(writer_.text(), Style::kStrong, line + "state");
    writer_.text() += '\n';
    writer_.toOutput();
}

void CallList::add(const CallRecord& call) {
    ++states_.at(static_cast<size_t>(call.state));
    isWide_ ? addWide(call) : addNarrow(call);
    writer_.toOutput();
}

/// Appends words to a line that has `from` characters. If the terminal is too narrow, the words
/// continue on further lines, which are indented. The first `styled` characters have a style.
void CallList::addWrapped(std::string_view words, size_t from, size_t indent, Style style,
                          size_t styled) {
    std::string& text = writer_.text();
    const size_t room = screen_.width > from + kGap ? screen_.width - from : words.size();
    for (const std::string_view line : wrapped(words, room)) {
        if (line.data() != words.data()) text.append("\n").append(indent, ' ');
        const auto at = static_cast<size_t>(line.data() - words.data());
        const size_t now = std::min(styled > at ? styled - at : 0, line.size());
        screen_.append(text, style, line.substr(0, now));
        text += line.substr(now);
    }
    text += '\n';
}

void CallList::addWide(const CallRecord& call) {
    const Row row = rowOf(call);
    std::string& text = writer_.text();
    std::string line;
    for (size_t i = 0; i < kColumns; ++i) {
        kIsNumber.at(i) ? appendRight(line, row.at(i), widths_.at(i))
                        : appendPadded(line, row.at(i), widths_.at(i));
        line.append(kGap, ' ');
    }
    text += line;
    addWrapped(stateText(call), line.size(), line.size(), styleOf(call.state),
               toString(call.state).size());
}

void CallList::addNarrow(const CallRecord& call) {
    std::string& text = writer_.text();
    std::string number;
    appendRight(number, std::to_string(call.number), kNarrowIndent - kGap);
    screen_.append(text, Style::kStrong, number);
    text.append(kGap, ' ');
    std::string start = dateText(call.start).substr(0, 19);
    start[10] = ' ';
    addWrapped(start + "  " + durationText(call) + "  " + fromText(call) + " -> " + toText(call),
               kNarrowIndent, kNarrowIndent, Style::kPlain, 0);
    std::string end = stateText(call) + "; " + counted(call.messages, "message");
    if (call.refused > 0) end += ", " + std::to_string(call.refused) + " refused";
    if (call.losses > 0) end += ", lost " + counted(call.losses, "time");
    text.append(kNarrowIndent, ' ');
    addWrapped(end, kNarrowIndent, kNarrowIndent, styleOf(call.state), toString(call.state).size());
}

void CallList::addEndpointHeading() {
    if (hasBegun_) writer_.text() += '\n';
    screen_.append(writer_.text(), Style::kStrong, "outside calls");
    writer_.text() += '\n';
}

void CallList::addEndpoint(const EndpointRecord& endpoint) {
    std::string line = "  " + partyText(endpoint.alias, endpoint.host);
    if (!endpoint.state.empty()) line.append(": ").append(endpoint.state);
    if (endpoint.gatekeeper != Address{}) line += " at " + toString(endpoint.gatekeeper);
    if (!endpoint.why.empty()) line += ", " + endpoint.why;
    line += "; " + counted(endpoint.messages, "message");
    if (endpoint.refused > 0) line += ", " + std::to_string(endpoint.refused) + " refused";
    addWrapped(line, 0, kGap + kGap, Style::kPlain, 0);
    writer_.toOutput();
}

void CallList::forgotten(const CallRecord& call, const CallBook& book) {
    begin(book);
    add(call);
}

void CallList::end(const CallBook& book) {
    for (const CallRecord& call : book.calls()) {
        if (!call.isShown) continue;
        begin(book);
        add(call);
    }
    bool isFirst = true;
    for (const EndpointRecord& endpoint : book.endpoints()) {
        if (!endpoint.isShown) continue;
        if (isFirst) addEndpointHeading();
        isFirst = false;
        addEndpoint(endpoint);
    }
}

std::string CallList::summary() const {
    size_t all = 0;
    std::string text;
    for (size_t i = 0; i < states_.size(); ++i) {
        if (states_.at(i) == 0) continue;
        all += states_.at(i);
        text += text.empty() ? ": " : ", ";
        text += std::to_string(states_.at(i)) + " ";
        text += toString(static_cast<CallState>(i));
    }
    return counted(all, "call") + text + "\n";
}
