// The program's standard streams, where systems differ.
#pragma once

/// Whether standard output is shown on a terminal.
bool isOutputTerminal();

/// Reads standard input octet for octet from now on.
void makeInputBinary();
