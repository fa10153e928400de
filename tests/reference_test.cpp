// Random steps of the run-time against the reference reader.

#include <gtest/gtest.h>

#include "reference_steps.h"

TEST(Reference, RandomStepsAgree) {
    std::string difference;
    {
        ReferenceComparison comparison;
        for (unsigned mode = 0; mode < 4; ++mode)
            for (uint64_t i = 0; i < 25000 && comparison.difference().empty(); ++i)
                comparison.run(Choices(i << 2 ^ mode), mode);
        difference = comparison.difference();
    }
    EXPECT_EQ(difference, "");
}
