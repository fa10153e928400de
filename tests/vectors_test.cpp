// Whole messages through the exports: the dump of each, octet for octet, also with octets appended.

#include "messages.h"

namespace {

TEST(Messages, DumpsAsExpected) {
    const std::vector<Message> messages = allMessages();
    ASSERT_GT(messages.size(), 100U);
    const TemporaryFile file;  // the same for all, longer and shorter ones
    for (const Message& message : messages) {
        SCOPED_TRACE(message.name);
        Octets octets = message.octets;
        EXPECT_EQ(runExport(message, octets, file.path()), 1);
        EXPECT_EQ(readFile(file.path()), message.expected);
        octets.insert(octets.end(), {0xFF, 0x00, 0xA5});
        EXPECT_EQ(runExport(message, octets, file.path()), 1);
        EXPECT_EQ(readFile(file.path()), message.expected) << "with trailing octets";
    }
}

}  // namespace
