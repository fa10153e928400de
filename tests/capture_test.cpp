// The parts of tamsel-capture that read what others sent: TPKT, Q.931, dumps.

#include <gtest/gtest.h>
#include <pcap/pcap.h>

#include <algorithm>
#include <span>
#include <sstream>
#include <stdexcept>
#include <string>

#include "call_follower.h"
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

TEST(Tpkt, HoldsNoMoreThanOne) {
    size_t lost = 0;
    const TpktReader::Receiver receiver{.message = [](auto) {},
                                        .lost = [&](size_t octets) { lost += octets; }};
    TpktReader reader;
    const Octets noise(100000, 0xFF);
    reader.read(noise, receiver);
    EXPECT_EQ(lost, noise.size());
    reader.read(parseHex("0300ffff"), receiver);  // ends within the noise
    reader.read(noise, receiver);
    EXPECT_EQ(lost, 2 * noise.size() - 65531);
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

struct CountingSink : MessageSink {
    void message(const CapturedMessage& /*message*/) override { ++messages; }
    void remark(const CaptureRemark& /*remark*/) override {}
    int messages = 0;
};

Endpoint host(uint32_t number, unsigned port) {
    const uint8_t address[] = {10, static_cast<uint8_t>(number >> 16),
                               static_cast<uint8_t>(number >> 8), static_cast<uint8_t>(number)};
    return makeEndpoint(address, port);
}

TEST(CallFollower, KnowsTheAddressesAnnouncedLast) {
    MessageDumper dumper;
    CountingSink sink;
    CallFollower follower(dumper, sink, "");
    uint32_t announced = 0;
    // A registrationConfirm with so many call signalling addresses, each with another host number.
    const auto announce = [&](uint32_t count) {
        Octets octets = parseHex("1000 0000 0600 0891 4a00 02");
        octets.insert(octets.end(),
                      {static_cast<uint8_t>(0x80 | count >> 8), static_cast<uint8_t>(count)});
        for (; count > 0; --count, ++announced)
            octets.insert(octets.end(), {0, 10, static_cast<uint8_t>(announced >> 16),
                                         static_cast<uint8_t>(announced >> 8),
                                         static_cast<uint8_t>(announced), 0x27, 0x10});
        octets.insert(octets.end(), {0, 0, 0x41});
        follower.datagram(0, {host(1, 1719), host(2, 1719)}, octets);
    };
    const auto isKnown = [&](uint32_t number) {
        return follower.wantsStream({host(1, 5000), host(number, 10000)});
    };
    EXPECT_FALSE(isKnown(0));
    while (announced < 65536) announce(8192);
    EXPECT_EQ(sink.messages, 8);
    EXPECT_TRUE(isKnown(0));
    announce(1);
    EXPECT_FALSE(isKnown(0));
    EXPECT_TRUE(isKnown(1));
    EXPECT_TRUE(isKnown(65536));
}

TEST(CallFollower, KnowsTheDialoguesThatCameLast) {
    MessageDumper dumper;
    CountingSink sink;
    CallFollower follower(dumper, sink, "004091fb");
    // An infoRequest that names its call, or one that the dialogue alone tells of.
    const auto request = [&](uint32_t number, bool named) {
        Octets octets = parseHex(named ? "56001053000101110000 4091fb7289f911802a050403020100"
                                       : "540010530001");
        octets[2] = static_cast<uint8_t>(number >> 8);
        octets[3] = static_cast<uint8_t>(number);
        const int before = sink.messages;
        follower.datagram(0, {host(1, 1719), host(2, 1719 + (number >> 16))}, octets);
        return sink.messages > before;
    };
    EXPECT_FALSE(request(0, false));
    for (uint32_t number = 0; number < 65536; ++number) request(number, true);
    EXPECT_EQ(sink.messages, 65536);
    EXPECT_TRUE(request(0, false));
    EXPECT_TRUE(request(65536, true));
    EXPECT_FALSE(request(0, false));
    EXPECT_TRUE(request(1, false));
}

/// What comes out of a network that is fed with IPv4 packets.
struct Wire : NetworkListener {
    bool wantsStream(const Flow& /*flow*/) override { return true; }
    void datagram(Time /*time*/, const Flow& /*flow*/, std::span<const uint8_t> octets) override {
        heard += formatHex(octets) + " ";
    }
    void streamOctets(Time /*time*/, const Flow& /*flow*/,
                      std::span<const uint8_t> octets) override {
        heard += formatHex(octets) + " ";
    }
    void streamGap(Time /*time*/, const Flow& /*flow*/, size_t /*octets*/) override {}
    void streamEnd(Time /*time*/, const Flow& /*flow*/) override { heard += "end "; }

    /// flags: 2000 for more fragments, and where the payload belongs, in units of 8 octets.
    void packet(Time time, unsigned id, unsigned flags, uint8_t protocol, const char* payload) {
        Octets octets = parseHex("4500 0000 0000 0000 4000 0000 0a000001 0a000002");
        const Octets rest = parseHex(payload);
        octets[3] = static_cast<uint8_t>(20 + rest.size());
        octets[4] = static_cast<uint8_t>(id >> 8);
        octets[5] = static_cast<uint8_t>(id);
        octets[6] = static_cast<uint8_t>(flags >> 8);
        octets[7] = static_cast<uint8_t>(flags);
        octets[9] = protocol;
        octets.insert(octets.end(), rest.begin(), rest.end());
        network.frame(DLT_RAW, {.time = time, .octets = octets, .length = octets.size()});
    }
    void first(Time time, unsigned id) { packet(time, id, 0x2000, 17, "06b7 06b7 000a 0000"); }
    void second(Time time, unsigned id) { packet(time, id, 0x0001, 17, "aabb"); }

    std::string heard;
    Network network{*this};
};

TEST(Network, FragmentsWaitFor30Seconds) {
    Wire wire;
    wire.first(0, 1);
    wire.second(30000000, 1);
    EXPECT_EQ(wire.heard, "aabb ");
    wire.first(0, 2);
    wire.second(30000001, 2);
    EXPECT_EQ(wire.heard, "aabb ");
    EXPECT_EQ(wire.network.losses().openFragments, 1U);
}

TEST(Network, FragmentsOf4096Packets) {
    Wire wire;
    for (unsigned id = 0; id <= 4096; ++id) wire.first(id, id);
    EXPECT_EQ(wire.network.losses().openFragments, 1U);
    wire.second(5000, 1);
    EXPECT_EQ(wire.heard, "aabb ");
    wire.second(5000, 0);
    EXPECT_EQ(wire.heard, "aabb ") << "the oldest was given up";
}

TEST(Network, StreamsAreSilentForADay) {
    constexpr Time kDay = Time{24} * 3600 * 1000000;
    Wire wire;
    wire.packet(1, 1, 0, 6, "1388 06b8 00000001 00000000 5002 2000 0000 0000");
    wire.packet(1, 2, 0, 6, "1388 06b8 00000002 00000000 5008 2000 0000 0000 aabb");
    wire.packet(kDay, 3, 0, 6, "1389 06b8 00000001 00000000 5002 2000 0000 0000");
    EXPECT_EQ(wire.heard, "aabb ");
    wire.packet(2 * kDay, 4, 0, 6, "138a 06b8 00000001 00000000 5002 2000 0000 0000");
    EXPECT_EQ(wire.heard.substr(0, 13), "aabb end end ");
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
