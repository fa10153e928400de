// Everything that is not as the notation alone would have it, in one place.
#pragma once

#include <string_view>

/// A component or alternative that dumps under another name than the notation gives it.
struct NameException {
    std::string_view type;  // structure name
    std::string_view component;
    std::string_view dumpName;
};
inline constexpr NameException kNameExceptions[] = {
    {"H245TransparencyParameters", "scale-x", "scale_x"},
    {"H225ConferenceGoal", "capability-negotiation", "capability_negotiation"},
    {"H225SecurityServiceMode", "default", "default-"},
};

/// A module whose structures are not prefixed with its file's name, or whose last trail line is
/// fixed.
struct ModuleException {
    std::string_view file;
    std::string_view prefix;
    int lastTrailLine;  // 0: as it comes
};
inline constexpr ModuleException kModuleExceptions[] = {
    {"H245", "H245", 22926},
    {"H323", "H225", 0},
};
