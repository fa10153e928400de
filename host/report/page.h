// The page that shows a capture. The build makes it from the folder page/.
#pragma once

#include <string_view>

extern const std::string_view kPageHead;  // before the data
extern const std::string_view kPageTail;  // after the data
