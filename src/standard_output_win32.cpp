#include <cstdio>

#include "standard_output.h"

bool StandardOutput::redirect(const char* path) {
    return std::freopen(path, "w", stdout) != nullptr;
}

void StandardOutput::restore() {
    (void)std::freopen("CON", "w", stdout);  // without a console it stays closed
}
