#include <fcntl.h>
#include <io.h>

#include <cstdio>

#include "dump_file.h"

namespace {

constexpr int kStandardOutput = 1;

/// In a process that was started without standard handles (a GUI program, DETACHED_PROCESS) the
/// stream has no descriptor, and Wine's freopen refuses such a stream. It gets one on the
/// null device.
void giveDescriptor() {
    const int null = _open("NUL", _O_WRONLY | _O_TEXT);
    if (null < 0) return;
    if (_dup2(null, kStandardOutput) == 0) stdout->_file = kStandardOutput;
    _close(null);
}

}  // namespace

// "wt" and not "w": a host may have set _fmode to binary.

bool DumpFile::open(const char* path) {
    if (_fileno(stdout) < 0) giveDescriptor();
    return std::freopen(path, "wt", stdout) != nullptr;
}

AsnDumpSink DumpFile::sink() {
    return {[](void* /*target*/, const char* text, size_t size) {
                (void)std::fwrite(text, 1, size, stdout);
            },
            nullptr};
}

void DumpFile::close() {
    if (std::freopen("CON", "wt", stdout) != nullptr) return;
    // No console. A closed stream would leave its descriptor and its handle to the next file that
    // the host opens, and what the host prints would go there.
    (void)std::freopen("NUL", "wt", stdout);
}
