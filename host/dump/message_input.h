// The messages of a file, in whatever form they are in it.
#pragma once

#include "hex_text.h"

struct InputOptions {
    bool joined = false;  // all lines of a text are one message
    bool strips = false;  // removes TPKT, and Q.931 if that may surround the messages
    bool hasQ931 = false;
};

struct InputMessage {
    std::string name;  // of its file, and where in that if the file has several
    Octets octets;
};

/// What makes a file no messages, its name included.
struct BadInput : std::runtime_error {
    using runtime_error::runtime_error;
};

/// At least one message of a file; "-" is standard input. Throws BadInput.
std::vector<InputMessage> readMessages(const std::string& file, const InputOptions& options);

/// Whether octets look like TPKT, or like Q.931 if that may be: a message that fails although it is
/// complete may need `strips`.
bool looksWrapped(std::span<const unsigned char> octets, bool hasQ931);
