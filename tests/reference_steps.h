// Random steps of the run-time, compared with the reference reader.
#pragma once

#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "reference_cases.h"

/// Standard output goes to a temporary file.
class CapturedOutput {
  public:
    CapturedOutput();
    ~CapturedOutput();
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;
    std::string take();

  private:
    FILE* file_;
    int saved_;
};

/// Runs cases in the run-time and in the reference reader and compares the steps: statuses, values,
/// the cursor, the trail, the traced fields and the diagnostics. While it lives, standard output is
/// captured.
class ReferenceComparison {
  public:
    static constexpr unsigned kTraced = 1;
    static constexpr unsigned kDiagnosed = 2;
    /// One case: up to four steps over the same octets, until one fails. `mode`: kTraced and
    /// kDiagnosed, or 0.
    void run(Choices choices, unsigned mode);

    uint64_t steps() const { return steps_; }
    /// The first step that differed, and in what; empty if none did.
    const std::string& difference() const { return difference_; }

  private:
    friend struct ReferenceCase;
    CapturedOutput output_;
    uint64_t steps_ = 0;
    std::map<int32_t, std::string> sites_;  // the function that logs at a line
    std::string difference_;
};
