// The layout of generated source.
#pragma once

#include <string>
#include <string_view>

/// Formats source whose lines are indented already, as clang-format would: wraps lines of more than
/// 100 columns, and aligns the comments after consecutive lines.
std::string layOut(std::string_view source);
