// The parts of tamsel-capture that read what others sent: TPKT, Q.931, dumps.

#include <gtest/gtest.h>

#include "dump_reader.h"
#include "hex_text.h"
#include "made_messages.h"
#include "q931.h"
#include "sink_thread.h"
#include "tpkt.h"

namespace {

/// What a TpktReader tells of a stream that comes in parts of that size, "-" in it standing for a
/// gap: "[message]", and "n" for octets passed over.
std::string readTpkts(const std::string& stream, size_t part) {
    std::string told;
    size_t lost = 0;
    const auto tellLost = [&] {
        if (lost > 0) told += std::to_string(lost);
        lost = 0;
    };
    const TpktReader::Receiver receiver{
        .message =
            [&](std::span<const uint8_t> octets) {
                tellLost();
                told += "[" + formatHex(octets) + "]";
            },
        .lost = [&](size_t octets) { lost += octets; },
    };
    TpktReader reader;
    std::istringstream pieces(stream);
    bool first = true;
    for (std::string piece; std::getline(pieces, piece, '-'); first = false) {
        if (!first) reader.skip(receiver);
        const Octets octets = parseHex(piece);
        for (size_t at = 0; at < octets.size(); at += part)
            reader.read(std::span(octets).subspan(at, std::min(part, octets.size() - at)),
                        receiver);
    }
    reader.skip(receiver);
    tellLost();
    return told;
}

TEST(Tpkt, HoweverItIsCut) {
    const struct {
        const char* why;
        const char* stream;
        const char* told;
    } rows[] = {
        {"two in a row", "0300000511 030000062233", "[11][2233]"},
        {"no payload", "03000004 0300000511", "[][11]"},
        {"the last cut short", "0300000511 03000006", "[11]4"},
        {"behind a gap", "0300000511 0300 - 3344 0300000522", "[11]4[22]"},
        {"a payload that looks like a header", "0300000803000300 0300000511", "[03000300][11]"},
        {"a length below the header's own", "0300000511 03000003 0300000522", "[11]4[22]"},
        {"another version", "0300000511 0400000522 0300000533", "[11]5[33]"},
        {"nothing but noise", "ffffffffffff", "6"},
        {"all lost", "-", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        for (size_t part = 1; part < 24; ++part) {
            SCOPED_TRACE(part);
            EXPECT_EQ(readTpkts(row.stream, part), row.told);
        }
    }
}

TEST(Q931, WhatStandsAroundAMessage) {
    const struct {
        const char* why;
        const char* octets;
        bool isWhole;
        unsigned callReference;
        const char* userUser;
    } rows[] = {
        {"elements before it", "0802802a05 04038890a5 a1 7e000405aabbcc", true, 42, "aabbcc"},
        {"an element behind it", "0802012a05 7e000205aa 7000", true, 298, "aa"},
        {"call reference of one octet", "08018305 7e000205aa", true, 3, "aa"},
        {"without call reference", "080005", true, 0, ""},
        {"another coding of the element", "08020001 05 7e000204aa", true, 1, ""},
        {"an empty one", "0802000105 7e0000", true, 1, ""},
        {"another protocol", "0902000105", false, 0, ""},
        {"cut in the call reference", "080200", false, 0, ""},
        {"cut in a length", "0802000105 7e00", false, 0, ""},
        {"cut in an element", "0802000105 7e000405aabb", false, 0, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        const Octets octets = parseHex(row.octets);
        const auto message = readQ931(octets);
        ASSERT_EQ(message.has_value(), row.isWhole);
        if (!message) continue;
        EXPECT_EQ(message->callReference, row.callReference);
        EXPECT_EQ(formatHex(message->userUser), row.userUser);
    }
}

TEST(DumpReader, FactsOfAMessage) {
    const MessageFacts facts =
        readFacts(kUi,
                  "A.h323-message-body.t = 1\n"
                  "H323-UserInformation.h323-uu-pdu.h323-message-body.t = 1\n"
                  "H323-UserInformation.h323-uu-pdu.h323-message-body."
                  "u@setup.h245Address.t = 1\n"
                  "X.h245Address.u@ipAddress.ip.numocts = 4\n"
                  "X.h245Address.u@ipAddress.ip.data = \n"
                  "0a 00 00 01                                      ....\n"
                  "X.h245Address.u@ipAddress.port = 1024\n"
                  "X.callSignalAddress.elem[3].u@ip6Address.ip.numocts = 16\n"
                  "X.callSignalAddress.elem[3].u@ip6Address.ip.data = \n"
                  "20 01 0d b8 00 00 00 00 00 00 00 00 00 00 00 01   = .\n"
                  "X.callSignalAddress.elem[3].u@ip6Address.port = 1720\n"
                  "X.mediaChannel.u@ipAddress.port = 5000\n"
                  "X.h245Control.elem[0].numocts = 17\n"
                  "X.h245Control.elem[0].data = \n"
                  "00 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f  ....\n"
                  "10                                               .\n"
                  "X.h245Control.elem[1].numocts = 0\n"
                  "X.h245Control.elem[1].data = \n"
                  "                                                 \n"
                  "X.callIdentifier.guid.numocts = 2\n"
                  "X.callIdentifier.guid.data = \n"
                  "ab cd  \n"
                  "=\na=\n =\n = \nX.display = 'a\nb='");
    EXPECT_EQ(facts.name, "setup");
    EXPECT_EQ(facts.callIdentifier, "abcd");
    ASSERT_EQ(facts.announcements.size(), 2U);
    EXPECT_EQ(facts.announcements[0].purpose, Purpose::kForH245);
    EXPECT_EQ(toString(facts.announcements[0].endpoint), "10.0.0.1:1024");
    EXPECT_EQ(facts.announcements[1].purpose, Purpose::kForSignalling);
    EXPECT_EQ(toString(facts.announcements[1].endpoint), "[2001:db8::1]:1720");
    ASSERT_EQ(facts.h245Control.size(), 2U);
    EXPECT_EQ(formatHex(facts.h245Control[0]), "000102030405060708090a0b0c0d0e0f10");
    EXPECT_EQ(facts.h245Control[1].size(), 0U);
}

TEST(MessageDumper, DumpsThatNoPipeHolds) {
    MessageDumper dumper;
    const auto small = dumper.dump(kUi, listMessage(1, true), true);
    ASSERT_TRUE(small);
    const std::string before(*small);
    const auto large = dumper.dump(kUi, listMessage(16000, true), true);
    ASSERT_TRUE(large);
    EXPECT_GT(large->size(), size_t{1} << 21);
    EXPECT_NE(large->find("elem[15999]"), std::string::npos);
    EXPECT_TRUE(large->ends_with(" \n"));
    EXPECT_FALSE(dumper.dump(kUi, parseHex("ff"), true));
    EXPECT_EQ(dumper.dump(kUi, listMessage(1, true), true), before);
}

TEST(DumpReader, TextThatLooksLikeADump) {
    // A character string may hold line breaks, and whatever its sender likes behind them.
    const MessageFacts facts = readFacts(kRas,
                                         "RasMessage.u@admissionRequest.x = 'a\n"
                                         "X.callIdentifier.guid.numocts = 4294967295\n"
                                         "X.callIdentifier.guid.data = \n"
                                         "12 zz 34\n"
                                         "X.h245Control.elem[0].numocts = 3\n"
                                         "X.h245Control.elem[0].data = \n"
                                         "1\n"
                                         "].data = \n"
                                         "X.rasAddress.u@ipAddress.port = 99999999999'\n");
    EXPECT_EQ(facts.name, "admissionRequest");
    EXPECT_EQ(facts.callIdentifier, "");
}

struct FailingSink : MessageSink {
    void message(const CapturedMessage& /*message*/) override { throw std::runtime_error("full"); }
    void remark(const CaptureRemark& /*remark*/) override { ++remarks; }
    int remarks = 0;
};

TEST(SinkThread, PassesFailuresBack) {
    FailingSink failing;
    SinkThread sink(failing, 0);
    sink.remark({});
    EXPECT_THROW(
        {
            for (int i = 0; i < 3; ++i) sink.message({});
            sink.finish();
        },
        std::runtime_error);
    EXPECT_EQ(failing.remarks, 1);
}

}  // namespace
