#include <fcntl.h>
#include <io.h>
#include <stdio.h>
#include <windows.h>

#include "terminal.h"

bool isTerminal(FILE* stream) {
    // _isatty is also true for NUL and for serial devices.
    DWORD mode = 0;
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
    return GetConsoleMode(handle, &mode) != 0;
}

void makeInputBinary() {
    _setmode(_fileno(stdin), _O_BINARY);
}
