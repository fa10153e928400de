// The width and the colours of the terminal, if output goes to one.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "message_facts.h"

enum class Style { kPlain, kStrong, kFaint, kRas, kUi, kH245, kGood, kBad };

Style styleOf(FamilyId family);

struct Screen {
    size_t width = 0;  // characters; 0 if there is no limit, as in a pipe
    bool colours = false;

    /// That of standard output. There are no colours if NO_COLOR is set or the terminal is dumb.
    static Screen ofOutput();

    /// Appends words in a style.
    void append(std::string& text, Style style, std::string_view words) const;
};

/// Appends ASCII text, and blanks after it up to a width in characters.
void appendPadded(std::string& text, std::string_view what, size_t width);
/// The same with the blanks before the text.
void appendRight(std::string& text, std::string_view what, size_t width);
