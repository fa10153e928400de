#include "hex_text.h"

#include <algorithm>
#include <string>

namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

[[noreturn]] void fail(std::string_view text, size_t at, const std::string& what) {
    const std::string_view before = text.substr(0, at);
    const auto line = std::count(before.begin(), before.end(), '\n') + 1;
    const size_t lineStart = before.rfind('\n') + 1;  // 0 where there is none
    throw BadHex(what + " at line " + std::to_string(line) + ", column " +
                 std::to_string(at - lineStart + 1));
}

}  // namespace

bool isText(std::string_view input) {
    return std::all_of(input.begin(), input.end(),
                       [](char c) { return isBlank(c) || (c >= 0x20 && c <= 0x7E); });
}

Octets parseHex(std::string_view text) {
    Octets octets;
    for (size_t at = 0; at < text.size();) {
        const char next = at + 1 < text.size() ? text[at + 1] : '\0';
        if (isBlank(text[at]) || text[at] == ':') {
            ++at;
        } else if (text[at] == '0' && (next == 'x' || next == 'X')) {
            at += 2;
        } else if (hexDigit(text[at]) >= 0 && (next == '\0' || next == ':' || isBlank(next))) {
            fail(text, at, "half an octet");
        } else if (hexDigit(text[at]) < 0 || hexDigit(next) < 0) {
            const size_t bad = hexDigit(text[at]) < 0 ? at : at + 1;
            fail(text, bad, std::string("'") + text[bad] + "' is no hex digit");
        } else {
            octets.push_back(static_cast<unsigned char>(hexDigit(text[at]) * 16 + hexDigit(next)));
            at += 2;
        }
    }
    return octets;
}

std::string formatHex(std::span<const unsigned char> octets) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text;
    text.reserve(octets.size() * 2);
    for (const unsigned char octet : octets) {
        text += kDigits[octet >> 4];
        text += kDigits[octet & 15];
    }
    return text;
}
