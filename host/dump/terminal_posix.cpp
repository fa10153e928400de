#include <unistd.h>

#include "terminal.h"

bool isTerminal(FILE* stream) {
    return isatty(fileno(stream)) != 0;
}

void makeInputBinary() {
    // Standard input is always binary here.
}
