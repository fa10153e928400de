// Parts of tamsel-capture: times of a selection, frames that are kept, totals.

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "capture_file.h"
#include "capture_writer.h"
#include "histogram.h"
#include "selection.h"
#include "stats.h"
#include "support.h"

namespace {

TEST(Selection, FormsOfTimes) {
    constexpr Time kSecond = 1000000;
    const struct {
        const char* text;
        std::optional<Time> time;
        bool hasDate;
    } rows[] = {
        {"1970-01-02", 86400 * kSecond, true},
        {"1970-01-02T00:01", 86460 * kSecond, true},
        {"1970-01-01 00:00:01.25Z", 1250000, true},
        {"23:59:59.999999", 86400 * kSecond - 1, false},
        {"00:00:00.0000019", 1, false},
        {"24:00", {}, false},
        {"2026-02-29", {}, true},
        {"2026-02-28T", {}, true},
        {"5:11", {}, false},
        {"05:11 pm", {}, false},
        {"", {}, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        const auto moment = readMoment(row.text);
        ASSERT_EQ(moment.has_value(), row.time.has_value());
        if (!moment) continue;
        EXPECT_EQ(moment->time, *row.time);
        EXPECT_EQ(moment->hasDate, row.hasDate);
    }
}

TEST(CaptureWriter, KeepsFramesThatCannotBeReadAgain) {
    const std::string name = testing::TempDir() + "kept.pcapng";
    const Octets octets(1000, 0);
    CaptureWriter writer(name, 10000);
    const auto read = [&](uint32_t number) {
        writer.read({.id = {0, number},
                     .time = number,
                     .linkType = number % 2,  // two link types, which only pcapng supports
                     .octets = octets,
                     .length = 1500});
    };
    const auto select = [&](std::vector<FrameId> frames) { writer.select(frames); };
    for (uint32_t number = 1; number <= 5; ++number) read(number);
    select({{0, 2}, {0, 5}});
    select({{0, 1}, {0, 2}});
    for (uint32_t number = 6; number <= 20; ++number) read(number);
    select({{0, 7}, {0, 20}});  // 7 is no longer there
    writer.finish({"-"});
    EXPECT_EQ(writer.missing(), 1U);
    std::string written;
    CaptureFile file(name);
    for (Frame frame; file.next(frame);) {
        written += std::to_string(frame.time) + " ";
        EXPECT_EQ(frame.linkType, frame.time % 2);
        EXPECT_EQ(frame.octets.size(), octets.size());
        EXPECT_EQ(frame.length, 1500U);
    }
    EXPECT_EQ(written, "1 2 5 20 ");
    EXPECT_EQ(writer.written(), 4U);
}

TEST(Histogram, PercentilesWithin3Percent) {
    Histogram histogram;
    for (uint64_t value = 100000; value >= 1; --value) histogram.add(value);
    for (const unsigned percent : {1U, 50U, 95U, 100U}) {
        const double exact = 1000.0 * percent;
        EXPECT_NEAR(static_cast<double>(histogram.percentile(percent)), exact, 0.03 * exact);
    }
    EXPECT_EQ(histogram.percentile(0), 1U);
    histogram.add(~uint64_t{0});
    EXPECT_EQ(histogram.max(), ~uint64_t{0});
}

TEST(Stats, ResponseTimesOfRas) {
    const Endpoint asking = makeEndpoint(hex("0a000001"), 5000);
    const Endpoint gatekeeper = makeEndpoint(hex("0a000002"), 1719);
    testing::internal::CaptureStdout();
    {
        Writer writer({}, 1 << 16);
        Stats stats(writer);
        const auto say = [&](Time milliseconds, const char* name, int64_t number, bool isAnswer) {
            CapturedMessage message{};
            message.time = milliseconds * 1000;
            message.flow = isAnswer ? Flow{gatekeeper, asking} : Flow{asking, gatekeeper};
            message.name = name;
            MessageDetails details;
            details.facts.push_back({"sequenceNumber", number});
            stats.message(message, details, nullptr);
        };
        say(0, "admissionRequest", 1, false);
        say(5, "admissionConfirm", 2, true);  // the answer to another request
        say(7, "requestInProgress", 1, true);
        say(10, "admissionRequest", 1, false);  // repeated
        say(40, "admissionReject", 1, true);
        say(50, "admissionReject", 1, true);     // repeated: not a second answer
        say(100, "admissionRequest", 1, false);  // the number is used again
        say(101, "admissionConfirm", 1, true);
        say(200, "admissionRequest", 3, false);
        say(300, "disengageRequest", 3, false);  // another request with the same number
        say(302, "disengageConfirm", 3, true);
        say(400, "bandwidthRequest", 4, false);
        say(399, "bandwidthConfirm", 4, true);  // captured out of order
        stats.end(CallBook());
        writer.finish();
    }
    const std::string text = testing::internal::GetCapturedStdout();
    EXPECT_NE(text.find("admissionRequest                     2         1         1"
                        "       1.0       1.0      40.0      40.0\n"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("disengageRequest                     1         0         0       2.0"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("bandwidthRequest                     1         0         0       0.0"),
              std::string::npos)
        << text;
}

TEST(Stats, KindsOfRefusalsAreBounded) {
    testing::internal::CaptureStdout();
    Writer writer({}, 1 << 16);
    Stats stats(writer);
    CapturedMessage message{};
    message.outcome = Outcome::kRefused;
    for (int i = 0; i < 300; ++i) {
        message.reason = "reason " + std::to_string(i);
        stats.message(message, {}, nullptr);
    }
    stats.end(CallBook());
    writer.finish();
    EXPECT_NE(testing::internal::GetCapturedStdout().find("        44  others\n"),
              std::string::npos);
}

}  // namespace
