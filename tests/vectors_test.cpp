// Whole messages through the exports: the dump of each, octet for octet, and what cutting and
// lengthening it does.

#include "messages.h"

namespace {

class MessageTest : public ::testing::TestWithParam<Message> {};

TEST_P(MessageTest, DumpsAsExpected) {
    const TemporaryFile file;
    ASSERT_EQ(runExport(GetParam(), GetParam().octets, file.path()), 1);
    EXPECT_EQ(readFile(file.path()), GetParam().expected);
}

TEST_P(MessageTest, IgnoresTrailingOctets) {
    const TemporaryFile file;
    Octets longer = GetParam().octets;
    longer.insert(longer.end(), {0xFF, 0x00, 0xA5});
    ASSERT_EQ(runExport(GetParam(), longer, file.path()), 1);
    EXPECT_EQ(readFile(file.path()), GetParam().expected);
}

std::string messageName(const ::testing::TestParamInfo<Message>& info) {
    std::string name = info.param.name;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(All, MessageTest, ::testing::ValuesIn(allMessages()), messageName);

}  // namespace
