// Compares the run-time with the reference reader over many random steps:
//
//     compare-reference [MILLIONS [SEED]]
//
// Prints how many steps were compared, how often each primitive returned each status, and the
// differences, each kind once. The result is 1 if there are any.

#include <cstdio>
#include <cstdlib>

#include "reference_steps.h"

int main(int argc, char** argv) {
    const auto steps = static_cast<uint64_t>((argc > 1 ? std::strtod(argv[1], nullptr) : 1) * 1e6);
    const uint64_t seed = argc > 2 ? std::strtoull(argv[2], nullptr, 0) : 1;
    std::string report;
    bool same = false;
    {
        ReferenceComparison comparison;
        for (unsigned mode = 0; mode < 4; ++mode)  // the silent run first
            for (uint64_t i = 0; comparison.steps() < steps / 4 * (mode + 1); ++i)
                comparison.run(Choices(seed << 32 ^ i << 2 ^ mode), mode);
        for (const auto& [step, count] : comparison.statuses())
            report += step.first + " " + std::to_string(step.second) + ": " +
                      std::to_string(count) + "\n";
        report += comparison.summary();
        report += std::to_string(comparison.steps()) + " steps, " +
                  std::to_string(comparison.differences().size()) + " kinds of differences\n";
        same = comparison.differences().empty();
    }
    std::fputs(report.c_str(), stdout);
    return same ? 0 : 1;
}
