#include <unistd.h>

#include "terminal.h"

bool isOutputTerminal() {
    return isatty(STDOUT_FILENO) != 0;
}

void makeInputBinary() {
}
