// The file that an export writes one dump to.
#pragma once

#include "asn1per/dump.h"

class DumpFile {
  public:
    /// Creates or truncates the file. False if it cannot be opened. On Windows the process's
    /// standard output is reopened onto it, in text mode; a failure closes standard output.
    [[nodiscard]] bool open(const char* path);

    /// Writes to the file. Text that a full disk cannot hold is lost.
    AsnDumpSink sink();

    /// Completes and closes it. On Windows standard output is then reopened on the console, or on
    /// the null device if there is no console.
    void close();

  private:
#if !defined(_WIN32)
    int descriptor_ = -1;
#endif
};
