// A dump as JSON values.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "TamselCore.h"

/// Appends the dump of the decoder's message to an array: {"path": ..., "value": ...} for each
/// value of the dump, in the same order. Numbers and BOOLEANs have the JSON type, character strings
/// are text, octets and bits are text in hex, and an object identifier is "0.0.8.2250". Presence
/// bits
/// ("m@"), tags ("t") and counts are numbers.
void appendDump(nlohmann::ordered_json& values, const TamselDecoder& decoder);
