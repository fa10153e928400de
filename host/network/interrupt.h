// Ctrl-C during live input ends the input, and the program continues with its summary.
#pragma once

/// From now on the first SIGINT or SIGTERM is remembered; a second one ends the program.
void catchInterrupt();

/// Whether one came. A read that waits returns EINTR then.
bool isInterrupted();
