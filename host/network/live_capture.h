// Captures frames from an interface, by libpcap.
#pragma once

#include <memory>
#include <string>

#include "frame_source.h"
#include "unread.h"

struct pcap;

class LiveCapture : public FrameSource {
  public:
    /// Throws BadCapture if the interface cannot be read, or if the filter is wrong.
    ///   filter  an expression of libpcap, by which the system selects frames; empty for all
    ///   unread  at the end, receives the number of frames that the system dropped
    LiveCapture(const std::string& interface, const std::string& filter, Unread& unread);
    ~LiveCapture() override;

    /// Waits for the next frame. Returns false after a signal (interrupt.h).
    bool next(Frame& frame) override;

  private:
    struct Close {
        void operator()(pcap* capture) const;
    };

    Unread& unread_;
    std::unique_ptr<pcap, Close> pcap_;
    FrameId id_;
};
