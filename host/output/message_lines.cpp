#include "message_lines.h"

#include <algorithm>

#include "message_text.h"
#include "tally.h"
#include "text_format.h"

namespace {

constexpr size_t kMaxPairs = 16384;
constexpr size_t kHexLines = 4;
constexpr size_t kEndpointWidth = 21;
constexpr size_t kFrameWidth = 6;
constexpr size_t kFamilyWidth = 6;
constexpr size_t kWideLines = 120;  // characters of a terminal that has room for columns
constexpr size_t kIndent = 4;

}  // namespace

MessageLines::MessageLines(Writer& writer, const Screen& screen)
    : writer_(writer),
      screen_(screen),
      isNarrow_(screen.width > 0 && screen.width < kWideLines),
      left_(kMaxPairs) {
}

/// Begins a line with frame, time and hosts. On a narrow terminal they are not aligned in columns.
void MessageLines::begin(Time time, uint32_t frame, const Flow& flow) {
    const auto pair = std::minmax(flow.source.address, flow.destination.address);
    const Address* left = left_.find(pair);
    if (left == nullptr) left_.put(pair, flow.source.address);
    const bool fromLeft = left == nullptr || *left == flow.source.address;
    line_.clear();
    if (frame > 0) {
        appendRight(line_, std::to_string(frame), isNarrow_ ? 0 : kFrameWidth);
        line_ += isNarrow_ ? " " : "  ";
    }
    appendTimeOfDay(line_, time);
    line_ += isNarrow_ ? " " : "  ";
    const auto endpoint = [&](const Endpoint& end, bool right) {
        const size_t at = line_.size();
        appendText(line_, end);
        const size_t size = line_.size() - at;
        if (!isNarrow_ && size < kEndpointWidth)
            line_.insert(right ? at : line_.size(), kEndpointWidth - size, ' ');
    };
    endpoint(fromLeft ? flow.source : flow.destination, true);
    line_ += fromLeft ? " ---> " : " <--- ";
    endpoint(fromLeft ? flow.destination : flow.source, false);
    line_ += isNarrow_ ? " " : "  ";
    column_ = line_.size();
}

/// Appends words of one style. On a terminal they continue on the next line if there is no room.
void MessageLines::add(Style style, std::string_view words) {
    if (screen_.width == 0) {
        screen_.append(line_, style, words);
        return;
    }
    while (column_ + words.size() > screen_.width) {
        const size_t room = screen_.width - std::min(column_, screen_.width);
        const std::string_view first = wrapped(words, std::max<size_t>(room, 1)).front();
        const bool fits =
            first.size() <= room && first.find_first_not_of(' ') != std::string_view::npos;
        if (fits) screen_.append(line_, style, first);
        line_ += '\n';
        line_.append(kIndent, ' ');
        column_ = kIndent;
        if (fits) words.remove_prefix(first.size());
        while (words.starts_with(' ')) words.remove_prefix(1);
    }
    screen_.append(line_, style, words);
    column_ += words.size();
}

void MessageLines::finish() {
    writer_.text() += line_;
    writer_.text() += '\n';
    writer_.toOutput();
}

void MessageLines::message(const CapturedMessage& message, const MessageDetails& details,
                           const CallRecord* /*call*/) {
    const bool isRefused = message.outcome == Outcome::kRefused;
    begin(message.time, message.frame(), message.flow);
    std::string words;
    appendPadded(words, nameOf(message.family), isNarrow_ ? 0 : kFamilyWidth);
    if (isNarrow_) words += ' ';
    appendMessageText(words, message, details);
    add(isRefused ? Style::kBad : styleOf(message.family), words);
    words.clear();
    const bool hasCall = !message.call.isEmpty();
    if (hasCall) {
        words += "  (call ";
        appendHex(words, std::span(message.call.shown()).first(4));
    }
    if (message.q931 != nullptr) {
        words += hasCall ? ", reference " : "  (reference ";
        appendDigits(words, message.q931->callReference);
    }
    if (!words.empty()) {
        words += ')';
        add(Style::kFaint, words);
    }
    if (isRefused || message.outcome == Outcome::kBare) {
        line_ += '\n';
        appendHexLines(line_, message.octets, "    ", kHexLines);
        line_.pop_back();
    }
    finish();
}

void MessageLines::remark(const CaptureRemark& remark, const CallRecord* /*call*/) {
    begin(remark.time, 0, remark.flow);
    add(Style::kBad, "(" + describe(remark) + ")");
    finish();
}
