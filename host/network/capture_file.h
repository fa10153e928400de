// Reads capture files. libpcap reads pcap, and pcapng.h reads pcapng.
#pragma once

#include <memory>
#include <string>

#include "frame_source.h"
#include "input_file.h"
#include "pcapng.h"

struct pcap;

class CaptureFile : public FrameSource {
  public:
    /// Opens a file, or standard input for "-". `index` becomes the file number of its frames.
    /// Throws BadCapture.
    explicit CaptureFile(const std::string& name, uint32_t index = 0);

    bool next(Frame& frame) override;
    double progress() const override { return input_.progress(); }

  private:
    struct Close {
        void operator()(pcap* file) const;
    };
    bool nextOfPcap(Frame& frame);

    InputFile input_;
    FrameId id_;  // of the last frame
    std::unique_ptr<PcapngReader> pcapng_;
    std::string error_;  // why input_ failed when libpcap read it
    std::unique_ptr<pcap, Close> pcap_;

    static ssize_t readForPcap(void* file, char* to, size_t size);
};
