#include <cstdio>

#include "dump_file.h"

bool DumpFile::open(const char* path) {
    return std::freopen(path, "w", stdout) != nullptr;
}

AsnDumpSink DumpFile::sink() {
    return {[](void* /*target*/, const char* text, size_t size) {
                (void)std::fwrite(text, 1, size, stdout);
            },
            nullptr};
}

void DumpFile::close() {
    (void)std::freopen("CON", "w", stdout);  // without a console it stays closed
}
