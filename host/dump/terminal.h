// What differs between systems: terminals, and binary standard input.
#pragma once

#include <cstdio>

/// Whether a stream is a terminal.
bool isTerminal(FILE* stream);

/// Makes standard input binary: the system does not translate line ends.
void makeInputBinary();
