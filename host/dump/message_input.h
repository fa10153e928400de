// Reads the messages of a file: octets or hex text, perhaps in TPKT and Q.931.
#pragma once

#include "hex_text.h"

struct InputOptions {
    bool joined = false;   // all lines of a text are one message
    bool strips = false;   // TPKT is removed, and Q.931 if there may be one
    bool hasQ931 = false;  // the family is call signalling, so that Q.931 may surround a message
};

struct InputMessage {
    std::string name;  // of the file; if it has several messages, with line and number
    Octets octets;
};

/// Why a file has no messages. The text begins with the name of the file.
struct BadInput : std::runtime_error {
    using runtime_error::runtime_error;
};

/// Reads the messages of a file, at least one; "-" is standard input. Throws BadInput.
std::vector<InputMessage> readMessages(const std::string& file, const InputOptions& options);

/// Whether octets begin like TPKT, or, with `hasQ931`, like Q.931. A message for which this is true
/// may need `strips`.
bool looksWrapped(std::span<const unsigned char> octets, bool hasQ931);
