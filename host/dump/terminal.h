// Streams, where systems differ.
#pragma once

#include <cstdio>

/// Whether a stream is shown on a terminal.
bool isTerminal(FILE* stream);

/// Reads standard input octet for octet from now on.
void makeInputBinary();
