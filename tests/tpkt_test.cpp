// What is around the messages of a stream: TPKT and Q.931.

#include "tpkt.h"

#include <gtest/gtest.h>

#include <sstream>

#include "hex_text.h"
#include "q931.h"
#include "support.h"

namespace {

/// What a TpktReader passes on: "[message]", and the octets that it skips in between.
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

TEST(Tpkt, SegmentsOfAnySize) {
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
        {"then what looks like a message", "0300001011 -2 0300000522ffffffff 0300000533", "14[33]"},
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

TEST(Tpkt, AfterAGapAHeaderMustBeConfirmed) {
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

TEST(Q931, RemovedFromAMessage) {
    const struct {
        const char* why;
        const char* octets;
        bool isWhole;
        unsigned callReference;
        const char* userUser;
    } rows[] = {
        {"elements before it", "0802802a05 04038890a5 a1 7e000405aabbcc", true, 42, "aabbcc"},
        {"an element after it", "0802012a05 7e000205aa 7000", true, 298, "aa"},
        {"call reference of one octet", "08018305 7e000205aa", true, 3, "aa"},
        {"without call reference", "080005", true, 0, ""},
        {"another coding of the element", "08020001 05 7e000204aa", true, 1, ""},
        {"an empty one", "0802000105 7e0000", true, 1, ""},
        {"another protocol", "0902000105", false, 0, ""},
        {"cut in the call reference", "080200", false, 0, ""},
        {"cut before the type", "08020001", false, 0, ""},
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

}  // namespace
