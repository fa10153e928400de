// Link types, which say what a frame begins with: their numbers and names.
#pragma once

#include <string>

/// The name that libpcap has for a link type (DLT_...): "Ethernet"; "DLT 147" if it has none.
std::string linkTypeName(unsigned linkType);

/// IP without a link layer has another number in a capture file than in libpcap. All other link
/// types have the same number in both.
unsigned linkTypeFromFile(unsigned number);
unsigned linkTypeInFile(unsigned linkType);
