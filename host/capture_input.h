// Reads what the command line names: files, a pipe or an interface.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "capture_writer.h"
#include "frame_filter.h"
#include "network.h"

struct InputOptions {
    std::vector<std::string> files;  // "-" is standard input
    std::string interface;           // instead of files
    std::string filter;              // frames to read, as an expression of libpcap
};

/// Whether a part of the input is a pipe or an interface. Its messages are to be shown at once.
bool isLive(const InputOptions& options);

/// Whether all frames can be read a second time: those of files, but not of standard input.
bool canReadAgain(const InputOptions& options);

/// Says something on standard error, after the program's name.
void complain(const std::string& text);

class CaptureInput {
  public:
    /// writer: takes each frame; may be null.
    /// hasProgress: shows a bar on the terminal once reading has taken a second.
    CaptureInput(const InputOptions& options, Unread& unread, CaptureWriter* writer,
                 bool hasProgress);

    /// Reads all, each capture as far as it goes. Returns false if one is damaged, or nothing in it
    /// can be read, and says so.
    ///   messages  tells how many messages were found so far
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
