#include <fcntl.h>
#include <stdio_ext.h>
#include <unistd.h>

#include <cstdio>

#include "standard_output.h"

bool StandardOutput::redirect(const char* path) {
    const int descriptor = fileno(stdout);
    // Above the standard three: a host that has closed one of them may reopen it in that place.
    saved_ = descriptor >= 0 ? fcntl(descriptor, F_DUPFD_CLOEXEC, 3) : -1;
    lineBuffered_ = __flbf(stdout) != 0 || (saved_ >= 0 && isatty(saved_) != 0);
    unbuffered_ = __fbufsize(stdout) == 1;
    if (std::freopen(path, "w", stdout) != nullptr) return true;
    if (saved_ >= 0) close(saved_);
    return false;
}

void StandardOutput::restore() {
    // What a full disk did not take must not come out on the host's output later.
    if (std::fflush(stdout) != 0) __fpurge(stdout);
    if (saved_ < 0) {
        (void)std::freopen("/dev/null", "w", stdout);  // there is nothing better
        return;
    }
    dup2(saved_, fileno(stdout));
    close(saved_);
    clearerr(stdout);
    if (unbuffered_)
        std::setvbuf(stdout, nullptr, _IONBF, 0);
    else
        std::setvbuf(stdout, nullptr, lineBuffered_ ? _IOLBF : _IOFBF, BUFSIZ);
}
