#include "stats.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "text_format.h"

namespace {

constexpr size_t kMaxKinds = 256;
constexpr size_t kNameWidth = 28;
constexpr size_t kCountWidth = 10;

void appendMilliseconds(std::string& text, uint64_t microseconds) {
    std::array<char, 32> digits{};
    const int size = std::snprintf(digits.data(), digits.size(), "%10.1f",
                                   static_cast<double>(microseconds) / 1000);
    text.append(digits.data(), static_cast<size_t>(size));
}

void appendCount(std::string& text, size_t count) {
    const std::string digits = std::to_string(count);
    text.append(kCountWidth - std::min(kCountWidth, digits.size()), ' ').append(digits);
}

void appendName(std::string& text, std::string_view name) {
    text.append("  ").append(name);
    if (name.size() < kNameWidth) text.append(kNameWidth - name.size(), ' ');
}

}  // namespace

void Stats::count(Counts& counts, std::string what) {
    auto found = counts.find(what);
    if (found == counts.end())
        found = counts.emplace(counts.size() < kMaxKinds ? std::move(what) : "others", 0).first;
    ++found->second;
}

void Stats::message(const CapturedMessage& message, const MessageDetails& details,
                    const CallRecord* /*call*/) {
    std::string name(nameOf(message.family));
    name.resize(6, ' ');
    count(messages_, name.append(message.name));
    if (message.outcome == Outcome::kRefused)
        count(refusals_, message.reason.substr(0, message.reason.find(" at octet")));
    if (message.name.ends_with("Reject"))
        count(rejects_, std::string(message.name).append(" ").append(details.text("reason")));
    if (message.family == FamilyId::kRas) ras(message, details);
}

/// Notes a request, or an answer: it goes to the sender of the request, with the same number.
void Stats::ras(const CapturedMessage& message, const MessageDetails& details) {
    const int64_t* const number = details.number("sequenceNumber");
    if (number == nullptr) return;
    if (isRasRequest(message.name)) {
        const std::pair key(message.flow.source, *number);
        Answers& answers = answers_[std::string(message.name)];
        ++answers.requests;
        const Request* const before = requests_.find(key);
        if (before != nullptr && before->answers == &answers)
            ++answers.again;
        else
            requests_.put(key, {message.time, &answers});
        return;
    }
    Request* const request = requests_.find({message.flow.destination, *number});
    // After requestInProgress, the answer comes later.
    if (request == nullptr || request->answers == nullptr || message.name == "requestInProgress")
        return;
    const Time passed = std::max(message.time - request->time, Time{0});
    request->answers->times.add(static_cast<uint64_t>(passed));
    request->answers = nullptr;
}

void Stats::forgotten(const CallRecord& call, const CallBook& /*book*/) {
    count(call);
}

void Stats::count(const CallRecord& call) {
    std::string what(toString(call.state));
    if (!call.why.empty()) what.append(", ").append(call.why);
    count(calls_, std::move(what));
}

void Stats::end(const CallBook& book) {
    for (const CallRecord& call : book.calls())
        if (call.isShown) count(call);
    writeCounts("Messages", messages_);
    writeCounts("Not decoded", refusals_);
    writeCounts("Rejects", rejects_);
    writeAnswers();
    writeCounts("Calls", calls_);
}

/// Writes counts, the greatest first.
void Stats::writeCounts(std::string_view title, const Counts& counts) {
    if (counts.empty()) return;
    std::vector<std::pair<size_t, std::string_view>> sorted;
    for (const auto& [what, number] : counts) sorted.emplace_back(number, what);
    std::ranges::stable_sort(sorted, std::greater(), &std::pair<size_t, std::string_view>::first);
    std::string& text = writer_.text();
    text.append(title).append("\n");
    for (const auto& [number, what] : sorted) {
        appendCount(text, number);
        text.append("  ").append(what).append("\n");
    }
    writer_.toOutput();
}

void Stats::writeAnswers() {
    if (answers_.empty()) return;
    std::string& text = writer_.text();
    text.append(
        "RAS response times in ms\n  request                      answered      open"
        "     again       min    median       95%       max\n");
    for (const auto& [name, answers] : answers_) {
        const Histogram& times = answers.times;
        appendName(text, name);
        appendCount(text, times.count());
        appendCount(text, answers.requests - answers.again - times.count());
        appendCount(text, answers.again);
        if (times.count() > 0)
            for (const uint64_t time :
                 {times.min(), times.percentile(50), times.percentile(95), times.max()})
                appendMilliseconds(text, time);
        text += '\n';
    }
    writer_.toOutput();
}
