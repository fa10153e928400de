// Where tamsel-dump writes: a file or standard output.
#pragma once

#include <cstdio>
#include <stdexcept>
#include <string>

#include "asn1per/dump.h"
#include "terminal.h"

struct OutputFailed : std::runtime_error {
    using runtime_error::runtime_error;
};

/// Opened by the first text, so that a file is left unchanged if no message decodes. Lines end as
/// the system's text files do.
class DumpOutput {
  public:
    /// No file name: standard output.
    explicit DumpOutput(std::string file) : file_(std::move(file)) {}
    ~DumpOutput();
    DumpOutput(const DumpOutput&) = delete;
    DumpOutput& operator=(const DumpOutput&) = delete;

    /// For the text of one message; opens the file. Throws OutputFailed.
    AsnDumpSink sink();

    /// Whether the sink is a terminal, so that character strings must be escaped.
    bool isTerminal() const { return ::isTerminal(stream_); }

    /// Passes on what the sink got. Throws OutputFailed.
    void flush();

    /// A line of the program's own.
    void line(const std::string& text);

  private:
    std::string file_;
    FILE* stream_ = nullptr;
};
