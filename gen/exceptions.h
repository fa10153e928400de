// All deviations from the notation. If the module of a row is read, the row must match something in
// it; otherwise that is reported as a mistake.
#pragma once

#include <string_view>

/// A component or alternative that is dumped under another name than the notation gives it.
struct NameException {
    std::string_view module;  // the stem of its file
    std::string_view path;    // "TransparencyParameters.scale-x"
    std::string_view dumpName;
};
inline constexpr NameException kNameExceptions[] = {
    {"H245", "TransparencyParameters.scale-x", "scale_x"},
};

/// A module whose structures are not prefixed with the stem of its file.
struct PrefixException {
    std::string_view module;
    std::string_view prefix;
};
inline constexpr PrefixException kPrefixExceptions[] = {
    {"H323", "H225"},
};

/// A type whose decoder logs under a fixed line.
struct TrailException {
    std::string_view module;
    std::string_view type;
    int line;
};
inline constexpr TrailException kTrailExceptions[] = {
    {"H245", "MultimediaSystemControlMessage", 22926},
};
