// The page that shows a capture, as the build makes it of the folder page/.
#pragma once

#include <string_view>

extern const std::string_view kPageHead;  // up to the data
extern const std::string_view kPageTail;  // from there: the script
