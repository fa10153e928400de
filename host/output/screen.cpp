#include "screen.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace {

constexpr size_t kUsualWidth = 80;
constexpr size_t kLeastWidth = 40;

/// Whether an environment variable is set and not empty.
bool isSet(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr && *value != '\0';
}

std::string_view codeOf(Style style) {
    switch (style) {
        case Style::kStrong:
            return "\x1B[1m";
        case Style::kFaint:
            return "\x1B[2m";
        case Style::kRas:
            return "\x1B[36m";
        case Style::kUi:
            return "\x1B[34m";
        case Style::kH245:
            return "\x1B[35m";
        case Style::kGood:
            return "\x1B[32m";
        case Style::kBad:
            return "\x1B[31m";
        default:
            return {};
    }
}

}  // namespace

Style styleOf(FamilyId family) {
    return family == FamilyId::kRas  ? Style::kRas
           : family == FamilyId::kUi ? Style::kUi
                                     : Style::kH245;
}

Screen Screen::ofOutput() {
    if (isatty(STDOUT_FILENO) == 0) return {};
    winsize size{};
    const bool isKnown = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    const char* const terminal = std::getenv("TERM");
    const bool isDumb = terminal == nullptr || std::string_view(terminal) == "dumb";
    return {std::max<size_t>(isKnown ? size.ws_col : kUsualWidth, kLeastWidth),
            !isSet("NO_COLOR") && !isDumb};
}

void Screen::append(std::string& text, Style style, std::string_view words) const {
    const std::string_view code = colours ? codeOf(style) : std::string_view();
    if (code.empty() || words.empty()) {
        text += words;
        return;
    }
    text.append(code).append(words).append("\x1B[0m");
}

void appendPadded(std::string& text, std::string_view what, size_t width) {
    text += what;
    if (what.size() < width) text.append(width - what.size(), ' ');
}

void appendRight(std::string& text, std::string_view what, size_t width) {
    if (what.size() < width) text.append(width - what.size(), ' ');
    text += what;
}
