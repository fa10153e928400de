// Messages: which octets they are, their names and frames, and the messages in call signalling.

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "message_finder.h"
#include "packets.h"

namespace {

TEST(MessageFacts, NameOfEveryMessage) {
    size_t compared = 0;
    for (const auto& file : std::filesystem::directory_iterator(TAMSEL_TEST_DATA)) {
        std::string name = file.path().stem();
        if (file.path().extension() != ".hex" || !name.starts_with("alt-")) continue;
        SCOPED_TRACE(name);
        std::ifstream stream(file.path());
        const std::string text(std::istreambuf_iterator<char>(stream), {});
        const bool isAligned = !name.ends_with("-unaligned");
        name = name.substr(0, name.rfind('-'));  // alt-h245-request-requestMode
        const FamilyId family = name.starts_with("alt-ras-")  ? FamilyId::kRas
                                : name.starts_with("alt-ui-") ? FamilyId::kUi
                                                              : FamilyId::kH245;
        const Octets octets = hex(text);
        TamselDecoder decoder;
        MessageFacts facts;
        ASSERT_EQ(decoder.decode(familyOf(kTamsel1998, family), octets, isAligned), kAsnOk);
        readFacts(kTamsel1998, family, decoder, facts);
        EXPECT_EQ(facts.name, name.substr(name.rfind('-') + 1));
        (void)decoder.decode(familyOf(kTamsel2009, family), octets, isAligned);
        readFacts(kTamsel2009, family, decoder, facts);
        EXPECT_EQ(facts.name, name.substr(name.rfind('-') + 1)) << "with the modules of 2009";
        ++compared;
        // A message that does not decode still has its name.
        const auto cut = std::span(octets).first(octets.size() / 2);
        if (decoder.decode(familyOf(kTamsel1998, family), cut, isAligned) == kAsnOk ||
            cut.size() < 8)
            continue;
        readFacts(kTamsel1998, family, decoder, facts);
        EXPECT_EQ(facts.name, name.substr(name.rfind('-') + 1));
    }
    EXPECT_GT(compared, 80U);
}

/// A finder, with the number and the frames of the messages that it passed on.
struct Finder : MessageSink {
    explicit Finder(const std::string& call) : finder(*this, budget, unread, {call, {}}) {}
    void message(const CapturedMessage& message) override {
        ++messages;
        for (const FrameId& frame : message.frames) frames += std::to_string(frame.number) + " ";
        frames += "| ";
    }
    void remark(const CaptureRemark& /*remark*/) override { ++remarks; }

    int messages = 0;
    int remarks = 0;
    std::string frames;  // of each message
    MemoryBudget budget{1 << 20};
    Unread unread;
    MessageFinder finder;
};

Endpoint host(uint32_t number, unsigned port) {
    const uint8_t address[] = {10, static_cast<uint8_t>(number >> 16),
                               static_cast<uint8_t>(number >> 8), static_cast<uint8_t>(number)};
    return makeEndpoint(address, port);
}

/// The messages that a call-signalling message carries: each with its transport, name and octets,
/// and what was added to these.
struct Carried : MessageSink {
    void message(const CapturedMessage& message) override {
        if (message.family != FamilyId::kH245) return;
        const std::string octets = formatHex(message.octets);
        std::string encoding = formatHex(message.encoding);
        ASSERT_TRUE(encoding.ends_with(octets));
        encoding.resize(encoding.size() - octets.size());
        text += "\n" + std::string(toString(message.transport)) + " " + std::string(message.name) +
                " " + octets.substr(0, 8) + " " + encoding + message.reason;
    }
    void remark(const CaptureRemark& remark) override {
        text += " and " + std::to_string(remark.octets);
    }

    std::string text;
    MemoryBudget budget{1 << 20};
    Unread unread;
    MessageFinder finder{*this, budget, unread, {}};
};

TEST(MessageFinder, DecodesMessagesInCallSignalling) {
    const struct {
        const char* why;
        const char* octets;
        const char* instead;
        const char* carried;
    } rows[] = {
        {"two proposals, two messages", "", "",
         "\nfastStart openLogicalChannel 0000000e 03\nfastStart openLogicalChannel 0000010a 03"
         "\ntunnel masterSlaveDetermination 01003280 \ntunnel roundTripDelayRequest 090007 "},
        {"a damaged proposal: the octet in the reason is that on the wire", "060007b835010040",
         "7f0007b835010040",
         "\nfastStart openLogicalChannel 0000000e 03Unexpected end of buffer on decode (status -2) "
         "at octet 18 of 31\nfastStart openLogicalChannel 0000010a 03"
         "\ntunnel masterSlaveDetermination 01003280 \ntunnel roundTripDelayRequest 090007 "},
        {"octets after a proposal", "0000000e180c40", "00000000000000",
         "\nfastStart openLogicalChannel 00000000 03 and 20"
         "\nfastStart openLogicalChannel 0000010a 03"
         "\ntunnel masterSlaveDetermination 01003280 \ntunnel roundTripDelayRequest 090007 "},
        {"octets after a message", "01003280924fd5", "09000700000000",
         "\nfastStart openLogicalChannel 0000000e 03\nfastStart openLogicalChannel 0000010a 03"
         "\ntunnel roundTripDelayRequest 090007  and 4\ntunnel roundTripDelayRequest 090007 "},
    };
    const std::string setup =
        readFile(TAMSEL_TEST_DATA_2009 "/ui-setup-parallelH245Control-aligned.hex");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        std::string message = setup;
        message.replace(message.find(row.octets), std::strlen(row.octets), row.instead);
        Carried sink;
        sink.finder.signalling({}, {host(1, 3000), host(2, 1720)},
                               hex("0802000105 7e00d505" + message), nullptr);
        EXPECT_EQ(sink.text, row.carried);
    }
}

TEST(MessageFinder, AMessageThatIsCutIsNotOfTheCallBefore) {
    Finder finder("c0fef93e");
    const std::string setup =
        readFile(TAMSEL_TEST_DATA_2009 "/ui-setup-parallelH245Control-aligned.hex");
    finder.finder.signalling({}, {host(1, 3000), host(2, 1720)}, hex("0802000105 7e00d505" + setup),
                             nullptr);
    EXPECT_EQ(finder.messages, 5);
    finder.finder.signalling({}, {host(3, 3000), host(4, 1720)}, hex("0802000205 7e00d505"),
                             nullptr);
    EXPECT_EQ(finder.messages, 5);
}

TEST(MessageFinder, DatagramsThatMayBeRasAreKeptIfTheyAreShort) {
    for (const bool isLong : {false, true}) {
        Finder finder("");
        Octets request = hex(isLong ? "1800 0000 8190" : "1800 0000 01");  // unregistration
        for (int i = 0; i < (isLong ? 400 : 1); ++i)
            request.insert(request.end(), {0, 10, 0, 0, 1, 0x27, 0x10});
        const Flow flow{host(1, 5000), host(2, 5001)};
        finder.finder.datagram({}, flow, request);
        EXPECT_EQ(finder.messages, 0);
        finder.finder.datagram({}, flow.reversed(), hex("1c0000"));  // its answer
        EXPECT_EQ(finder.messages, isLong ? 0 : 2);
    }
    Finder finder("");
    const Flow flow{host(1, 5000), host(2, 5001)};
    finder.finder.datagram({}, flow, hex("1800 0000 00"));
    finder.finder.datagram({}, flow.reversed(), hex("1800 0000 00"));
    EXPECT_EQ(finder.messages, 0) << "two requests, and no answer";
}

TEST(MessageFinder, TheOldestAddressIsForgottenFirst) {
    Finder finder("");
    uint32_t announced = 0;
    // A registrationConfirm with so many call signalling addresses, each of another host.
    const auto announce = [&](uint32_t count) {
        Octets octets = hex("1000 0000 0600 0891 4a00 02");
        octets.insert(octets.end(),
                      {static_cast<uint8_t>(0x80 | count >> 8), static_cast<uint8_t>(count)});
        for (; count > 0; --count, ++announced)
            octets.insert(octets.end(), {0, 10, static_cast<uint8_t>(announced >> 16),
                                         static_cast<uint8_t>(announced >> 8),
                                         static_cast<uint8_t>(announced), 0x27, 0x10});
        octets.insert(octets.end(), {0, 0, 0x41});
        finder.finder.datagram({}, {host(1, 1719), host(2, 1719)}, octets);
    };
    const auto isKnown = [&](uint32_t number) {
        return finder.finder.directory()
            .find(Protocol::kTcp, {host(1, 5000), host(number, 10000)})
            .has_value();
    };
    EXPECT_FALSE(isKnown(0));
    while (announced < 32768) announce(8192);
    EXPECT_EQ(finder.messages, 4);
    EXPECT_TRUE(isKnown(0));
    announce(1);
    EXPECT_FALSE(isKnown(0));
    EXPECT_TRUE(isKnown(1));
    EXPECT_TRUE(isKnown(32768));
}

TEST(MessageFinder, KnowsTheGatekeeperThatARejectNames) {
    Finder finder("");
    const Octets reject = hex("0a00 0000 0600 0891 4a00 02 0020 0b 0001 00 0a00004d 077f 81 00");
    finder.finder.datagram({}, {host(9, 1719), host(1, 5000)}, reject);
    EXPECT_EQ(finder.messages, 1);
    const Flow flow{host(1, 5000), host(77, 1919)};
    EXPECT_TRUE(finder.finder.directory().find(Protocol::kUdp, flow).has_value());
    EXPECT_TRUE(finder.finder.directory().find(Protocol::kUdp, flow.reversed()).has_value());
}

TEST(MessageFinder, TheOldestPeerOfAnAddressIsForgottenFirst) {
    Directory directory({});
    const auto callTold = [&](uint32_t peer) {
        return directory.find(Protocol::kTcp, {host(peer, 5000), host(99, 4000)})
            ->call.callIdentifier[0];
    };
    for (uint8_t peer = 1; peer <= 18; ++peer) {
        CallNames call;
        call.callIdentifier.fill(peer);
        directory.announce({Purpose::kH245, host(99, 4000)}, host(peer, 0).address, call);
    }
    EXPECT_EQ(callTold(18), 18);
    EXPECT_EQ(callTold(2), 2);
    EXPECT_EQ(callTold(1), 18) << "forgotten";
}

TEST(MessageFinder, TheOldestDialogueIsForgottenFirst) {
    Finder finder("004091fb");
    // An infoRequest that names its call, or a disengageConfirm, whose call only the dialogue
    // tells.
    const auto request = [&](uint32_t number, bool named) {
        Octets octets =
            hex(named ? "56001053000101110000 4091fb7289f911802a050403020100" : "400000");
        octets[named ? 2 : 1] = static_cast<uint8_t>(number >> 8);
        octets[named ? 3 : 2] = static_cast<uint8_t>(number);
        const int before = finder.messages;
        finder.finder.datagram({}, {host(1, 1719), host(2, 1719 + (number >> 16))}, octets);
        return finder.messages > before;
    };
    EXPECT_FALSE(request(0, false));
    for (uint32_t number = 0; number < 65536; ++number) request(number, true);
    EXPECT_EQ(finder.messages, 65536);
    EXPECT_TRUE(request(0, false));
    EXPECT_TRUE(request(65536, true));
    EXPECT_FALSE(request(0, false));
    EXPECT_TRUE(request(1, false));
}

TEST(MessageFinder, TheFramesOfEachMessage) {
    // A TPKT of 9 octets with a whole Q.931 message, in a stream that is recognised by its content.
    const std::string setup = "030000090802000105";
    const std::string two = setup + setup;
    const struct {
        const char* why;
        std::vector<std::pair<int, std::string>> segments;  // sequence, payload; 0: acknowledges
        const char* frames;                                 // the SYN is the first
    } rows[] = {
        {"two messages in a segment", {{1, two}}, "2 | 2 | "},
        {"a message in three segments, and the next in the last",
         {{1, two.substr(0, 2)}, {2, two.substr(2, 4)}, {4, two.substr(6)}},
         "2 3 4 | 4 | "},
        {"segments in the wrong order",
         {{1, two.substr(0, 6)}, {10, setup}, {4, two.substr(6, 12)}},
         "2 4 | 3 | "},
        {"a longer retransmission of a segment that waits",
         {{1, two.substr(0, 6)},
          {8, two.substr(14, 2)},
          {8, two.substr(14)},
          {4, two.substr(6, 8)}},
         "2 4 5 | 4 | "},
        {"after a gap that is acknowledged", {{1, setup}, {20, setup}, {0, ""}}, "2 | 3 | "},
        {"a gap that is filled late",
         {{1, setup}, {19, setup}, {0, ""}, {10, setup}},
         "2 | 3 | 5 | "},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        Finder finder("");
        Packets packets(finder.finder, finder.budget, finder.unread);
        const auto sequence = [](int number) {
            std::array<char, 9> text{};
            std::snprintf(text.data(), text.size(), "%08x", static_cast<unsigned>(number));
            return std::string(text.data());
        };
        packets.segment(1, sequence(0), sequence(0), "02", "");
        for (const auto& [number, payload] : row.segments)
            packets.segment(1, sequence(number), sequence(number > 0 ? 0 : 100), "10", payload,
                            number == 0);
        packets.network.end();
        EXPECT_EQ(finder.frames, row.frames);
        EXPECT_EQ(finder.budget.used(), 0U);
    }

    Finder finder("");
    Packets packets(finder.finder, finder.budget, finder.unread);
    packets.packet(1, 1, 0x0001, 17, "400000");  // a RAS message in two fragments
    packets.packet(1, 1, 0x2000, 17, "06b7 06b7 000b 0000");
    EXPECT_EQ(finder.frames, "1 2 | ");
}

TEST(MessageFinder, RemarksThatWaitForTheirCallAreBounded) {
    Finder finder("c0fef93e");
    const auto stream = finder.finder.open({host(1, 3000), host(2, 1720)});
    for (int i = 0; i < 20; ++i) stream->gap(0, Side::kClient, 1);
    EXPECT_EQ(finder.remarks, 0);
    const Octets setup =
        hex("030000e1 0802000105 7e00d505" +
            readFile(TAMSEL_TEST_DATA_2009 "/ui-setup-parallelH245Control-aligned.hex"));
    EXPECT_TRUE(stream->octets(0, Side::kClient, {setup, {}}));
    EXPECT_EQ(finder.remarks, 16);
}

TEST(MessageFinder, StreamsThatAreNotAnnouncedAreBounded) {
    Finder finder("");
    Packets packets(finder.finder, finder.budget, finder.unread);
    const auto say = [&](unsigned sequence, const std::string& octets) {
        std::array<char, 60> header{};
        std::snprintf(header.data(), header.size(), "1388 2710 %08x 00000000 5010 2000 0000 0000",
                      sequence);
        packets.packet(1, 1, 0, 6, (header.data() + octets).c_str());
    };
    say(1, "0300");  // a TPKT that does not end
    EXPECT_GT(finder.budget.used(), 0U);
    packets.network.end();
    EXPECT_EQ(finder.budget.used(), 0U);

    const std::string octets(size_t{2} * 16380, '0');
    for (unsigned i = 0; i < 10; ++i) {  // TPKTs that are neither Q.931 nor H.245
        say(1 + 16384 * i, "03004000" + octets);
        EXPECT_LT(finder.budget.used(), 90000U);
    }
}

}  // namespace
