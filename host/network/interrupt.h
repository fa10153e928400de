// Ctrl-C while frames come that never end: it ends them, and the program goes on to its summary.
#pragma once

/// From now on the first SIGINT or SIGTERM is remembered; a second one ends the program.
void catchInterrupt();

/// Whether one came. A read that waits returns EINTR then.
bool isInterrupted();
