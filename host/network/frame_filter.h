// Applies a filter expression of libpcap (man pcap-filter) to frames of any link type.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "frame.h"
#include "unread.h"

struct bpf_program;

class FrameFilter {
  public:
    ///   expression  empty if all frames match
    ///   unread      counts the frames that the filter cannot be applied to
    FrameFilter(std::string expression, Unread& unread);
    ~FrameFilter();
    FrameFilter(const FrameFilter&) = delete;
    FrameFilter& operator=(const FrameFilter&) = delete;

    /// Whether a frame matches. If the expression cannot be compiled for its link type, the frame
    /// does not match, and is counted as not read. Throws std::runtime_error if the expression
    /// itself is wrong.
    bool has(const Frame& frame);

  private:
    struct Free {
        void operator()(bpf_program* program) const;
    };
    using Program = std::unique_ptr<bpf_program, Free>;

    Program compile(unsigned linkType);

    std::string expression_;
    Unread& unread_;
    std::map<unsigned, Program> programs_;  // by link type; null if it does not compile for that
};
