// Reads the input of tamsel-capture: files, a pipe or an interface.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "capture_writer.h"
#include "frame_filter.h"
#include "network.h"

struct InputOptions {
    std::vector<std::string> files;  // "-" is standard input
    std::string interface;           // is read instead of files; empty for none
    std::string filter;              // an expression of libpcap: other frames are ignored
};

/// Whether a part of the input is a pipe or an interface. Its messages are to be shown at once.
bool isLive(const InputOptions& options);

/// Whether all frames can be read a second time: those of files, but not of standard input.
bool canReadAgain(const InputOptions& options);

/// Writes a line to standard error: the program's name and a text.
void complain(const std::string& text);

class CaptureInput {
  public:
    /// Throws std::runtime_error if the filter is wrong.
    ///   unread       counts what is not read
    ///   writer       receives each frame; may be null
    ///   hasProgress  whether a progress bar is shown, if standard error is a terminal
    CaptureInput(const InputOptions& options, Unread& unread, CaptureWriter* writer,
                 bool hasProgress);

    /// Reads all captures, each up to its end or to the first damage. Returns false, after a line
    /// on standard error, if a capture is damaged or has no frame of a known link type.
    ///   messages  returns the number of messages that were found so far
    bool read(Network& network, const std::function<size_t()>& messages);

  private:
    class Progress;

    bool readOne(const std::string& name, uint32_t index, Network& network, Progress& progress);

    InputOptions options_;
    Unread& unread_;
    CaptureWriter* writer_;
    bool hasProgress_;
    FrameFilter filter_;
};
