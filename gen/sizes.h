// Sizes: what constraints are accepted, how many octets a structure holds, how many bits a value
// takes at least.
#pragma once

#include <functional>

#include "model.h"

/// Refuses a constraint that the type of `kind` cannot have, or that is not supported.
void checkConstraints(Kind kind, const TypeNotation& notation,
                      const std::function<void(const std::string&)>& refuse);

/// The spans of a record that need no clearing, those of inline records included.
std::vector<InlineOctets> unclearedSpans(const Type& type);

/// Fills in `least` of all types. Refuses lists whose elements take no bits, because the data would
/// not bound their counts; and types that have no finite value.
void measure(Model& model, Errors& errors);

// The fewest bits of each kind, by X.691 (07/2002) and the readers of the run-time.
LeastBits exactly(uint64_t bits);
LeastBits rangeBits(const Type& type);            // INTEGER with bounds
LeastBits extensibleRangeBits(const Type& type);  // with a marker after them
LeastBits extensibleItemBits(const Type& type);   // ENUMERATED with a marker
LeastBits bitStringBits(const Type& type);
LeastBits octetStringBits(const Type& type);
LeastBits characterStringBits(const Type& type);
LeastBits bmpStringBits(const Type& type);
LeastBits sequenceBits(const Type& type);
LeastBits choiceBits(const Type& type);
LeastBits listBits(const Type& type);
