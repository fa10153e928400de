// The calls of a capture: bounded memory, and cases that no capture of the suite has.
#include <gtest/gtest.h>

#include "call_book.h"
#include "message_text.h"

namespace {

/// A message of the call with this number, between two hosts.
CapturedMessage messageOf(uint8_t number, std::string_view name) {
    CapturedMessage message{};
    message.name = name;
    message.flow.source = makeEndpoint(std::array<uint8_t, 4>{10, 0, 0, 1}, 1000);
    message.flow.destination = makeEndpoint(std::array<uint8_t, 4>{10, 0, 0, 2}, 1720);
    message.family = FamilyId::kUi;
    message.transport = Transport::kTcp;
    message.call.callIdentifier.fill(number);
    return message;
}

TEST(CallBook, TheOldestCallIsForgottenFirst) {
    CallBook book(2);
    std::vector<size_t> forgotten;
    book.onForgotten([&](const CallRecord& call) { forgotten.push_back(call.number); });
    const MessageDetails details;
    for (const uint8_t call : std::to_array<uint8_t>({1, 2, 1, 3, 4}))
        book.note(messageOf(call, "setup"), details);
    EXPECT_EQ(forgotten, (std::vector<size_t>{1, 2}));
    EXPECT_EQ(book.find(2), nullptr);
    ASSERT_NE(book.find(3), nullptr);
    EXPECT_EQ(book.find(3)->messages, 1U);
    // A later message of a forgotten call begins another.
    EXPECT_EQ(book.note(messageOf(1, "alerting"), details)->number, 5U);
}

TEST(CallBook, NoConferenceOfAForgottenCallIsFound) {
    CallBook book(1);
    const MessageDetails details;
    for (const uint8_t conference : std::to_array<uint8_t>({7, 8})) {
        CapturedMessage message = messageOf(1, "setup");
        message.call.conferenceID.fill(conference);
        EXPECT_EQ(book.note(message, details)->number, 1U);
    }
    book.note(messageOf(2, "setup"), details);  // the first call is forgotten
    for (const uint8_t conference : std::to_array<uint8_t>({7, 8})) {
        CapturedMessage message = messageOf(0, "alerting");
        message.call.conferenceID.fill(conference);
        EXPECT_EQ(book.note(message, details)->number, conference - 4U);
    }
}

TEST(CallBook, LossesBelongToTheCallOfTheStream) {
    CallBook book;
    const MessageDetails details;
    const CapturedMessage setup = messageOf(1, "setup");
    const CaptureRemark before{0, setup.flow, Remark::kStartsMidway, 0};
    EXPECT_EQ(book.note(before), nullptr);
    EXPECT_EQ(book.note(setup, details)->losses, 1U);
    const CaptureRemark after{0, setup.flow.reversed(), Remark::kOctetsMissing, 9};
    ASSERT_NE(book.note(after), nullptr);
    EXPECT_EQ(book.calls()[0].losses, 2U);
}

TEST(CallBook, LossesOfAForgottenCallBelongToNoCall) {
    CallBook book(1);
    const MessageDetails details;
    book.note(messageOf(1, "setup"), details);
    CapturedMessage other = messageOf(2, "setup");
    other.flow.source.port = 2000;
    book.note(other, details);
    EXPECT_EQ(book.note({0, messageOf(1, "").flow, Remark::kOctetsMissing, 9}), nullptr);
    EXPECT_EQ(book.calls()[0].losses, 0U);
}

TEST(CallBook, ASetupAfterTheEndBeginsTheCallAgain) {
    CallBook book;
    MessageDetails details;
    book.note(messageOf(1, "setup"), details);
    details.summary = "17 user busy";
    details.facts.push_back({"cause", int64_t{17}});
    EXPECT_EQ(book.note(messageOf(1, "releaseComplete"), details)->state, CallState::kFailed);
    details.clear();
    EXPECT_EQ(book.note(messageOf(1, "setup"), details)->state, CallState::kCalling);
    const CallRecord* const call = book.note(messageOf(1, "connect"), details);
    EXPECT_EQ(call->state, CallState::kConnected);
    EXPECT_EQ(call->why, "");
    EXPECT_EQ(call->cause, std::nullopt);
}

TEST(CallBook, ACallWithoutACommonCodecFails) {
    CallBook book;
    MessageDetails details;
    book.note(messageOf(1, "setup"), details);
    book.note(messageOf(1, "connect"), details);
    CapturedMessage capabilities = messageOf(1, "terminalCapabilitySet");
    capabilities.family = FamilyId::kH245;
    for (const char* codec : {"g729", "a\x1b"}) {
        details.clear();
        details.facts.push_back({"codecs", std::vector<std::string>{codec}});
        book.note(capabilities, details);
        capabilities.flow = capabilities.flow.reversed();
    }
    details.clear();
    const CallRecord* const call = book.note(messageOf(1, "releaseComplete"), details);
    EXPECT_EQ(call->state, CallState::kFailed);
    EXPECT_EQ(call->why, "no common codec: g729 and a\\x1b");
}

TEST(MessageText, LinesAreSplitAtBlanksIfPossible) {
    using Lines = std::vector<std::string_view>;
    EXPECT_EQ(wrapped("one two three", 8), (Lines{"one two", "three"}));
    EXPECT_EQ(wrapped("onetwothree", 4), (Lines{"onet", "woth", "ree"}));
    EXPECT_EQ(wrapped("", 4), (Lines{""}));
}

}  // namespace
