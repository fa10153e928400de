// The calls of a capture: bounded memory, and cases that no capture of the suite has.
#include <gtest/gtest.h>

#include <cstring>

#include "call_book.h"
#include "call_text.h"
#include "detail_writer.h"
#include "message_text.h"
#include "presenter.h"

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

TEST(CallBook, WhatIsKeptOfACallIsBounded) {
    CallBook book;
    MessageDetails details;
    const std::string longName(1000, '4');
    details.facts.push_back({"from", longName});
    const CallRecord* call = book.note(messageOf(1, "setup"), details);
    EXPECT_LE(call->from.size(), 128U);
    book.note(messageOf(1, "alerting"), details);
    for (uint8_t i = 0; i < 100; ++i) {
        details.clear();
        details.facts.push_back({"codec", std::to_string(i)});
        CapturedMessage message = messageOf(1, "openLogicalChannel");
        message.family = FamilyId::kH245;
        message.flow.source.address.front() = i;
        book.note(message, details);
        message.transport = Transport::kFastStart;
        call = book.note(message, details);
    }
    EXPECT_EQ(call->offers.size(), CallRecord::kMaxOffers);
    EXPECT_EQ(call->codecs.size(), CallRecord::kMaxCodecs);
    EXPECT_EQ(call->hosts.size(), CallRecord::kMaxHosts);
}

TEST(CallBook, HostsOutsideCallsAreBounded) {
    CallBook book;
    CapturedMessage message = messageOf(0, "registrationRequest");
    for (size_t i = 0; i <= CallBook::kMaxEndpoints; ++i) {
        message.flow.source.address[0] = static_cast<uint8_t>(i >> 8);
        message.flow.source.address[1] = static_cast<uint8_t>(i);
        book.noteOutsideCalls(message, {});
    }
    EXPECT_EQ(book.endpoints().size(), CallBook::kMaxEndpoints);
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

TEST(CallBook, TheFirstReleaseCompleteTellsWhy) {
    CallBook book;
    MessageDetails details;
    CapturedMessage message = messageOf(1, "setup");
    message.time = 1000;
    book.note(message, details);
    message = messageOf(1, "releaseComplete");  // captured out of order
    details.facts.push_back({"cause", int64_t{17}});
    book.note(message, details);
    details.facts.back().value = int64_t{16};
    const CallRecord* const call = book.note(message, details);
    EXPECT_EQ(call->cause, 17U);
    EXPECT_EQ(durationText(*call), "0.000 s");
}

TEST(CallBook, AChannelIsOfTheHostThatOffersIt) {
    CallBook book;
    MessageDetails details;
    CapturedMessage message = messageOf(1, "openLogicalChannel");
    message.family = FamilyId::kH245;
    for (const std::string codec : {"g711", "a\x1b"}) {  // both hosts offer channel 1
        details.facts = {{"channel", int64_t{1}}, {"codec", codec}};
        book.note(message, details);
        message.flow = message.flow.reversed();
    }
    message.name = "openLogicalChannelReject";  // of the second
    details.facts = {{"channel", int64_t{1}}, {"reason", std::string("unspecified")}};
    EXPECT_EQ(book.note(message, details)->refusal, "a\\x1b refused: unspecified");
    CallRecord call;
    call.codecs = {"a\x1b"};
    EXPECT_EQ(outcomeText(call), "; a\\x1b");
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

/// A view that notes which calls are forgotten.
struct Forgotten : View {
    void message(const CapturedMessage& /*message*/, const MessageDetails& /*details*/,
                 const CallRecord* /*call*/) override {}
    void forgotten(const CallRecord& call, const CallBook& /*book*/) override {
        numbers.push_back(call.number);
    }
    bool needsCalls() const override { return true; }

    std::vector<size_t> numbers;
};

TEST(Presenter, ViewsForgetOnlyCallsThatTheyShow) {
    Forgotten view;
    Presenter presenter({.selection = {.families = {FamilyId::kRas}}}, {&view});
    for (size_t i = 0; i < CallBook::kMaxCalls + 2; ++i) {
        CapturedMessage message = messageOf(1, "setup");
        std::memcpy(message.call.callIdentifier.data(), &i, sizeof i);
        message.outcome = Outcome::kRefused;
        if (i == 1) message.family = FamilyId::kRas;
        presenter.message(message);
    }
    EXPECT_EQ(view.numbers, std::vector<size_t>{2});
}

TEST(MessageText, ListsAreEscaped) {
    MessageDetails details;
    DetailWriter(details).sayList({"a\x1b", "b"});
    EXPECT_EQ(details.summary, "a\\x1b, b");
}

TEST(MessageText, LinesAreSplitAtBlanksIfPossible) {
    using Lines = std::vector<std::string_view>;
    EXPECT_EQ(wrapped("one two three", 8), (Lines{"one two", "three"}));
    EXPECT_EQ(wrapped("onetwothree", 4), (Lines{"onet", "woth", "ree"}));
    EXPECT_EQ(wrapped("", 4), (Lines{""}));
}

}  // namespace
