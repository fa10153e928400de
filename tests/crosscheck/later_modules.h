// The modules as a later version would have them: all that is extensible has further additions,
// which a program of today does not know.
#pragma once

#include "../../gen/notation.h"

/// The name of the additions: "later1", "later2".
bool isLater(const std::string& name);

/// The modules with an OCTET STRING or two after the additions of every extensible SEQUENCE and
/// CHOICE, and an item after those of every extensible ENUMERATED.
std::vector<ModuleNotation> laterModules(const std::vector<std::string>& files);

/// A module as text.
std::string moduleText(const ModuleNotation& module);
