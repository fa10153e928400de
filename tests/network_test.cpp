// From IP packets to datagrams and TCP streams, and the limits of what is held.

#include <gtest/gtest.h>

#include <array>
#include <memory>

#include "capture_file.h"
#include "packets.h"

namespace {

/// A network, and what it passes on, as text.
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
    bool isWanted = true;  // whether the reader wants more of a stream
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
    EXPECT_EQ(wire.heard, "aabb ") << "the oldest packet was given up";
}

TEST(Network, FragmentsOf4MiB) {
    Wire wire;
    const std::string octets(size_t{2} * 60000, '0');
    for (unsigned id = 0; id < 69; ++id) wire.packet(0, id, 0x2000, 17, octets.c_str());
    EXPECT_EQ(wire.lostFragments(), 0U);
    wire.packet(0, 69, 0x2000, 17, octets.c_str());
    EXPECT_EQ(wire.lostFragments(), 1U);
}

TEST(Network, ImpossibleFragments) {
    Wire wire;
    wire.packet(0, 1, 0x1FFF, 17, "0011 2233 4455 6677");  // ends after octet 65535
    wire.packet(0, 2, 0x2000, 17, "0011");                 // the next fragment cannot begin there
    EXPECT_EQ(wire.counted("malformed IP fragments"), 2U);
}

TEST(Network, AWholePacketWithAFragmentHeader) {
    Wire wire;
    const std::string addresses = std::string(32, '1') + std::string(32, '2');
    for (const std::string& rest :
         {"0018 2c40" + addresses + "1100 0001 00000007 06b7 06b7 0018 0000 1122334455667788",
          "0012 2c40" + addresses + "1100 0000 00000007 06b7 06b7 000a 0000 aabb"}) {
        const Octets octets = hex("60000000" + rest);  // both have the same identification
        wire.packets.network.frame(
            {.linkType = DLT_RAW, .octets = octets, .length = octets.size()});
    }
    EXPECT_EQ(wire.heard, "aabb ");
}

TEST(Network, PacketsThatAreCut) {
    const struct {
        const char* why;
        const char* octets;
    } rows[] = {
        {"in the options of IP", "4f00 003c 0000 0000 4011 0000 0a000001 0a000001"},
        {"in the options of TCP",
         "4500 0000 0000 0000 4006 0000 0a000001 0a000001"
         "1388 06b8 00000001 00000000 f002 2000 0000 0000"},
        {"a fragment", "4500 003c 0000 2000 4011 0000 0a000001 0a000001 06b7 06b7 000a 0000"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        Wire wire;
        const Octets octets = hex(row.octets);
        wire.packets.network.frame({.linkType = DLT_RAW, .octets = octets, .length = 60});
        EXPECT_EQ(wire.counted("frames with a malformed or cut header"), 1U);
    }
}

TEST(CaptureFile, PcapngThatIsDamaged) {
    const std::string section = "0a0d0d0a 1c000000 4d3c2b1a 01000000 ffffffff ffffffff 1c000000";
    const std::string interface = "01000000 14000000 01000000 00000400 14000000";
    const std::string clock =  // of milliseconds
        "01000000 20000000 01000000 00000400 09000100 03000000 00000000 20000000";
    const auto frame = [](const std::string& size) {
        return "06000000 24000000 00000000 00000000 05000000" + size + size + "aabbccdd 24000000";
    };
    std::string interfaces;
    for (int i = 0; i <= 65536; ++i) interfaces += interface;
    const struct {
        std::string octets;
        const char* outcome;
    } rows[] = {
        {clock + frame("04000000"), "5000 "},
        {interface + frame("05000000"), "a frame longer than its block"},
        {"06000000 00000020", "a pcapng block of 536870912 octets"},
        {interfaces, "too many interfaces"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.outcome);
        const std::string name = testing::TempDir() + "damaged.pcapng";
        const Octets octets = hex(section + row.octets);
        std::ofstream(name, std::ios::binary)
            .write(reinterpret_cast<const char*>(octets.data()),
                   static_cast<std::streamsize>(octets.size()));
        std::string outcome;
        try {
            CaptureFile file(name);
            for (Frame one; file.next(one);) outcome += std::to_string(one.time) + " ";
        } catch (const BadCapture& bad) {
            outcome += bad.what();
        }
        EXPECT_EQ(outcome, row.outcome);
    }
}

TEST(TcpStreams, TheOldestIsForgottenFirst) {
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
        EXPECT_EQ(wire.heard, isWanted ? "end " : "");  // the oldest ends, because it is forgotten
        speak(0);
        EXPECT_EQ(wire.heard, "(0) aa ");
    }
}

TEST(TcpStreams, EndAfterADayWithoutSegments) {
    constexpr Time kDay = Time{24} * 3600 * 1000000;
    Wire wire;
    wire.packets.segment(1, "00000001", "00000000", "02", "");
    wire.packets.segment(2, "00000002", "00000000", "08", "aabb");
    wire.packet(kDay, 3, 0, 6, "1389 06b8 00000001 00000000 5002 2000 0000 0000");
    EXPECT_EQ(wire.heard, "aabb ");
    wire.packet(2 * kDay, 4, 0, 6, "138a 06b8 00000001 00000000 5002 2000 0000 0000");
    EXPECT_EQ(wire.heard, "aabb end ");
}

TEST(TcpStreams, SequencesOfSegments) {
    const struct {
        const char* why;
        const char* segments;  // "sequence acknowledged flags payload"; "<": from the server
        const char* heard;
    } rows[] = {
        {"the same SYN again", "1 0 02,2 0 10 aa,1 0 02,3 0 10 bb", "aa bb "},
        {"the ports are used again", "1 0 02,2 0 10 aa,9001 0 02,9002 0 10 bb", "aa end bb "},
        {"the ports are used again, and the SYN is not captured",
         "1 0 02,2 0 10 aa,80000000 0 10 bb", "aa end (0) bb "},
        {"a SYN that comes late", "2 0 10 aa,1 0 02,3 0 10 bb", "(0) aa bb "},
        {"a retransmission after the end", "1 0 02,2 7 10 aa,3 7 11,<7 4 11,2 7 10 aa", "aa end "},
        {"reset", "1 0 02,2 0 10 aa,<0 3 14,2 0 10 aa", "aa end "},
        {"octets after the FIN in the capture", "1 0 02,<8 2 12,2 9 10 aa,4 9 11,<9 5 11,3 9 10 bb",
         "aa (1) end "},
        {"the same, not acknowledged yet", "1 0 02,<8 2 12,2 9 10 aa,4 9 11,<9 3 11,3 9 10 bb",
         "aa bb end "},
        {"never captured, and acknowledged", "1 0 02,2 0 10 aa,5 0 10 bb,<8 6 10", "aa (2) bb "},
        {"acknowledged before it is captured, in two parts, and again",
         "1 0 02,2 0 10 aa,5 0 10 dd,<0 6 10,3 0 10 bb,3 0 10 bb,4 0 10 cc,2 0 10 aa",
         "aa (2) dd late bb late cc "},
        {"the sequence number wraps", "fffffffe 0 02,1 0 10 cc,ffffffff 0 10 aabb", "aabbcc "},
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

TEST(TcpStreams, OctetsThatWaitAreBounded) {
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
