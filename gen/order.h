// Order: of the modules, of the types in a module, of the lines that they log.
#pragma once

#include "model.h"

/// Refuses names that refer only to each other.
void checkOtherNames(Model& model, Errors& errors);

/// Refuses modules that import from each other.
void checkImportOrder(const Model& model, Errors& errors);

/// Puts each type after those that it uses, as C++ requires, and finds recursion: it is fine
/// through a pointer, otherwise the type would hold itself.
void orderTypes(Module& module, Errors& errors);

/// Gives each type whose decoder logs a line of its own, growing with the order of the types.
void numberTrailLines(Module& module, Errors& errors);
