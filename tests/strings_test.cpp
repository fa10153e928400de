// Strings, object identifiers, reals and open types.

#include <cmath>
#include <functional>

#include "support.h"

namespace {

constexpr AsnSizeConstraint k1{0, 1, 1, nullptr};
constexpr AsnSizeConstraint k2{0, 2, 2, nullptr};
constexpr AsnSizeConstraint k3{0, 3, 3, nullptr};
constexpr AsnSizeConstraint k1To2{0, 1, 2, nullptr};
constexpr AsnSizeConstraint k1To20{0, 1, 20, nullptr};
constexpr AsnSizeConstraint k16{0, 16, 16, nullptr};
constexpr AsnSizeConstraint k17{0, 17, 17, nullptr};
constexpr AsnSizeConstraint k1To128{0, 1, 128, nullptr};

struct OctetCase {
    const char* why;
    bool bits;
    const AsnSizeConstraint* size;
    const char* octets;
    bool aligned;
    int64_t at;
    AsnStatus status;
    uint32_t count;
    const char* expected;
};

TEST(Strings, BitsAndOctets) {
    const OctetCase cases[] = {
        {"no size", false, nullptr, "02 AB CD", true, 0, 0, 2, "AB CD"},
        {"no size, unaligned", false, nullptr, "04 AB CD", false, 1, -2, 0, ""},
        {"no size, mid-octet", false, nullptr, "01 55 80 00", false, 1, 0, 2, "AB 00"},
        {"empty", false, nullptr, "00", true, 0, 0, 0, ""},
        {"fixed size of 2 does not align", false, &k2, "0A BC D0", true, 4, 0, 2, "AB CD"},
        {"fixed size of 3 aligns", false, &k3, "00 AB CD EF", true, 4, 0, 3, "AB CD EF"},
        {"fixed size of 3, unaligned", false, &k3, "0A BC DE F0", false, 4, 0, 3, "AB CD EF"},
        {"a range of short sizes aligns", false, &k1To2, "80 AB CD", true, 0, 0, 2, "AB CD"},
        {"16 bits do not align", true, &k16, "0A BC D0", true, 4, 0, 16, "AB CD"},
        {"17 bits align", true, &k17, "00 AB CD FF", true, 4, 0, 17, "AB CD 80"},
        {"bits of any size", true, nullptr, "0B FF FF", true, 0, 0, 11, "FF E0"},
        {"longer than its bound", false, &k1To20, "A0", false, 0, -2, 0, ""},
    };
    for (const OctetCase& c : cases) {
        SCOPED_TRACE(c.why);
        Decoding decoding(hex(c.octets), c.aligned);
        decoding.at(c.at);
        pd_SetSizeConstraint(decoding.ctx, c.size);
        uint8_t buffer[20] = {};
        uint32_t count = 0;
        AsnStatus status = 0;
        uint8_t* data = buffer;
        if (c.size != nullptr) {
            status = c.bits ? pd_BitString(decoding.ctx, &count, buffer, sizeof buffer)
                            : pd_OctetString(decoding.ctx, &count, buffer, sizeof buffer);
        } else if (c.bits) {
            AsnDynBitStr value{};
            status = pd_DynBitString(decoding.ctx, value);
            count = value.numbits;
            data = value.data;
        } else {
            AsnDynOctStr value{};
            status = pd_DynOctetString(decoding.ctx, value);
            count = value.numocts;
            data = value.data;
        }
        EXPECT_EQ(status, c.status);
        if (c.status != 0) continue;
        EXPECT_EQ(count, c.count);
        const Octets expected = hex(c.expected);
        EXPECT_EQ(expected, Octets(data, data + expected.size()));
        if (count == 0) EXPECT_EQ(data, nullptr);
    }
}

TEST(Strings, FixedBufferHoldsItsSizeAndNoMore) {
    Octets octets{0x14 << 3};  // SIZE (1..20), 5 bits: 21
    octets.resize(40);
    Decoding decoding(octets, false);
    pd_SetSizeConstraint(decoding.ctx, &k1To20);
    const std::unique_ptr<uint8_t[]> buffer(new uint8_t[20]);
    uint32_t count = 0;
    EXPECT_EQ(pd_OctetString(decoding.ctx, &count, buffer.get(), 20), kAsnTooLong);
    octets[0] = 0x13 << 3;
    Decoding fits(octets, false);
    pd_SetSizeConstraint(fits.ctx, &k1To20);
    EXPECT_EQ(pd_OctetString(fits.ctx, &count, buffer.get(), 20), kAsnOk);
    EXPECT_EQ(count, 20U);
}

TEST(Strings, FragmentsAreJoined) {
    Octets octets{0xC1};
    for (int i = 0; i < 16384; ++i) octets.push_back(static_cast<uint8_t>(i));
    octets.insert(octets.end(), {0x01, 0x99});
    for (const bool aligned : {true, false}) {
        Decoding decoding(octets, aligned);
        AsnDynOctStr value{};
        ASSERT_EQ(pd_DynOctetString(decoding.ctx, value), kAsnOk);
        ASSERT_EQ(value.numocts, 16385U);
        EXPECT_EQ(value.data[16383], 0xFF);
        EXPECT_EQ(value.data[16384], 0x99);
    }
    octets[0] = 0xC8;  // 131072 octets are not there, and nothing is allocated for them
    Decoding lying(octets);
    AsnDynOctStr value{};
    EXPECT_EQ(pd_DynOctetString(lying.ctx, value), kAsnEndOfData);
    EXPECT_EQ(lying.ctx.memHeap.newest, nullptr);
    Decoding characters(octets);
    const char* text = nullptr;
    EXPECT_EQ(pd_PrintableString(characters.ctx, &text, nullptr), kAsnFragment);
}

using ReadText = AsnStatus (*)(AsnContext&, const char**, const char*);

struct TextCase {
    const char* why;
    ReadText read;
    const char* permitted;
    const AsnSizeConstraint* size;
    const char* octets;
    bool aligned;
    AsnStatus status;
    const char* expected;
};

TEST(Strings, Characters) {
    const TextCase cases[] = {
        {"indexes of 4 bits", pd_NumericString, nullptr, nullptr, "04 23 04", true, 0, "12 3"},
        {"the same unaligned", pd_NumericString, nullptr, nullptr, "04 23 04", false, 0, "12 3"},
        {"11 is no digit", pd_NumericString, nullptr, nullptr, "01 B0", true, -23, ""},
        {"codes of 8 bits", pd_PrintableString, nullptr, nullptr, "02 41 42", true, 0, "AB"},
        {"codes of 7 bits", pd_PrintableString, nullptr, nullptr, "02 83 08", false, 0, "AB"},
        {"codes are not looked up", pd_IA5String, nullptr, nullptr, "01 7E", true, 0, "~"},
        {"13 permitted: 4 bits", pd_IA5String, "0123456789#*,", &k1To128, "02 30", true, 0, "0#"},
        {"in the order of the table", pd_IA5String, "0123456789#*,", &k1To128, "06 01 2C", true, 0,
         "#*,9"},
        {"13 is not permitted", pd_IA5String, "0123456789#*,", &k1To128, "00 D0", true, -23, ""},
        {"17 permitted: 5 bits unaligned", pd_IA5String, "0123456789#*ABCD!", &k1, "80", false, 0,
         "D"},
        {"17 is not permitted", pd_IA5String, "0123456789#*ABCD!", &k1, "88", false, -23, ""},
        {"17 permitted: codes when aligned", pd_IA5String, "0123456789#*ABCD!", &k1, "44", true, 0,
         "D"},
        {"a code is bound as well", pd_IA5String, "0123456789#*ABCD!", &k1, "45", true, -23, ""},
        {"16 permitted take 5 bits", pd_IA5String, "0123456789ABCDEF", &k1, "78", false, 0, "F"},
        {"all of Latin", pd_GeneralString, nullptr, nullptr, "02 E9 41", true, 0,
         "\xE9"
         "A"},
        {"7-bit indexes into nothing", pd_GeneralString, nullptr, nullptr, "01 82", false, -23, ""},
        {"visible", pd_VisibleString, nullptr, nullptr, "01 7E", true, 0, "~"},
        {"one permitted: an index of 1 bit", pd_VisibleString, "~", nullptr, "01 00", true, 0, "~"},
        {"86 characters", pd_86CharString, "a_", nullptr, "02 10", false, 0, "_a"},
        {"nothing permitted: 8-bit codes", pd_IA5String, "\x7F", nullptr, "01 21", true, 0, "!"},
        {"empty", pd_IA5String, nullptr, nullptr, "00 00", true, 0, ""},
        {"cut", pd_IA5String, nullptr, nullptr, "02 41", true, -2, ""},
    };
    for (const TextCase& c : cases) {
        SCOPED_TRACE(c.why);
        Decoding decoding(hex(c.octets), c.aligned);
        pd_SetSizeConstraint(decoding.ctx, c.size);
        const char* text = nullptr;
        EXPECT_EQ(c.read(decoding.ctx, &text, c.permitted), c.status);
        if (c.status == 0) EXPECT_STREQ(text, c.expected);
    }
}

TEST(Strings, Bmp) {
    Decoding decoding(hex("02 00 41 26 3A"));
    AsnBMPString value{};
    ASSERT_EQ(pd_BMPString(decoding.ctx, value, nullptr), kAsnOk);
    ASSERT_EQ(value.nchars, 2U);
    EXPECT_EQ(value.data[1], 0x263A);

    const uint16_t codes[] = {0x41, 0x263A, 0x42};
    const Asn16BitAlphabet alphabet{3, codes};
    Decoding indexed(hex("02 60"));
    ASSERT_EQ(pd_BMPString(indexed.ctx, value, &alphabet), kAsnOk);
    EXPECT_EQ(value.data[0], 0x263A);
    EXPECT_EQ(value.data[1], 0x42);
    Decoding beyond(hex("01 C0"));
    EXPECT_EQ(pd_BMPString(beyond.ctx, value, &alphabet), kAsnConstraint);
}

std::string arcs(const AsnObjId& id) {
    std::string text;
    for (int32_t i = 0; i < id.numids; ++i)
        text += (i != 0 ? "." : "") + std::to_string(id.subid[i]);
    return text;
}

TEST(ObjectIds, Contents) {
    const struct {
        const char* octets;
        AsnStatus status;
        const char* expected;
    } cases[] = {
        {"06 00 08 91 4A 00 02", 0, "0.0.8.2250.0.2"},
        {"03 2B 06 01", 0, "1.3.6.1"},
        {"01 78", 0, "2.40"},
        {"02 81 34", 0, "2.100"},
        {"01 4F", 0, "1.39"},
        {"06 2B 90 80 80 80 00", 0, "1.3.0"},  // arcs are taken modulo 2^32
        {"00", 0, ""},
        {"02 2B 86", -2, ""},  // the last arc does not end
        {"03 2B 06", -2, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.octets);
        Decoding decoding(hex(c.octets));
        AsnObjId id{};
        EXPECT_EQ(pd_ObjectId(decoding.ctx, id), c.status);
        if (c.status == 0) EXPECT_EQ(arcs(id), c.expected);
    }
}

TEST(ObjectIds, AtMost128ArcsAnd300Octets) {
    const auto decode = [](uint32_t contents) {
        Octets octets{static_cast<uint8_t>(0x80 | contents >> 8), static_cast<uint8_t>(contents)};
        octets.resize(2 + contents, 1);
        Decoding decoding(octets);
        AsnObjId id{};
        const AsnStatus status = pd_ObjectId(decoding.ctx, id);
        EXPECT_LE(id.numids, 128);
        return status;
    };
    EXPECT_EQ(decode(127), kAsnOk);  // 128 arcs: the first octet gives two
    EXPECT_EQ(decode(128), kAsnInvalidObjectId);
    EXPECT_EQ(decode(300), kAsnInvalidObjectId);
    EXPECT_EQ(decode(301), kAsnTooLong);
    const Octets longer{0x2B, 0x81, 0x01};
    AsnOctetReader reader{longer.data(), 3, 0};
    AsnObjId id{};
    EXPECT_EQ(asnDecObjIdContents(reader, id, 2), kAsnInvalidLength);
}

TEST(Reals, Contents) {
    const double infinity = HUGE_VAL;
    const struct {
        const char* octets;
        AsnStatus status;
        double value;
    } cases[] = {
        {"00", 0, 0.0},
        {"03 80 00 05", 0, 5.0},
        {"03 C0 FF 05", 0, -2.5},            // sign, exponent -1
        {"03 90 01 03", 0, 24.0},            // base 8
        {"03 AC 01 01", 0, 128.0},           // base 16, scale factor 3
        {"04 81 00 0A 01", 0, 1024.0},       // two octets of exponent
        {"05 83 02 00 04 03", 0, 48.0},      // its length in an octet of its own
        {"06 82 7F FF FF 01", -2, 0},        // cut
        {"05 82 7F FF FF 01", 0, infinity},  // beyond a double
        {"05 82 80 00 00 01", 0, 0.0},
        {"02 80 00", -16, 0},     // no mantissa
        {"03 B0 00 01", -16, 0},  // base 3 is reserved
        {"01 40", 0, infinity},
        {"01 41", 0, -infinity},
        {"01 43", 0, -0.0},
        {"01 44", -16, 0},
        {"02 40 00", -16, 0},
        {"04 01 20 34 32", 0, 42.0},    // NR1: " 42"
        {"05 02 2B 31 2C 35", 0, 1.5},  // NR2: "+1,5"
        {"07 03 2D 31 2E 35 45 32", 0, -150.0},
        {"04 01 31 2E 35", -16, 0},  // a point in NR1
        {"04 03 31 2E 35", -16, 0},  // NR3 without exponent
        {"04 02 6E 61 6E", -16, 0},  // "nan"
        {"01 02", -16, 0},
        {"02 04 31", -16, 0},  // no fourth form
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.octets);
        Decoding decoding(hex(c.octets));
        double value = 0;
        EXPECT_EQ(pd_Real(decoding.ctx, &value), c.status);
        if (c.status != 0) continue;
        EXPECT_EQ(value, c.value);
        EXPECT_EQ(std::signbit(value), std::signbit(c.value));
    }
    Decoding notANumber(hex("01 42"));
    double value = 0;
    ASSERT_EQ(pd_Real(notANumber.ctx, &value), kAsnOk);
    EXPECT_TRUE(std::isnan(value));
}

TEST(OpenTypes, SpansAreTheInputsOwnOctets) {
    // Bits before the extension share its first octet and are part of the span.
    struct {
        bool aligned;
        const char* octets;
        int64_t at;
        uint32_t start;
        uint32_t numocts;
    } cases[] = {
        // bitmap length 2 (0 000001), bits 1 1, then the open types 02 AABB and 01 CC
        {true, "03 80 02 AA BB 01 CC FF", 0, 0, 7},
        {true, "00 70 02 AA BB 01 CC FF", 3, 0, 7},
        // the same without alignment: the last octet is only partly consumed, and not counted
        {false, "03 81 55 5D 80 E6 00 FF", 0, 0, 6},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.octets);
        Decoding decoding(hex(c.octets), c.aligned);
        decoding.at(c.at);
        const uint8_t* data = nullptr;
        uint32_t numocts = 0;
        ASSERT_EQ(pd_OpenTypeExt(decoding.ctx, &data, &numocts), kAsnOk);
        EXPECT_EQ(data, decoding.ctx.data + c.start);
        EXPECT_EQ(numocts, c.numocts);
    }
    Decoding endOfOctet(hex("FF 00 01 AA 55"));
    endOfOctet.ctx.bitOffset = 0;  // (0, 0), not (1, 8): the span begins one octet earlier
    const uint8_t* data = nullptr;
    uint32_t numocts = 0;
    ASSERT_EQ(pd_ChoiceOpenTypeExt(endOfOctet.ctx, &data, &numocts), kAsnOk);
    EXPECT_EQ(data, endOfOctet.ctx.data);
    EXPECT_EQ(numocts, 4U);
    Decoding manyBits(hex("80 04 FF FF FF FF"));  // 2^32 additions
    EXPECT_EQ(pd_OpenTypeExt(manyBits.ctx, &data, &numocts), kAsnEndOfData);
}

TEST(OpenTypes, AreReadWhereTheyStand) {
    const struct {
        const char* why;
        const char* octets;
        bool aligned;
        int64_t at;
        AsnStatus status;
        bool isCopy;
        int64_t end;
    } rows[] = {
        {"at an octet boundary", "ff 02 aa bb", true, 8, 0, false, 32},
        {"behind padding", "ff 02 aa bb", true, 3, 0, false, 32},
        {"UNALIGNED, at a boundary by chance", "ff 02 aa bb", false, 8, 0, false, 32},
        {"UNALIGNED, across octets", "e0 55 57 60", false, 3, 0, true, 27},
        {"longer than what is left", "03 aa bb", true, 0, -2, false, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        Decoding decoding(hex(row.octets), row.aligned);
        decoding.at(row.at);
        const uint8_t* data = nullptr;
        uint32_t numocts = 0;
        ASSERT_EQ(pd_OpenType(decoding.ctx, &data, &numocts), row.status);
        if (row.status != 0) continue;
        ASSERT_EQ(numocts, 2U);
        EXPECT_EQ(data[0], 0xAA);
        EXPECT_EQ(data[1], 0xBB);
        EXPECT_EQ(decoding.ctx.memHeap.newest != nullptr, row.isCopy);
        EXPECT_EQ(asnBitPosition(decoding.ctx), row.end);
    }
}

TEST(OpenTypes, EmptyOnesHaveNoOctets) {
    Decoding decoding(hex("00"));
    const uint8_t marker = 0;
    const uint8_t* data = &marker;
    uint32_t numocts = 9;
    ASSERT_EQ(pd_OpenType(decoding.ctx, &data, &numocts), kAsnOk);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(numocts, 0U);
}

}  // namespace
