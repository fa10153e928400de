// The output of tamsel-dump: a file or standard output.
#pragma once

#include <cstdio>
#include <stdexcept>
#include <string>

#include "asn1per/dump.h"
#include "terminal.h"

struct OutputFailed : std::runtime_error {
    using runtime_error::runtime_error;
};

/// The output is opened for the first text, so that a file is left unchanged if there is nothing to
/// write. Lines end as in the text files of the system.
class DumpOutput {
  public:
    /// file: its name; empty for standard output.
    explicit DumpOutput(std::string file) : file_(std::move(file)) {}
    ~DumpOutput();
    DumpOutput(const DumpOutput&) = delete;
    DumpOutput& operator=(const DumpOutput&) = delete;

    /// A sink for the dump of one message. Opens the output if it is not open. Throws OutputFailed.
    AsnDumpSink sink();

    /// Whether the output, which is open, is a terminal: character strings must be escaped there.
    bool isTerminal() const { return ::isTerminal(stream_); }

    /// Writes what is buffered. Throws OutputFailed if anything could not be written.
    void flush();

    /// Writes a line, and flushes it. Throws OutputFailed.
    void line(const std::string& text);

  private:
    std::string file_;
    FILE* stream_ = nullptr;
};
