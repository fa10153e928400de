// Whole messages: the dump of each, octet for octet. The exports dump those of the set of 1998,
// also with octets appended; the core dumps those of 2009, also cut short.

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

TEST(Messages, Of2009DumpAsExpected) {
    const std::vector<Message> messages = allMessages(TAMSEL_TEST_DATA_2009);
    ASSERT_GT(messages.size(), 30U);
    TamselDecoder decoder;
    for (const Message& message : messages) {
        SCOPED_TRACE(message.name);
        const TamselFamily& family = familyOf(message, kTamsel2009);
        for (size_t size = 0; size < message.octets.size(); ++size) {
            const Octets cut(message.octets.begin(),
                             message.octets.begin() + static_cast<ptrdiff_t>(size));
            EXPECT_NE(decoder.decode(family, cut, message.aligned), kAsnOk) << size;
        }
        ASSERT_EQ(decoder.decode(family, message.octets, message.aligned), kAsnOk);
        EXPECT_EQ(decoder.octets(), message.octets.size());
        std::string_view dump;
        ASSERT_EQ(decoder.dump(&dump), kAsnOk);
        EXPECT_EQ(dump, message.expected);
    }
}

}  // namespace
