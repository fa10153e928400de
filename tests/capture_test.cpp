// The parts of tamsel-capture that read what others sent: TPKT, Q.931, IP, TCP, names of messages.

#include <gtest/gtest.h>
#include <pcap/pcap.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <span>
#include <sstream>
#include <string>

#include "message_finder.h"
#include "network.h"
#include "q931.h"
#include "stream_start.h"
#include "support.h"
#include "tpkt.h"

namespace {

std::string formatHex(std::span<const uint8_t> octets) {
    std::string text;
    appendHex(text, octets);
    return text;
}

/// What a TpktReader passes on: "[message]", and the octets that it passes over in between.
struct Told : TpktReceiver {
    void tpkt(std::span<const uint8_t> message, std::span<const FrameId> /*frames*/) override {
        tellLost();
        text += "[" + formatHex(message) + "]";
    }
    void lost(size_t octets) override { lostOctets += octets; }
    void tellLost() {
        if (lostOctets > 0) text += std::to_string(lostOctets);
        lostOctets = 0;
    }

    std::string text;
    size_t lostOctets = 0;
};

/// Reads a stream in segments of that size at most. In it, "-" is a gap of unknown size, "-2" one
/// of two octets, and "|" the end of a segment.
std::string readTpkts(const std::string& stream, size_t part,
                      TpktContent content = TpktContent::kAny) {
    MemoryBudget budget(1 << 20);
    Told told;
    {
        TpktReader reader(budget);
        reader.setContent(content);
        std::istringstream pieces(stream);
        for (std::string piece; pieces >> piece;) {
            if (piece[0] == '-') {
                reader.gap(piece.size() > 1 ? std::stoul(piece.substr(1)) : 0, told);
                continue;
            }
            const Octets octets = hex(piece);
            for (size_t at = 0; at < octets.size(); at += part)
                reader.read({std::span(octets).subspan(at, std::min(part, octets.size() - at)), {}},
                            told);
        }
        reader.gap(0, told);
    }
    told.tellLost();
    EXPECT_EQ(budget.used(), 0U);
    return told.text;
}

TEST(Tpkt, HoweverItIsCut) {
    const struct {
        const char* why;
        const char* stream;
        const char* told;
    } rows[] = {
        {"two in a row", "0300000511030000062233", "[11][2233]"},
        {"no payload", "030000040300000511", "[][11]"},
        {"the last cut short", "030000051103000006", "[11]4"},
        {"after a gap", "03000005110300 - 33440300000522", "[11]4[22]"},
        {"a gap within a message", "0300000811 -2 220300000533", "6[33]"},
        {"a gap in two parts within a message", "0300000a11 -2 22 -1 33440300000533", "8[33]"},
        {"a payload that looks like a header", "03000008030003000300000511", "[03000300][11]"},
        {"a length below the header's own", "0300000511030000030300000522", "[11]4[22]"},
        {"another version", "030000051104000005220300000533", "[11]5[33]"},
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

TEST(Tpkt, OutOfStepAHeaderHasToBeConfirmed) {
    const struct {
        const char* why;
        const char* segments;
        const char* told;
    } rows[] = {
        {"a header whose length leads nowhere, then a segment that starts with one",
         "- 914a000300fff0c0 030000060802", "8[0802]"},
        {"in call signalling, no Q.931 after it", "- 03000005110300000611 030000060802",
         "10[0802]"},
        {"a chain of two in the middle of a segment", "- 11220300000608020300000608", "2[0802]5"},
        {"a message in two segments", "- 0300000a08020001 0502 0300000608ff",
         "[080200010502][08ff]"},
        {"a length that turns out wrong", "- 0300000708110002 030000060833", "8[0833]"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(readTpkts(row.segments, 100, TpktContent::kQ931), row.told);
    }
}

TEST(Tpkt, HoldsNoMoreThanOneMessage) {
    MemoryBudget budget(1 << 20);
    Told told;
    TpktReader reader(budget);
    const Octets noise(100000, 0xFF);
    reader.read({noise, {}}, told);
    const Octets header = hex("0300ffff");
    reader.read({header, {}}, told);  // a length that ends within the noise
    EXPECT_EQ(budget.used(), 4U);
    reader.read({noise, {}}, told);
    EXPECT_EQ(told.lostOctets, 2 * noise.size() + 4);
    EXPECT_EQ(budget.used(), 0U);

    budget.take(1 << 20);  // by other streams
    const Octets start = hex("0300000b 11");
    reader.read({start, {}}, told);
    reader.read({hex("22"), {}}, told);
    EXPECT_EQ(budget.used(), size_t{1} << 20) << "what it held is given up";
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
        const Octets octets = hex(row.octets);
        Q931Message message;
        ASSERT_EQ(readQ931(octets, message), row.isWhole);
        if (!row.isWhole) continue;
        EXPECT_EQ(message.callReference, row.callReference);
        EXPECT_EQ(formatHex(message.userUser), row.userUser);
    }
}

TEST(Q931, Facts) {
    const struct {
        const char* why;
        const char* octets;
        const char* name;
        const char* facts;
    } rows[] = {
        {"numbers, with an extension octet or without",
         "080200010 5 6c06 0181 34373131 7005 81 34373132", "setup", "reference 1, 4711 -> 4712"},
        {"text from the wire is escaped", "0802000105 2804 411b2241", "setup",
         "reference 1, display \"A\\x1b\\x22A\""},
        {"a cause", "080280015a 0802 8090", "releaseComplete",
         "reference 1, cause 16 normal call clearing"},
        {"a cause with a recommendation octet, unknown", "080200015a 0803 0080ff",
         "releaseComplete", "reference 1, cause 127 interworking, unspecified"},
        {"an empty cause", "080200015a 0800", "releaseComplete", "reference 1"},
        {"an unknown type", "08020001ff", "q931-0xff", "reference 1"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        std::string digits(row.octets);
        std::erase(digits, ' ');
        const Octets octets = hex(digits);
        Q931Message message;
        ASSERT_TRUE(readQ931(octets, message));
        EXPECT_EQ(message.name(), row.name);
        std::string facts;
        message.describe(facts);
        EXPECT_EQ(facts, row.facts);
    }
}

TEST(MessageFacts, TheNameOfEveryMessage) {
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
        // One that does not decode still has its name.
        const auto cut = std::span(octets).first(octets.size() / 2);
        if (decoder.decode(familyOf(kTamsel1998, family), cut, isAligned) == kAsnOk ||
            cut.size() < 8)
            continue;
        readFacts(kTamsel1998, family, decoder, facts);
        EXPECT_EQ(facts.name, name.substr(name.rfind('-') + 1));
    }
    EXPECT_GT(compared, 80U);
}

/// A finder, and how many messages it passed on.
struct Finder : MessageSink {
    explicit Finder(const std::string& call) : finder(*this, budget, unread, {call, {}}) {}
    void message(const CapturedMessage& message) override {
        ++messages;
        for (const FrameId& frame : message.frames) frames += std::to_string(frame.number) + " ";
        frames += "| ";
    }
    void remark(const CaptureRemark& /*remark*/) override {}

    int messages = 0;
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

/// What a call-signalling message carries: how, its name, its octets, and what was added to them.
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

TEST(MessageFinder, DecodesWhatSignallingCarries) {
    const struct {
        const char* why;
        const char* octets;
        const char* instead;
        const char* carried;
    } rows[] = {
        {"two proposals, two messages", "", "",
         "\nfastStart openLogicalChannel 0000000e 03\nfastStart openLogicalChannel 0000010a 03"
         "\ntunnel masterSlaveDetermination 01003280 \ntunnel roundTripDelayRequest 090007 "},
        {"a proposal that is damaged: the octet is that on the wire", "060007b835010040",
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

TEST(MessageFinder, KnowsTheAddressesAnnouncedLast) {
    Finder finder("");
    uint32_t announced = 0;
    // A registrationConfirm with so many call signalling addresses, each with another host number.
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

TEST(MessageFinder, KnowsTheDialoguesThatCameLast) {
    Finder finder("004091fb");
    // An infoRequest that names its call, or a disengageConfirm that the dialogue alone tells of.
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

/// A network that is fed with IPv4 packets.
struct Packets {
    Packets(NetworkListener& listener, MemoryBudget& budget, Unread& unread)
        : network(listener, budget, unread) {}

    /// Between two ports of one host. Each is a frame.
    /// flags: 2000 for more fragments, and where the payload belongs, in units of 8 octets.
    void packet(Time time, unsigned id, unsigned flags, uint8_t protocol, const char* payload) {
        Octets octets = hex("4500 0000 0000 0000 4000 0000 0a000001 0a000001");
        const Octets rest = hex(payload);
        octets[2] = static_cast<uint8_t>((20 + rest.size()) >> 8);
        octets[3] = static_cast<uint8_t>(20 + rest.size());
        octets[4] = static_cast<uint8_t>(id >> 8);
        octets[5] = static_cast<uint8_t>(id);
        octets[6] = static_cast<uint8_t>(flags >> 8);
        octets[7] = static_cast<uint8_t>(flags);
        octets[9] = protocol;
        octets.insert(octets.end(), rest.begin(), rest.end());
        network.frame({.id = {0, ++frames},
                       .time = time,
                       .linkType = DLT_RAW,
                       .octets = octets,
                       .length = octets.size()});
    }

    /// A TCP segment between ports 5000 and 1720, in hex: sequence number, acknowledged number,
    /// flags, payload.
    void segment(Time time, const std::string& sequence, const std::string& acknowledged,
                 const std::string& flags, const std::string& payload, bool fromServer = false) {
        const std::string ports = fromServer ? "06b8 1388" : "1388 06b8";
        packet(
            time, 1, 0, 6,
            (ports + sequence + acknowledged + "50" + flags + "2000 0000 0000" + payload).c_str());
    }

    uint32_t frames = 0;
    Network network;
};

/// What comes out of it.
struct Wire : NetworkListener {
    explicit Wire(size_t limit = 1 << 16) : budget(limit) {}

    struct Reader : StreamReader {
        explicit Reader(Wire& owner) : wire(owner) {}
        bool octets(Time /*time*/, Side side, const StreamPart& part) override {
            wire.heard += (side == Side::kClient ? "" : "<") + formatHex(part.octets) + " ";
            return wire.isWanted;
        }
        void gap(Time /*time*/, Side /*side*/, size_t octets) override {
            wire.heard += "(" + std::to_string(octets) + ") ";
        }
        void late(Time /*time*/, Side /*side*/, const StreamPart& part) override {
            wire.heard += "late " + formatHex(part.octets) + " ";
        }
        void end(Time /*time*/) override { wire.heard += "end "; }
        Wire& wire;
    };

    std::unique_ptr<StreamReader> open(const Flow& /*flow*/) override {
        return std::make_unique<Reader>(*this);
    }
    void datagram(const Arrival& /*arrival*/, const Flow& /*flow*/,
                  std::span<const uint8_t> octets) override {
        heard += formatHex(octets) + " ";
    }
    bool exported(const Arrival& /*arrival*/, const Flow& /*flow*/, std::string_view /*protocol*/,
                  std::span<const uint8_t> /*octets*/) override {
        return false;
    }

    void first(Time time, unsigned id) { packet(time, id, 0x2000, 17, "06b7 06b7 000a 0000"); }
    void second(Time time, unsigned id) { packet(time, id, 0x0001, 17, "aabb"); }
    size_t counted(const std::string& kind) const {
        const auto found = unread.kinds().find(kind);
        return found != unread.kinds().end() ? found->second : 0;
    }
    size_t lostFragments() const {
        return counted("IP fragments without the rest of their packet");
    }

    void packet(Time time, unsigned id, unsigned flags, uint8_t protocol, const char* payload) {
        packets.packet(time, id, flags, protocol, payload);
    }
    std::string heard;
    bool isWanted = true;  // streams, after their first octets
    Unread unread;
    MemoryBudget budget;
    Packets packets{*this, budget, unread};
};

TEST(Network, FragmentsWaitFor30Seconds) {
    Wire wire;
    wire.first(0, 1);
    wire.second(30000000, 1);
    EXPECT_EQ(wire.heard, "aabb ");
    wire.first(0, 2);
    wire.second(30000001, 2);
    EXPECT_EQ(wire.heard, "aabb ");
    EXPECT_EQ(wire.lostFragments(), 1U);
}

TEST(Network, FragmentsOf4096Packets) {
    Wire wire;
    for (unsigned id = 0; id <= 4096; ++id) wire.first(id, id);
    EXPECT_EQ(wire.lostFragments(), 1U);
    wire.second(5000, 1);
    EXPECT_EQ(wire.heard, "aabb ");
    wire.second(5000, 0);
    EXPECT_EQ(wire.heard, "aabb ") << "the oldest was given up";
}

TEST(Network, FragmentsOf4MiB) {
    Wire wire;
    const std::string octets(size_t{2} * 60000, '0');
    for (unsigned id = 0; id < 69; ++id) wire.packet(0, id, 0x2000, 17, octets.c_str());
    EXPECT_EQ(wire.lostFragments(), 0U);
    wire.packet(0, 69, 0x2000, 17, octets.c_str());
    EXPECT_EQ(wire.lostFragments(), 1U);
}

TEST(Network, FragmentsThatCannotBe) {
    Wire wire;
    wire.packet(0, 1, 0x1FFF, 17, "0011 2233 4455 6677");  // ends after octet 65535
    wire.packet(0, 2, 0x2000, 17, "0011");                 // the next cannot begin there
    EXPECT_EQ(wire.counted("malformed IP fragments"), 2U);
}

TEST(TcpStreams, AsManyAsAreKept) {
    for (const bool isWanted : {true, false}) {
        Wire wire;
        wire.isWanted = isWanted;
        const auto speak = [&](unsigned number) {
            wire.heard.clear();
            std::array<char, 60> segment{};
            std::snprintf(segment.data(), segment.size(),
                          "%04x %04x 00000001 00000000 5010 2000 0000 0000 aa",
                          2000 + number % 60000, 1720 + number / 60000);
            wire.packet(1, 1, 0, 6, segment.data());
        };
        for (unsigned number = 0; number <= (isWanted ? 32768U : 16384U); ++number) speak(number);
        speak(1);
        EXPECT_EQ(wire.heard, isWanted ? "end " : "");  // of the oldest, which is forgotten now
        speak(0);
        EXPECT_EQ(wire.heard, "(0) aa ");
    }
}

TEST(TcpStreams, SilentForADay) {
    constexpr Time kDay = Time{24} * 3600 * 1000000;
    Wire wire;
    wire.packets.segment(1, "00000001", "00000000", "02", "");
    wire.packets.segment(2, "00000002", "00000000", "08", "aabb");
    wire.packet(kDay, 3, 0, 6, "1389 06b8 00000001 00000000 5002 2000 0000 0000");
    EXPECT_EQ(wire.heard, "aabb ");
    wire.packet(2 * kDay, 4, 0, 6, "138a 06b8 00000001 00000000 5002 2000 0000 0000");
    EXPECT_EQ(wire.heard, "aabb end ");
}

TEST(TcpStreams, HowOneEnds) {
    const struct {
        const char* why;
        const char* segments;  // "sequence acknowledged flags payload", from the server after "<"
        const char* heard;
    } rows[] = {
        {"the same SYN again", "1 0 02,2 0 10 aa,1 0 02,3 0 10 bb", "aa bb "},
        {"the port used again", "1 0 02,2 0 10 aa,9001 0 02,9002 0 10 bb", "aa end bb "},
        {"used again without a SYN in the capture", "1 0 02,2 0 10 aa,80000000 0 10 bb",
         "aa end (0) bb "},
        {"a SYN that comes late", "2 0 10 aa,1 0 02,3 0 10 bb", "(0) aa bb "},
        {"sent again after the end", "1 0 02,2 7 10 aa,3 7 11,<7 4 11,2 7 10 aa", "aa end "},
        {"reset", "1 0 02,2 0 10 aa,<0 3 14,2 0 10 aa", "aa end "},
        {"octets after the FIN in the capture", "1 0 02,<8 2 12,2 9 10 aa,4 9 11,<9 5 11,3 9 10 bb",
         "aa (1) end "},
        {"and not acknowledged yet", "1 0 02,<8 2 12,2 9 10 aa,4 9 11,<9 3 11,3 9 10 bb",
         "aa bb end "},
        {"never captured, and acknowledged", "1 0 02,2 0 10 aa,5 0 10 bb,<8 6 10", "aa (2) bb "},
        {"acknowledged before it is captured, in two parts, and again",
         "1 0 02,2 0 10 aa,5 0 10 dd,<0 6 10,3 0 10 bb,3 0 10 bb,4 0 10 cc,2 0 10 aa",
         "aa (2) dd late bb late cc "},
        {"round the clock", "fffffffe 0 02,1 0 10 cc,ffffffff 0 10 aabb", "aabbcc "},
        {"only the answer to the SYN", "<8 2 12,3 9 10 bb,2 9 10 aa", "aabb "},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        Wire wire;
        std::istringstream segments(row.segments);
        for (std::string segment; std::getline(segments, segment, ',');) {
            const bool fromServer = segment[0] == '<';
            std::istringstream fields(segment.substr(fromServer ? 1 : 0));
            std::string sequence;
            std::string acknowledged;
            std::string flags;
            std::string payload;
            fields >> sequence >> acknowledged >> flags >> payload;
            sequence.insert(0, 8 - sequence.size(), '0');
            acknowledged.insert(0, 8 - acknowledged.size(), '0');
            wire.packets.segment(1, sequence, acknowledged, flags, payload, fromServer);
        }
        EXPECT_EQ(wire.heard, row.heard);
    }
}

TEST(MessageFinder, TheFramesOfEachMessage) {
    // Q.931 in a TPKT of 9 octets, which is a message by itself, in a stream that has to be judged.
    const std::string setup = "030000090802000105";
    const std::string two = setup + setup;
    const struct {
        const char* why;
        std::vector<std::pair<int, std::string>> segments;  // "sequence payload"; 0: acknowledges
        const char* frames;                                 // the SYN is the first
    } rows[] = {
        {"two in a segment", {{1, two}}, "2 | 2 | "},
        {"a message in three segments, and the next in the last",
         {{1, two.substr(0, 2)}, {2, two.substr(2, 4)}, {4, two.substr(6)}},
         "2 3 4 | 4 | "},
        {"in the wrong order",
         {{1, two.substr(0, 6)}, {10, setup}, {4, two.substr(6, 12)}},
         "2 4 | 3 | "},
        {"sent again before it is whole, and longer",
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

TEST(TcpStreams, HoldWhatWaitsWithinLimits) {
    const struct {
        size_t budget;
        size_t size;  // of each segment; it leaves a gap of one octet
        size_t most;
    } rows[] = {
        {1 << 16, 200, (1 << 16) + 216},      // octets of all streams, each segment with its frame
        {1 << 30, 1, 512 * 17},               // segments of one side
        {1 << 30, 16384, (1 << 20) + 16400},  // octets of one side
    };
    for (const auto& row : rows) {
        Wire wire(row.budget);
        wire.packets.segment(1, "00000001", "00000000", "02", "");
        const std::string octets(2 * row.size, 'a');
        for (size_t i = 0; i < 600 && i * row.size < 2 << 20; ++i) {
            std::array<char, 17> sequence{};
            std::snprintf(sequence.data(), sequence.size(), "%08zx", 3 + i * (row.size + 1));
            wire.packets.segment(2, sequence.data(), "00000000", "10", octets);
            ASSERT_LE(wire.budget.used(), row.most);
        }
        wire.packets.network.end();
        EXPECT_EQ(wire.budget.used(), 0U);
    }
}

}  // namespace
