#include <fcntl.h>
#include <stdio_ext.h>
#include <unistd.h>

#include <cstdio>
#include <cwchar>

#include "standard_output.h"

namespace {

constexpr mode_t kModeOfFiles = 0666;

/// Empties the stream onto its descriptor. What that does not take must not come out elsewhere.
void flush() {
    if (std::fflush(stdout) != 0) __fpurge(stdout);
}

}  // namespace

// The descriptor changes under the stream, which keeps its buffer: reopening the stream itself
// takes four system calls more.

bool StandardOutput::redirect(const char* path) {
    flush();
    // Above the standard three: a host that has closed one of them may reopen it in that place.
    saved_ = fcntl(fileno(stdout), F_DUPFD_CLOEXEC, 3);
    if (saved_ < 0 || std::fwide(stdout, 0) > 0) {
        // Closed, or taken for wide characters, which a reopened stream is not.
        (void)std::freopen("/dev/null", "w", stdout);
        if (saved_ < 0) saved_ = fcntl(fileno(stdout), F_DUPFD_CLOEXEC, 3);
    }
    const int file = open(path, O_WRONLY | O_CREAT | O_TRUNC, kModeOfFiles);
    if (file < 0) {
        close(saved_);
        std::fclose(stdout);
        return false;
    }
    dup2(file, fileno(stdout));
    close(file);
    return true;
}

void StandardOutput::restore() {
    flush();
    dup2(saved_, fileno(stdout));
    close(saved_);
    clearerr(stdout);
}
