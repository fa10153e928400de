// Order: of the modules, of the types in a module, of the lines that they log.
#pragma once

#include "model.h"

/// Refuses names that refer only to each other.
void checkOtherNames(Model& model, Errors& errors);

/// Refuses modules that import from each other.
void checkImportOrder(const Model& model, Errors& errors);

/// Puts each type after those that it uses, as C++ requires, and finds recursion. A type may
/// contain itself through a pointer; any other recursion is refused.
void orderTypes(Module& module, Errors& errors);

/// Gives each type whose decoder logs a trail line of its own, in the order of the types.
void numberTrailLines(Module& module, Errors& errors);
