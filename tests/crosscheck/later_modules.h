// The modules as a later version would have them: whatever is extensible has got further additions,
// which a program of today does not know.
#pragma once

#include "../../gen/notation.h"

/// The name of the additions: "later1", "later2".
bool isLater(const std::string& name);

/// The modules with an OCTET STRING or two behind the additions of every extensible SEQUENCE and
/// CHOICE, and an item behind those of every extensible ENUMERATED.
std::vector<ModuleNotation> laterModules(const std::vector<std::string>& files);

/// A module as text.
std::string moduleText(const ModuleNotation& module);
