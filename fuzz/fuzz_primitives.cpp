// Every primitive beside the reference reader: the octets choose the steps and what they read. The
// first octet chooses whether fields are traced and diagnostics printed.

#include "reference_steps.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* input, size_t length) {
    static ReferenceComparison comparison;
    if (length == 0) return 0;
    comparison.run(Choices(input + 1, length - 1), input[0] & 3U);
    if (comparison.difference().empty()) return 0;
    std::fputs(comparison.difference().c_str(), stderr);
    __builtin_trap();
}
