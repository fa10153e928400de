#include "interrupt.h"

#include <csignal>

namespace {

volatile std::sig_atomic_t interrupted = 0;

}  // namespace

void catchInterrupt() {
    struct sigaction action {};
    action.sa_handler = [](int) { interrupted = 1; };
    // SA_RESTART is not set, so that a read returns.
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

bool isInterrupted() {
    return interrupted != 0;
}
