#include "text_format.h"

#include <algorithm>
#include <array>
#include <chrono>

#include "hex_digits.h"

namespace {

constexpr size_t kOctetsPerLine = 16;

}  // namespace

void appendDigits(std::string& text, int64_t value, size_t width) {
    std::array<char, 20> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    const auto size = static_cast<size_t>(end - digits.data());
    if (size < width) text.append(width - size, '0');
    text.append(digits.data(), size);
}

void appendTimeOfDay(std::string& text, Time time, std::string_view mark) {
    const int64_t seconds = time / 1000000;
    appendDigits(text, seconds / 3600 % 24, 2);
    text += mark;
    appendDigits(text, seconds / 60 % 60, 2);
    text += mark;
    appendDigits(text, seconds % 60, 2);
    text += '.';
    appendDigits(text, time % 1000000, 6);
}

void appendDate(std::string& text, Time time) {
    using std::chrono::floor, std::chrono::days;
    const std::chrono::sys_time<std::chrono::microseconds> at{std::chrono::microseconds(time)};
    const std::chrono::year_month_day date(floor<days>(at));
    appendDigits(text, int{date.year()}, 4);
    text += '-';
    appendDigits(text, unsigned{date.month()}, 2);
    text += '-';
    appendDigits(text, unsigned{date.day()}, 2);
    text += 'T';
    appendTimeOfDay(text, time);
    text += 'Z';
}

std::string dateText(Time time) {
    std::string text;
    appendDate(text, time);
    return text;
}

AsnDumpSink sinkOf(std::string& text) {
    return {[](void* target, const char* piece, size_t size) {
                static_cast<std::string*>(target)->append(piece, size);
            },
            &text};
}

std::string counted(size_t count, std::string_view noun) {
    std::string text = std::to_string(count) + " ";
    text += noun;
    if (count != 1) text += 's';
    return text;
}

void appendHexLines(std::string& text, std::span<const uint8_t> octets, std::string_view indent,
                    size_t lines) {
    for (; !octets.empty() && lines > 0; --lines) {
        const auto line = octets.first(std::min(kOctetsPerLine, octets.size()));
        text += indent;
        for (const uint8_t octet : line) {
            appendHex(text, octet);
            text += ' ';
        }
        text.back() = '\n';
        octets = octets.subspan(line.size());
    }
    if (!octets.empty())
        text.append(indent).append("and ").append(counted(octets.size(), "more octet")) += '\n';
}
