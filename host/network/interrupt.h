// Ctrl-C ends live input. The program then writes its summary.
#pragma once

/// From now on the first SIGINT or SIGTERM is only noted. The second one ends the program.
void catchInterrupt();

/// Whether a signal was noted. The signal makes a read that waits return EINTR.
bool isInterrupted();
