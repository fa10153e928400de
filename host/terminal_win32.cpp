#include <fcntl.h>
#include <io.h>
#include <stdio.h>
#include <windows.h>

#include "terminal.h"

bool isOutputTerminal() {
    // _isatty is also true for NUL and for serial devices.
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &mode) != 0;
}

void makeInputBinary() {
    _setmode(_fileno(stdin), _O_BINARY);
}
