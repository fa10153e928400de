// A filter expression of libpcap (pcap-filter), for frames of any link type.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "frame.h"
#include "unread.h"

struct bpf_program;

class FrameFilter {
  public:
    /// expression: empty for all frames.
    FrameFilter(std::string expression, Unread& unread);
    ~FrameFilter();
    FrameFilter(const FrameFilter&) = delete;
    FrameFilter& operator=(const FrameFilter&) = delete;

    /// Whether a frame is passed on. Throws std::runtime_error if the expression is wrong. If it
    /// only cannot be used for frames of this link type, they are counted as not read.
    bool has(const Frame& frame);

  private:
    struct Free {
        void operator()(bpf_program* program) const;
    };
    using Program = std::unique_ptr<bpf_program, Free>;

    Program compile(unsigned linkType);

    std::string expression_;
    Unread& unread_;
    std::map<unsigned, Program> programs_;  // by link type; null: of no use
};
