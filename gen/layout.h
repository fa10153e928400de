// The layout of generated source.
#pragma once

#include <string>
#include <string_view>

/// Source as clang-format would leave it, if its lines have their margins: lines of more than 100
/// columns are wrapped, comments after consecutive lines are aligned.
std::string layOut(std::string_view source);
