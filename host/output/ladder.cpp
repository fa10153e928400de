#include "ladder.h"

#include <algorithm>

#include "call_text.h"
#include "message_text.h"
#include "tally.h"
#include "text_format.h"

namespace {

// All widths are in characters.
constexpr size_t kLadderGap = 2;  // between frame, time, lanes and text

constexpr size_t kGoodText = 40;   // with less room for text, letters replace the addresses
constexpr size_t kLeastText = 24;  // with less room for text, there are no lanes
constexpr size_t kLeastPitch = 3;  // "|->"
constexpr size_t kLettersPitch = 8;
constexpr size_t kMostLanes = 150;  // of all lanes, in a pipe, whose lines have no limit
constexpr size_t kLetters = 26;

/// Octets that a step costs in addition to its text.
constexpr size_t kStepCost = 64;

}  // namespace

size_t Ladder::columnOf(const Address& host) {
    const auto [found, isNew] = columns_.try_emplace(host, hosts_.size());
    if (isNew) hosts_.push_back(host);
    return found->second;
}

void Ladder::keep(Step step, const CallRecord* call) {
    if (call != nullptr) {
        calls_.insert(call->number);
        step.call = call->number;
    }
    if (!start_) start_ = step.time;
    kept_ += step.text.size() + kStepCost;
    steps_.push_back(std::move(step));
    if (kept_ > kMaxKept) draw();
}

void Ladder::message(const CapturedMessage& message, const MessageDetails& details,
                     const CallRecord* call) {
    Step step{.time = message.time,
              .frame = message.frame(),
              .from = columnOf(message.flow.source.address),
              .to = columnOf(message.flow.destination.address),
              .family = message.family,
              .isRefused = message.outcome == Outcome::kRefused,
              .text = {}};
    appendPadded(step.text, nameOf(message.family), 5);
    appendMessageText(step.text, message, details);
    keep(std::move(step), call);
}

void Ladder::remark(const CaptureRemark& remark, const CallRecord* call) {
    keep({.time = remark.time,
          .from = columnOf(remark.flow.source.address),
          .to = columnOf(remark.flow.destination.address),
          .isLoss = true,
          .text = "(" + describe(remark) + ")"},
         call);
}

void Ladder::forgotten(const CallRecord& call, const CallBook& /*book*/) {
    if (calls_.contains(call.number)) drawHeading(call);
}

void Ladder::end(const CallBook& book) {
    for (const size_t number : calls_)
        if (const CallRecord* const call = book.find(number)) drawHeading(*call);
    draw();
}

void Ladder::drawHeading(const CallRecord& call) {
    std::string& text = writer_.text();
    screen_.append(text, Style::kStrong, "call " + std::to_string(call.number));
    text += ": " + fromText(call) + " -> " + toText(call);
    text += '\n';
    appendDate(text, call.start);
    text += ", " + durationText(call) + ", ";
    appendHex(text, call.names.shown());
    text += '\n';
    screen_.append(text, styleOf(call.state), toString(call.state));
    text += outcomeText(call);
    text += '\n';
    writer_.toOutput();
}

/// The letter of a column; its number if there are too many columns.
std::string Ladder::label(size_t column) const {
    if (hosts_.size() > kLetters) return std::to_string(column + 1);
    return {static_cast<char>('A' + column)};
}

/// The seconds since the first step.
std::string Ladder::timeText(Time time) const {
    const Time since = time - *start_;
    std::string text = since < 0 ? "-" : "";
    appendDigits(text, std::abs(since) / 1000000);
    text += '.';
    appendDigits(text, std::abs(since) % 1000000, 6);
    return text;
}

Ladder::Layout Ladder::layOut() const {
    Layout layout;
    for (const Step& step : steps_) {
        if (step.frame > 0)
            layout.frameWidth = std::max(layout.frameWidth, std::to_string(step.frame).size());
        layout.timeWidth = std::max(layout.timeWidth, timeText(step.time).size());
    }
    const size_t frames = layout.frameWidth > 0 ? layout.frameWidth + kLadderGap : 0;
    const size_t prefix = frames + layout.timeWidth + kLadderGap;
    size_t longest = 0;
    for (const Address& host : hosts_) longest = std::max(longest, toString(host).size());
    const size_t count = hosts_.size();
    const size_t lanes = count * (longest + kLadderGap);
    layout.hasAddresses =
        screen_.width > 0 ? prefix + lanes + kGoodText <= screen_.width : lanes <= kMostLanes;
    if (layout.hasAddresses) {
        layout.lane = prefix + longest / 2;
        layout.pitch = longest + kLadderGap;
        layout.text = layout.lane + layout.pitch * (count - 1) + longest / 2 + kLadderGap;
        return layout;
    }
    layout.lane = prefix;
    layout.pitch = kLettersPitch;
    if (screen_.width > 0) {
        const size_t used = std::min(prefix + kGoodText, screen_.width);
        layout.pitch = std::clamp((screen_.width - used) / count, kLeastPitch, kLettersPitch);
        if (prefix + layout.pitch * count + kLeastText > screen_.width)
            layout.pitch = 0;  // "A -> B" instead
    }
    layout.text = prefix + (layout.pitch > 0 ? layout.pitch * (count - 1) + 1 + kLadderGap : 0);
    return layout;
}

/// Draws the hosts and the steps that are kept.
void Ladder::draw() {
    if (steps_.empty()) return;
    const Layout layout = layOut();
    drawHosts(layout);
    for (const Step& step : steps_) drawStep(layout, step);
    steps_.clear();
    kept_ = 0;
}

void Ladder::drawHosts(const Layout& layout) {
    std::string& text = writer_.text();
    text += '\n';
    std::string above;
    if (layout.hasAddresses) {
        for (size_t i = 0; i < hosts_.size(); ++i) {
            const std::string host = toString(hosts_[i]);
            const size_t at = layout.lane + layout.pitch * i - host.size() / 2;
            if (above.size() < at) above.append(at - above.size(), ' ');
            above += host;
        }
    } else {
        std::string legend;
        for (size_t i = 0; i < hosts_.size(); ++i)
            legend += (i > 0 ? ", " : "") + label(i) + "=" + toString(hosts_[i]);
        const size_t width = screen_.width > 0 ? screen_.width : legend.size();
        for (const std::string_view line : wrapped(legend, width)) (text += line) += '\n';
        for (size_t i = 0; layout.pitch > 0 && i < hosts_.size(); ++i) {
            const size_t at = layout.lane + layout.pitch * i;
            above.append(at - above.size(), ' ');
            above += label(i);
        }
    }
    screen_.append(text, Style::kStrong, above);
    text += '\n';
    writer_.toOutput();
}

/// Appends the lanes with the arrow of a step, or without an arrow if `step` is null.
void Ladder::appendLanes(std::string& line, const Layout& layout, const Step* step) const {
    const size_t begin = layout.lane;
    if (layout.pitch == 0) return;
    std::string lanes(layout.pitch * (hosts_.size() - 1) + 1 + kLadderGap, ' ');
    for (size_t i = 0; i < hosts_.size(); ++i) lanes[layout.pitch * i] = '|';
    line.append(begin - std::min(begin, line.size()), ' ');
    if (step == nullptr) {
        screen_.append(line, Style::kFaint, lanes);
        line.append(layout.text - begin - lanes.size(), ' ');
        return;
    }
    const size_t left = layout.pitch * std::min(step->from, step->to);
    const size_t right = layout.pitch * std::max(step->from, step->to);
    const char body = step->isLoss ? '~' : '-';
    if (left == right) {
        lanes.replace(left + 1, 2, {'<', body});
    } else {
        lanes.replace(left + 1, right - left - 1, right - left - 1, body);
        step->from < step->to ? lanes[right - 1] = '>' : lanes[left + 1] = '<';
    }
    const size_t end = left == right ? left + 3 : right;
    const bool isBad = step->isLoss || step->isRefused;
    const std::string_view all = lanes;
    screen_.append(line, Style::kFaint, all.substr(0, left + 1));
    screen_.append(line, isBad ? Style::kBad : styleOf(step->family),
                   all.substr(left + 1, end - left - 1));
    screen_.append(line, Style::kFaint, all.substr(end));
    line.append(layout.text - begin - lanes.size(), ' ');
}

void Ladder::drawStep(const Layout& layout, const Step& step) {
    std::string line;
    if (layout.frameWidth > 0) {
        appendRight(line, step.frame > 0 ? std::to_string(step.frame) : "", layout.frameWidth);
        line.append(kLadderGap, ' ');
    }
    appendRight(line, timeText(step.time), layout.timeWidth);
    line.append(kLadderGap, ' ');
    appendLanes(line, layout, &step);

    std::string words = step.text;
    if (layout.pitch == 0) words = label(step.from) + " -> " + label(step.to) + "  " + words;
    if (calls_.size() > 1 && step.call > 0) words += "  (call " + std::to_string(step.call) + ")";
    const Style style = step.isLoss || step.isRefused ? Style::kBad : styleOf(step.family);
    const bool hasRoom = screen_.width > layout.text;
    const auto lines =
        wrapped(words, hasRoom ? screen_.width - layout.text - kLadderGap : words.size());
    for (const std::string_view part : lines) {
        if (part.data() != lines.front().data()) {
            line += '\n';
            std::string lanes;
            appendLanes(lanes, layout, nullptr);
            line += lanes;
            line.append(layout.pitch == 0 ? layout.text + kLadderGap : kLadderGap, ' ');
        }
        screen_.append(line, style, part);
    }
    writer_.text() += line;
    writer_.text() += '\n';
    writer_.toOutput();
}
