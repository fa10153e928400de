// Capture files, read by libpcap: pcap and pcapng.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>

struct pcap;

/// Microseconds since 1970, UTC.
using Time = int64_t;

/// One frame of a capture; valid until the next is read.
struct Frame {
    Time time = 0;
    std::span<const uint8_t> octets;
    size_t length = 0;  // on the network: more than octets where the capture has only a part
};

/// What is wrong with a capture file.
struct BadCapture : std::runtime_error {
    using runtime_error::runtime_error;
};

class CaptureFile {
  public:
    /// Opens a file, or standard input for "-". Throws BadCapture.
    explicit CaptureFile(const std::string& name);

    /// The next frame; false at the end. Throws BadCapture where the file is damaged or cut short.
    bool next(Frame& frame);

    /// A libpcap link type, DLT_...
    int linkType() const;

    /// How much of the file has been read, 0 to 1; below 0 where nobody can tell.
    double progress() const;

  private:
    struct Close {
        void operator()(pcap* file) const;
    };
    std::unique_ptr<pcap, Close> file_;
    double size_ = 0;
};
