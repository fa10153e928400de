// Known encodings of the primitives, and what each reports if its data is wrong or ends too early.
// Random encodings are compared with the reference reader (reference_test.cpp); the rows here are
// worked out by hand, so that both cannot be wrong in the same way.

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>

#include "allocation.h"
#include "support.h"

namespace {

/// Reads one value and gives it as text.
using Read = std::function<AsnStatus(AsnContext&, std::string*)>;

template <class Number, class... Parameters>
Read number(AsnStatus (*read)(AsnContext&, Number*, Parameters...), Parameters... parameters) {
    return [=](AsnContext& ctx, std::string* text) {
        Number value = 0;
        const AsnStatus status = read(ctx, &value, parameters...);
        *text = std::to_string(value);
        return status;
    };
}
const auto integer = [](int32_t lower, int32_t upper) {
    return number<int32_t, int32_t, int32_t>(pd_ConsInteger, lower, upper);
};
const auto unsignedInteger = [](uint32_t lower, uint32_t upper) {
    return number<uint32_t, uint32_t, uint32_t>(pd_ConsUnsigned, lower, upper);
};
const Read uncons = number<int32_t>(pd_UnconsInteger);
const Read unconsUnsigned = number<uint32_t>(pd_UnconsUnsigned);
const Read smallNumber = number<uint32_t>(pd_SmallNonNegWholeNumber);
const Read length = number<uint32_t>(pd_Length);
const Read extInteger = number<int32_t, int32_t, int32_t>(pd_ExtInteger, 1, 32768);
const Read component = [](AsnContext& ctx, std::string* text) {
    const int32_t total = pd_GetComponentLength(ctx, 8);
    *text = std::to_string(total);
    return total < 0 ? total : kAsnOk;
};

std::string hexText(const uint8_t* octets, size_t count) {
    std::string text;
    for (size_t i = 0; i < count; ++i) {
        char digits[4];
        std::snprintf(digits, sizeof digits, i == 0 ? "%02X" : " %02X", octets[i]);
        text += digits;
    }
    return text;
}
const Read fixedBits = [](AsnContext& ctx, std::string* text) {
    uint8_t buffer[20];
    uint32_t count = 0;
    const AsnStatus status = pd_BitString(ctx, &count, buffer, sizeof buffer);
    if (status == kAsnOk) *text = std::to_string(count) + ": " + hexText(buffer, (count + 7) / 8);
    return status;
};
const Read fixedOctets = [](AsnContext& ctx, std::string* text) {
    uint8_t buffer[5];
    uint32_t count = 0;
    const AsnStatus status = pd_OctetString(ctx, &count, buffer, sizeof buffer);
    if (status == kAsnOk) *text = hexText(buffer, count);
    return status;
};
const Read dynBits = [](AsnContext& ctx, std::string* text) {
    AsnDynBitStr value{};
    const AsnStatus status = pd_DynBitString(ctx, value);
    if (status == kAsnOk)
        *text = std::to_string(value.numbits) + ": " + hexText(value.data, (value.numbits + 7) / 8);
    return status;
};
const Read dynOctets = [](AsnContext& ctx, std::string* text) {
    AsnDynOctStr value{};
    const AsnStatus status = pd_DynOctetString(ctx, value);
    if (status == kAsnOk)
        *text = value.data == nullptr ? "null" : hexText(value.data, value.numocts);
    return status;
};
Read characters(AsnStatus (*read)(AsnContext&, const char**, const char*),
                const char* permitted = nullptr) {
    return [=](AsnContext& ctx, std::string* text) {
        const char* value = nullptr;
        const AsnStatus status = read(ctx, &value, permitted);
        if (status == kAsnOk) *text = value;
        return status;
    };
}
Read bmp(const Asn16BitAlphabet* permitted) {
    return [=](AsnContext& ctx, std::string* text) {
        AsnBMPString value{};
        const AsnStatus status = pd_BMPString(ctx, value, permitted);
        for (uint32_t i = 0; i < value.nchars; ++i) *text += std::to_string(value.data[i]) + " ";
        return status;
    };
}
const Read objectId = [](AsnContext& ctx, std::string* text) {
    AsnObjId id{};
    const AsnStatus status = pd_ObjectId(ctx, id);
    for (int32_t i = 0; i < id.numids; ++i)
        *text += (i != 0 ? "." : "") + std::to_string(id.subid[i]);
    return status;
};
const Read real = number<double>(pd_Real);
Read octetsOf(AsnStatus (*read)(AsnContext&, const uint8_t**, uint32_t*)) {
    return [=](AsnContext& ctx, std::string* text) {
        const uint8_t* data = nullptr;
        uint32_t numocts = 0;
        const AsnStatus status = read(ctx, &data, &numocts);
        if (status == kAsnOk) *text = data == nullptr ? "null" : hexText(data, numocts);
        return status;
    };
}
const Read openType = octetsOf(pd_OpenType);
constexpr AsnSizeConstraint k1To4{0, 1, 4, nullptr};
constexpr AsnSizeConstraint k2{0, 2, 2, nullptr};
constexpr AsnSizeConstraint k3{0, 3, 3, nullptr};
constexpr AsnSizeConstraint k5{0, 5, 5, nullptr};
constexpr AsnSizeConstraint k16{0, 16, 16, nullptr};
constexpr AsnSizeConstraint k17{0, 17, 17, nullptr};
constexpr AsnSizeConstraint k1To2{0, 1, 2, nullptr};
constexpr AsnSizeConstraint k1To3{0, 1, 3, nullptr};
constexpr AsnSizeConstraint k1To128{0, 1, 128, nullptr};
constexpr AsnSizeConstraint k1To256{0, 1, 256, nullptr};
constexpr AsnSizeConstraint k0To65536{0, 0, 65536, nullptr};
constexpr AsnSizeConstraint kBeyond{1, 0, 1000, nullptr};
constexpr AsnSizeConstraint kExtensible{0, 2, 2, &kBeyond};
constexpr const AsnSizeConstraint* kNone = nullptr;

enum Variant { unaligned = 0, aligned = 1 };

struct KnownCase {
    const char* why;
    Read read;
    const AsnSizeConstraint* size;
    const char* octets;
    Variant variant;
    int64_t at;           // the bit to begin at
    const char* outcome;  // the value; or the status and the trail
    int32_t end;          // bit position afterwards; -1: it fails
};

constexpr uint16_t kCodes[] = {0x41, 0x263A, 0x42};
constexpr Asn16BitAlphabet kAlphabet{3, kCodes};
constexpr const char* kDialled = "0123456789#*,";
constexpr const char* kSignals = "0123456789#*ABCD!";

TEST(Primitives, KnownEncodings) {
    const KnownCase cases[] = {
        {"0..255 aligns", unsignedInteger(0, 255), kNone, "00 2A", aligned, 3, "42", 16},
        {"0..255 unaligned", unsignedInteger(0, 255), kNone, "05 40", unaligned, 3, "42", 11},
        {"0..256 takes two octets", unsignedInteger(0, 256), kNone, "01 00", aligned, 0, "256", 16},
        {"255 values are no octet", unsignedInteger(1, 255), kNone, "00 54", aligned, 7, "43", 15},
        {"65537 values take a count", unsignedInteger(0, 65536), kNone, "40 12 34", aligned, 0,
         "4660", 24},
        {"all of 32 bits", unsignedInteger(0, UINT32_MAX), kNone, "C0 FF FF FF FF", aligned, 0,
         "4294967295", 40},
        {"beyond the range is no error", unsignedInteger(0, 4), kNone, "E0", aligned, 0, "7", 3},
        {"negative lower bound", integer(-5, 5), kNone, "A0", aligned, 0, "5", 4},
        {"extensible, beyond", extInteger, kNone, "80 02 80 01", aligned, 0, "-32767", 32},
        {"128 needs a leading zero", uncons, kNone, "02 00 80", aligned, 0, "128", 24},
        {"small, long form aligns in both", smallNumber, kNone, "80 80 C8", unaligned, 0, "200",
         24},
        {"14-bit form, anywhere", length, kNone, "10 20 00", unaligned, 3, "256", 19},
        {"SIZE (1..256) aligns", length, &k1To256, "00 FF", aligned, 1, "256", 16},
        {"65536 is no bound", length, &k0To65536, "05", aligned, 0, "5", 8},
        {"in the extension", length, &kExtensible, "80 00 09", aligned, 0, "9", 24},
        {"the data may be missing", component, kNone, "03", aligned, 0, "3", 0},
        {"no size, mid-octet", dynOctets, kNone, "01 55 80 00", unaligned, 1, "AB 00", 25},
        {"fixed size of 2 does not align", fixedOctets, &k2, "0A BC D0", aligned, 4, "AB CD", 20},
        {"fixed size of 3 aligns", fixedOctets, &k3, "00 AB CD EF", aligned, 4, "AB CD EF", 32},
        {"short range aligns", fixedOctets, &k1To2, "80 AB CD", aligned, 0, "AB CD", 24},
        {"16 bits do not align", fixedBits, &k16, "0A BC D0", aligned, 4, "16: AB CD", 20},
        {"17 bits align", fixedBits, &k17, "00 AB CD FF", aligned, 4, "17: AB CD 80", 25},
        {"indexes of 4 bits", characters(pd_NumericString), kNone, "04 23 04", unaligned, 0, "12 3",
         24},
        {"codes of 7 bits", characters(pd_PrintableString), kNone, "02 83 08", unaligned, 0, "AB",
         22},
        {"13 permitted, in the order of the table", characters(pd_IA5String, kDialled), &k1To128,
         "06 01 2C", aligned, 0, "#*,9", 24},
        {"17 permitted: 5 bits", characters(pd_IA5String, kSignals), &k2, "80 00", unaligned, 0,
         "D!", 10},
        {"17 permitted: codes", characters(pd_IA5String, kSignals), &k1To128, "00 44", aligned, 0,
         "D", 16},
        {"one permitted: 1 bit", characters(pd_VisibleString, "~"), kNone, "01 00", aligned, 0, "~",
         9},
        {"86 characters", characters(pd_86CharString, "a_"), kNone, "02 10", unaligned, 0, "_a",
         12},
        {"all of Latin", characters(pd_GeneralString), kNone, "01 E9", aligned, 0, "\xE9", 16},
        {"16-bit indexes", bmp(&kAlphabet), kNone, "02 60", aligned, 0, "9786 66 ", 12},
        {"arcs", objectId, kNone, "06 00 08 91 4A 00 02", aligned, 0, "0.0.8.2250.0.2", 56},
        {"first arc 2", objectId, kNone, "02 81 34", aligned, 0, "2.100", 24},
        {"open type across octets", openType, kNone, "E0 55 57 60", unaligned, 3, "AA BB", 27},
        {"an empty fragment is not the end", openType, kNone, "C0 02 AA BB", aligned, 0, "AA BB",
         32},
        // bitmap length 2 (0 000001), bits 1 1, then the open types 02 AABB and 01 CC
        {"additions from a shared octet on", octetsOf(pd_OpenTypeExt), kNone,
         "00 70 02 AA BB 01 CC", aligned, 3, "00 70 02 AA BB 01 CC", 56},
        {"an octet partly read is not counted", octetsOf(pd_OpenTypeExt), kNone,
         "03 81 55 5D 80 E6 00", unaligned, 0, "03 81 55 5D 80 E6", 49},
        {"alternative", octetsOf(pd_ChoiceOpenTypeExt), kNone, "00 01 AA", aligned, 0, "00 01 AA",
         24},

        {"number, alignment", integer(0, 255), kNone, "", aligned, 0, "-2 numbers numbers", -1},
        {"bounds the wrong way round", integer(10, 9), kNone, "00", aligned, 0, "-24", -1},
        {"too long", fixedOctets, kNone, "06 41 42 43 44 45 46", aligned, 0, "-17 bits strings",
         -1},
        {"no size covers 4", fixedBits, &k1To3, "C0", aligned, 0, "-23 strings", -1},
        {"characters, fragmented", characters(pd_IA5String), kNone, "C1 41", aligned, 0,
         "2 strings strings", -1},
        {"11 is no digit", characters(pd_NumericString), kNone, "01 B0", aligned, 0,
         "-23 strings strings", -1},
        {"object identifier, contents", objectId, kNone, "03 2B 06", aligned, 0, "-2 bits objid",
         -1},
        {"real, contents", real, kNone, "03 80", aligned, 0, "-2 real", -1},
        {"additions, 2^32 of them", octetsOf(pd_OpenTypeExt), kNone, "80 04 FF FF FF FF", aligned,
         0, "-2 opentypes", -1},
        {"additions, open type", octetsOf(pd_OpenTypeExt), kNone, "01 02 FF", aligned, 0,
         "-2 bits strings opentypes opentypes", -1},
    };
    for (const KnownCase& c : cases) {
        SCOPED_TRACE(std::string(c.why) + (c.variant == aligned ? ", ALIGNED" : ", UNALIGNED"));
        const Octets octets = hex(c.octets);
        for (size_t cut = c.end < 0 ? octets.size() : 0; cut <= octets.size(); ++cut) {
            SCOPED_TRACE("cut to " + std::to_string(cut) + " octets");
            Decoding decoding(Octets(octets.begin(), octets.begin() + static_cast<ptrdiff_t>(cut)),
                              c.variant == aligned);
            decoding.at(std::min<int64_t>(c.at, static_cast<int64_t>(cut) * 8));
            decoding.ctx.sizeConstraint = c.size;
            std::string value;
            const AsnStatus status = c.read(decoding.ctx, &value);
            if (cut < octets.size()) {
                EXPECT_EQ(status, kAsnEndOfData);
                EXPECT_GT(decoding.ctx.errInfo.trailCount, 0);
                continue;
            }
            EXPECT_EQ(c.end < 0 ? failureOf(decoding.ctx, status) : value, c.outcome);
            if (c.end >= 0) EXPECT_EQ(pd_GetBitOffset(decoding.ctx), c.end);
        }
    }
}

TEST(Primitives, FragmentsAreJoined) {
    Octets octets{0xC1};
    for (int i = 0; i < 16384; ++i) octets.push_back(static_cast<uint8_t>(i));
    octets.insert(octets.end(), {0x01, 0x99});
    for (const bool isAligned : {true, false}) {
        Decoding decoding(octets, isAligned);
        EXPECT_EQ(pd_GetComponentLength(decoding.ctx, 8), 16385);
        AsnDynOctStr value{};
        ASSERT_EQ(pd_DynOctetString(decoding.ctx, value), kAsnOk);
        ASSERT_EQ(value.numocts, 16385U);
        EXPECT_EQ(value.data[16383], 0xFF);
        EXPECT_EQ(value.data[16384], 0x99);
    }
}

TEST(Primitives, MemoryIsAllocatedForPresentDataOnly) {
    std::string ignored;
    for (const char* lying : {"C8 00", "BF FF 00"})  // 131072 octets, 16383
        for (const Read& read : {dynOctets, openType}) {
            Decoding decoding(hex(lying));
            EXPECT_EQ(read(decoding.ctx, &ignored), kAsnEndOfData);
            EXPECT_EQ(decoding.ctx.memHeap.newest, nullptr);
        }
    for (const Read& read :
         {dynBits, dynOctets, openType, characters(pd_IA5String), bmp(nullptr)}) {
        Decoding decoding(Octets(40, 3));
        allocation = {.failAt = 1};
        const AsnStatus status = read(decoding.ctx, &ignored);
        EXPECT_EQ(status, kAsnNoMemory);
        allocation = {};
    }
    Decoding texts(hex("08 4141414141414141 08 4242424242424242"));
    const char* first = nullptr;
    const char* second = nullptr;
    EXPECT_EQ(pd_IA5String(texts.ctx, &first, nullptr), kAsnOk);
    EXPECT_EQ(pd_IA5String(texts.ctx, &second, nullptr), kAsnOk);
    EXPECT_STREQ(first, "AAAAAAAA") << "each has room for its NUL";
}

TEST(Primitives, ObjectIdsHaveAtMost128Arcs) {
    const auto decode = [](uint32_t contents) {
        Octets octets{static_cast<uint8_t>(0x80 | contents >> 8), static_cast<uint8_t>(contents)};
        octets.resize(2 + contents, 1);
        Decoding decoding(octets);
        AsnObjId id{};
        return pd_ObjectId(decoding.ctx, id);
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

TEST(Primitives, PendingConstraintStays) {
    Decoding decoding({0});
    EXPECT_EQ(pd_SetSizeConstraint(decoding.ctx, &k1To4), kAsnOk);
    EXPECT_EQ(pd_SetSizeConstraint(decoding.ctx, &k5), kAsnOk);
    EXPECT_EQ(decoding.ctx.sizeConstraint, &k1To4);
    constexpr AsnSizeConstraint kWider{0, 0, 9, nullptr};
    EXPECT_EQ(pd_SetSizeConstraint(decoding.ctx, &kWider), kAsnConstraint);
    decoding.ctx.sizeConstraint = nullptr;
}

TEST(Primitives, PresenceBitsStartAtBitZero) {
    struct Flags {
        uint32_t first : 1;
        uint32_t second : 1;
        uint32_t third : 1;
    };
    for (const auto& [octets, at] :
         {std::pair{"A0", 0}, {"02 80", 6}}) {  // within an octet, across
        Decoding decoding(hex(octets));
        decoding.at(at);
        Flags m{};
        asnPresenceBits(AsnPlainReader{decoding.ctx}, m, 3);
        EXPECT_EQ(m.first, 1U);
        EXPECT_EQ(m.second, 0U);
        EXPECT_EQ(m.third, 1U);
        EXPECT_FALSE(asnExtensionBit(AsnPlainReader{decoding.ctx}));
    }
    Decoding ended({0xFF});
    ended.at(8);
    EXPECT_FALSE(asnExtensionBit(AsnPlainReader{ended.ctx})) << "a bit beyond the end counts as 0";
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

}  // namespace
