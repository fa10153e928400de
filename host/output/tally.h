// Counts what was shown, for the summary.
#pragma once

#include <array>
#include <string>

#include "view.h"

/// A remark in words: "3 octets missing in the capture".
std::string describe(const CaptureRemark& remark);

class Tally : public View {
  public:
    void message(const CapturedMessage& message, const MessageDetails& details,
                 const CallRecord* call) override;
    void remark(const CaptureRemark& remark, const CallRecord* call) override;
    bool needsDetails() const override { return false; }

    /// A line with the numbers of messages, and a line for each kind of remark.
    std::string summary() const;
    size_t messages() const { return shown_[0] + shown_[1] + shown_[2]; }
    size_t refused() const { return refused_; }

  private:
    std::array<size_t, 3> shown_{};  // by family
    size_t refused_ = 0;
    size_t bare_ = 0;
    size_t proposals_ = 0;
    struct Remarks {
        size_t count = 0;
        size_t octets = 0;
    };
    std::array<Remarks, kRemarks> remarks_{};
};
