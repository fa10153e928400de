// Compares the run-time with the reference reader over many random steps:
//
//     compare-reference [MILLIONS [SEED]]
//
// Prints how many steps were compared, and the first that differs. The result is 1 if one does.

#include <cstdio>
#include <cstdlib>

#include "reference_steps.h"

int main(int argc, char** argv) {
    const auto steps = static_cast<uint64_t>((argc > 1 ? std::strtod(argv[1], nullptr) : 1) * 1e6);
    const uint64_t seed = argc > 2 ? std::strtoull(argv[2], nullptr, 0) : 1;
    std::string report;
    {
        ReferenceComparison comparison;
        for (uint64_t i = 0; comparison.steps() < steps && comparison.difference().empty(); ++i)
            comparison.run(Choices(seed << 32 ^ i), i % 4);
        report = std::to_string(comparison.steps()) + " steps\n" + comparison.difference();
    }
    std::fputs(report.c_str(), stdout);
    return report.ends_with(" steps\n") ? 0 : 1;
}
