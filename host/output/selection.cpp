#include "selection.h"

#include <cctype>
#include <charconv>
#include <chrono>

namespace {

constexpr Time kSecond = 1'000'000;
constexpr Time kDay = 86400 * kSecond;

/// Removes a number of `digits` digits from the start of a text, and returns it.
std::optional<unsigned> takeNumber(std::string_view& text, size_t digits) {
    unsigned number = 0;
    const auto part = text.substr(0, digits);
    const auto [end, error] = std::from_chars(part.data(), part.data() + part.size(), number);
    if (part.size() < digits || error != std::errc() || end != part.data() + digits) return {};
    text.remove_prefix(digits);
    return number;
}

/// Removes a character from the start of a text, if it is there.
bool take(std::string_view& text, char c) {
    if (!text.starts_with(c)) return false;
    text.remove_prefix(1);
    return true;
}

/// "2026-11-22"
std::optional<Time> takeDate(std::string_view& text) {
    const auto year = takeNumber(text, 4);
    if (!year || !take(text, '-')) return {};
    const auto month = takeNumber(text, 2);
    if (!month || !take(text, '-')) return {};
    const auto day = takeNumber(text, 2);
    if (!day) return {};
    const std::chrono::year_month_day date{std::chrono::year(static_cast<int>(*year)),
                                           std::chrono::month(*month), std::chrono::day(*day)};
    if (!date.ok()) return {};
    return std::chrono::sys_days(date).time_since_epoch().count() * kDay;
}

/// "05:11", "05:11:39", "05:11:39.25"
std::optional<Time> takeTimeOfDay(std::string_view& text) {
    const auto hour = takeNumber(text, 2);
    if (!hour || *hour > 23 || !take(text, ':')) return {};
    const auto minute = takeNumber(text, 2);
    if (!minute || *minute > 59) return {};
    Time time = (*hour * Time{60} + *minute) * 60 * kSecond;
    if (!take(text, ':')) return time;
    const auto second = takeNumber(text, 2);
    if (!second || *second > 59) return {};
    time += *second * kSecond;
    if (!take(text, '.')) return time;
    for (Time unit = kSecond / 10; !text.empty() && text[0] >= '0' && text[0] <= '9'; unit /= 10) {
        time += (text[0] - '0') * unit;
        text.remove_prefix(1);
    }
    return time;
}

}  // namespace

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return lower;
}

std::optional<Moment> readMoment(std::string_view text) {
    Moment moment;
    const std::string_view whole = text;
    if (const auto date = takeDate(text)) {
        moment = {*date, true};
        if (text.empty()) return moment;
        if (!take(text, 'T') && !take(text, ' ')) return {};
    } else {
        text = whole;
    }
    const auto time = takeTimeOfDay(text);
    take(text, 'Z');
    if (!time || !text.empty()) return {};
    moment.time += *time;
    return moment;
}

bool Selection::has(const CapturedMessage& message) {
    return has(message.time, message.flow) && options_.families.contains(message.family) &&
           (options_.names.empty() || options_.names.contains(lowerCase(message.name)));
}

bool Selection::has(Time time, const Flow& flow) {
    if (!day_) day_ = time - time % kDay;
    const auto at = [&](const Moment& moment) {
        return moment.hasDate ? moment.time : *day_ + moment.time;
    };
    if (options_.from && time < at(*options_.from)) return false;
    if (options_.to && time > at(*options_.to)) return false;
    return options_.hosts.empty() || options_.hosts.contains(flow.source.address) ||
           options_.hosts.contains(flow.destination.address);
}
