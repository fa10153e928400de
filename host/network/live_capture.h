// Frames of an interface as they come, by libpcap.
#pragma once

#include <memory>
#include <string>

#include "frame_source.h"
#include "unread.h"

struct pcap;

class LiveCapture : public FrameSource {
  public:
    /// filter: which frames the system passes on, as an expression of libpcap; empty for all.
    /// Throws BadCapture if the interface cannot be read.
    LiveCapture(const std::string& interface, const std::string& filter, Unread& unread);
    ~LiveCapture() override;

    /// Waits for the next frame; false after an interrupt.
    bool next(Frame& frame) override;

  private:
    struct Close {
        void operator()(pcap* capture) const;
    };

    Unread& unread_;
    std::unique_ptr<pcap, Close> pcap_;
    FrameId id_;
};
