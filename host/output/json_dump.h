// A dump as values, for programs.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "TamselCore.h"

/// Appends what the decoder's message holds to an array, {"path": ..., "value": ...} for each value
/// of its dump, in the same order. A number or a BOOLEAN is one. Text is text, that of a BMPString
/// as well. Octets and bits are hex, an object identifier is "0.0.8.2250". Presence bits ("m@"),
/// tags ("t") and counts are numbers of their own.
void appendDump(nlohmann::ordered_json& values, const TamselDecoder& decoder);
