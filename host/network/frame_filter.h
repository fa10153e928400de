// A filter expression of libpcap (pcap-filter), for frames of any link type.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "frame.h"

struct bpf_program;

class FrameFilter {
  public:
    /// expression: empty for all frames.
    explicit FrameFilter(std::string expression);
    ~FrameFilter();
    FrameFilter(const FrameFilter&) = delete;
    FrameFilter& operator=(const FrameFilter&) = delete;

    /// Whether a frame is passed on. Throws std::runtime_error if the expression is wrong, or
    /// cannot be used for frames of this link type.
    bool has(const Frame& frame);

    const std::string& expression() const { return expression_; }

  private:
    struct Free {
        void operator()(bpf_program* program) const;
    };
    using Program = std::unique_ptr<bpf_program, Free>;

    Program compile(unsigned linkType) const;

    std::string expression_;
    std::map<unsigned, Program> programs_;  // by link type
};
