// Random steps of the run-time against the reference reader.

#include <gtest/gtest.h>

#include "reference_steps.h"

TEST(Reference, RandomStepsAgree) {
    std::string differences;
    {
        ReferenceComparison comparison;
        for (unsigned mode = 0; mode < 4; ++mode)
            for (uint64_t i = 0; i < 25000 && comparison.differences().empty(); ++i)
                comparison.run(Choices(i << 2 ^ mode), mode);
        differences = comparison.summary();
    }
    EXPECT_EQ(differences, "");
}
