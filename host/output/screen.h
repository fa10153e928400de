// Where text is shown: the width of a terminal, and its colours.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "message_facts.h"

enum class Style { kPlain, kStrong, kFaint, kRas, kUi, kH245, kGood, kBad };

Style styleOf(FamilyId family);

struct Screen {
    size_t width = 0;  // columns; 0 if there is no limit, as in a pipe
    bool colours = false;

    /// Standard output: a pipe has no width and no colours, and NO_COLOR is respected.
    static Screen ofOutput();

    /// Appends text in a style.
    void append(std::string& text, Style style, std::string_view words) const;
};

/// Appends text of ASCII, and blanks up to a width.
void appendPadded(std::string& text, std::string_view what, size_t width);
/// The same with the blanks in front.
void appendRight(std::string& text, std::string_view what, size_t width);
