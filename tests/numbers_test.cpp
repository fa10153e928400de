// Whole numbers and lengths, in tables over both variants. Each good row is also cut at every
// octet.

#include <functional>

#include "support.h"

namespace {

using Read = std::function<AsnStatus(AsnContext&, int64_t*)>;

Read consInteger(int32_t lower, int32_t upper) {
    return [=](AsnContext& ctx, int64_t* value) {
        int32_t number = 0;
        const AsnStatus status = pd_ConsInteger(ctx, &number, lower, upper);
        *value = number;
        return status;
    };
}
template <class Number>
Read plain(std::function<AsnStatus(AsnContext&, Number*)> function) {
    return [=](AsnContext& ctx, int64_t* value) {
        Number number = 0;
        const AsnStatus status = function(ctx, &number);
        *value = number;
        return status;
    };
}
Read consUnsigned(uint32_t lower, uint32_t upper) {
    return plain<uint32_t>([=](AsnContext& ctx, uint32_t* number) {
        return pd_ConsUnsigned(ctx, number, lower, upper);
    });
}
Read wholeNumber(uint32_t rangeSize) {
    return plain<uint32_t>([=](AsnContext& ctx, uint32_t* number) {
        return pd_ConsWholeNumber(ctx, number, rangeSize);
    });
}
Read extInteger() {
    return plain<int32_t>(
        [](AsnContext& ctx, int32_t* number) { return pd_ExtInteger(ctx, number, 1, 32768); });
}
Read length(const AsnSizeConstraint* size) {
    return plain<uint32_t>([=](AsnContext& ctx, uint32_t* number) {
        pd_SetSizeConstraint(ctx, size);
        return pd_Length(ctx, number);
    });
}
Read componentLength(uint32_t itemBits) {
    return [=](AsnContext& ctx, int64_t* value) {
        const int32_t total = pd_GetComponentLength(ctx, itemBits);
        *value = total;
        return total < 0 ? total : kAsnOk;
    };
}

constexpr AsnSizeConstraint k1To4{0, 1, 4, nullptr};
constexpr AsnSizeConstraint k5{0, 5, 5, nullptr};
constexpr AsnSizeConstraint k1To256{0, 1, 256, nullptr};
constexpr AsnSizeConstraint k0To65536{0, 0, 65536, nullptr};
constexpr AsnSizeConstraint kBeyond{1, 0, 1000, nullptr};
constexpr AsnSizeConstraint kExtensible{0, 2, 2, &kBeyond};

enum Variant { unaligned = 0, aligned = 1 };

struct NumberCase {
    const char* why;
    Read read;
    const char* octets;
    Variant variant;
    int64_t at;  // bit to begin at
    int64_t value;
    AsnStatus status;
    int32_t end;  // bit position afterwards
};

TEST(Numbers, Table) {
    const Read uncons =
        plain<int32_t>(static_cast<AsnStatus (*)(AsnContext&, int32_t*)>(pd_UnconsInteger));
    const Read unconsUnsigned =
        plain<uint32_t>(static_cast<AsnStatus (*)(AsnContext&, uint32_t*)>(pd_UnconsUnsigned));
    const Read small = plain<uint32_t>(
        static_cast<AsnStatus (*)(AsnContext&, uint32_t*)>(pd_SmallNonNegWholeNumber));
    const NumberCase cases[] = {
        {"one value takes nothing", consUnsigned(0, 0), "", aligned, 0, 0, 0, 0},
        {"one bit", consUnsigned(0, 1), "80", aligned, 0, 1, 0, 1},
        {"0..255 aligns", consUnsigned(0, 255), "00 2A", aligned, 3, 42, 0, 16},
        {"0..255 unaligned", consUnsigned(0, 255), "05 40", unaligned, 3, 42, 0, 11},
        {"0..256 takes two octets", consUnsigned(0, 256), "01 00", aligned, 0, 256, 0, 16},
        {"0..256 takes 9 bits", consUnsigned(0, 256), "80 00", unaligned, 0, 256, 0, 9},
        {"255 values are no octet", consUnsigned(1, 255), "00 54", aligned, 7, 43, 0, 15},
        {"65536 values", consUnsigned(0, 65535), "12 34", aligned, 0, 0x1234, 0, 16},
        {"65537 values take a count", consUnsigned(0, 65536), "40 12 34", aligned, 0, 0x1234, 0,
         24},
        {"3 octets after padding", wholeNumber(70000), "20 01 11 70", aligned, 2, 70000, 0, 32},
        {"all of 32 bits", consUnsigned(0, UINT32_MAX), "C0 FF FF FF FF", aligned, 0, UINT32_MAX, 0,
         40},
        {"all of 32 bits", consUnsigned(0, UINT32_MAX), "FF FF FF FE", unaligned, 0, UINT32_MAX - 1,
         0, 32},
        {"1..4294967295", consUnsigned(1, UINT32_MAX), "00 07", aligned, 0, 8, 0, 16},
        {"2^32 values are 32 bits, as they stand", wholeNumber(0), "80 00 00 01", aligned, 0,
         0x80000001, 0, 32},
        {"beyond the range is no error", consUnsigned(0, 4), "E0", aligned, 0, 7, 0, 3},
        {"negative lower bound", consInteger(-5, 5), "A0", aligned, 0, 5, 0, 4},
        {"full signed range", consInteger(INT32_MIN, INT32_MAX), "00 00 00 01", unaligned, 0,
         int64_t{INT32_MIN} + 1, 0, 32},
        {"bounds the wrong way round", consInteger(10, 9), "00", aligned, 0, 0, -24, 0},
        {"extensible, in range", extInteger(), "00 00 5F", aligned, 0, 96, 0, 24},
        {"extensible, beyond", extInteger(), "80 02 80 01", aligned, 0, -32767, 0, 32},
        {"-1", uncons, "01 FF", aligned, 0, -1, 0, 16},
        {"128 needs a leading zero", uncons, "02 00 80", aligned, 0, 128, 0, 24},
        {"leading octets are lost", uncons, "05 01 00 00 00 02", aligned, 0, 2, 0, 48},
        {"a number without octets", uncons, "00 00", aligned, 0, 0, 0, 8},
        {"unaligned", uncons, "0F F0", unaligned, 7, 0, -2, 15},
        {"unsigned", unconsUnsigned, "04 FF FF FF FF", aligned, 0, UINT32_MAX, 0, 40},
        {"small", small, "0A", aligned, 0, 5, 0, 7},
        {"small, long form aligns in both", small, "80 80 C8", unaligned, 0, 200, 0, 24},
        {"small, long form", small, "80 02 01 2C", aligned, 0, 300, 0, 32},
        {"7-bit form", length(nullptr), "05", aligned, 0, 5, 0, 8},
        {"14-bit form", length(nullptr), "81 00", aligned, 0, 256, 0, 16},
        {"14-bit form, anywhere", length(nullptr), "10 20 00", unaligned, 3, 256, 0, 19},
        {"a fragment is not the end", length(nullptr), "C4", aligned, 0, 65536, 2, 8},
        {"a fragment of nothing", length(nullptr), "C0", aligned, 0, 0, 2, 8},
        {"more than four blocks", length(nullptr), "FF", aligned, 0, 63 * 16384, 2, 8},
        {"SIZE (1..4)", length(&k1To4), "40", aligned, 0, 2, 0, 2},
        {"SIZE (5)", length(&k5), "", aligned, 0, 5, 0, 0},
        {"SIZE (1..256) aligns", length(&k1To256), "00 FF", aligned, 1, 256, 0, 16},
        {"65536 is no bound", length(&k0To65536), "05", aligned, 0, 5, 0, 8},
        {"within the root", length(&kExtensible), "00", aligned, 0, 2, 0, 1},
        {"in the extension", length(&kExtensible), "80 00 09", aligned, 0, 9, 0, 24},
        {"total of one fragment", componentLength(8), "02 AA BB", aligned, 0, 2, 0, 0},
        {"more than there is", componentLength(8), "03 AA BB", aligned, 0, -2, -2, 0},
        {"bits count as bits", componentLength(1), "11 AA BB 80", aligned, 0, 17, 0, 0},
    };
    for (const NumberCase& c : cases) {
        SCOPED_TRACE(std::string(c.why) + (c.variant == aligned ? ", ALIGNED" : ", UNALIGNED"));
        const Octets octets = hex(c.octets);
        Decoding decoding(octets, c.variant == aligned);
        decoding.at(c.at);
        int64_t value = 0;
        EXPECT_EQ(c.read(decoding.ctx, &value), c.status);
        EXPECT_EQ(pd_GetBitOffset(decoding.ctx), c.end);
        if (c.status >= 0) EXPECT_EQ(value, c.value);
        EXPECT_EQ(decoding.ctx.sizeConstraint, nullptr) << "a constraint serves one length";
        if (c.status < 0) continue;
        for (size_t cut = 0; cut * 8 < static_cast<size_t>(std::max(c.end, 0)); ++cut) {
            SCOPED_TRACE("cut to " + std::to_string(cut));
            Decoding shorter(Octets(octets.begin(), octets.begin() + static_cast<ptrdiff_t>(cut)),
                             c.variant == aligned);
            shorter.at(std::min<int64_t>(c.at, static_cast<int64_t>(cut) * 8));
            EXPECT_EQ(c.read(shorter.ctx, &value), kAsnEndOfData);
            EXPECT_GT(shorter.ctx.errInfo.trailCount, 0);
        }
    }
}

TEST(Numbers, AddUpFragmentsWithoutMoving) {
    Octets octets{0xC1};
    octets.resize(1 + 16384);
    octets.insert(octets.end(), {0x02, 0xAA, 0xBB});
    Decoding decoding(octets);
    EXPECT_EQ(pd_GetComponentLength(decoding.ctx, 8), 16386);
    EXPECT_EQ(pd_GetBitOffset(decoding.ctx), 0);
}

TEST(Numbers, PendingConstraintStays) {
    Decoding decoding({0});
    EXPECT_EQ(pd_SetSizeConstraint(decoding.ctx, &k1To4), kAsnOk);
    EXPECT_EQ(pd_SetSizeConstraint(decoding.ctx, &k5), kAsnOk);
    EXPECT_EQ(decoding.ctx.sizeConstraint, &k1To4);
    const AsnSizeConstraint wider{0, 0, 9, nullptr};
    EXPECT_EQ(pd_SetSizeConstraint(decoding.ctx, &wider), kAsnConstraint);
    decoding.ctx.sizeConstraint = nullptr;
}

TEST(Numbers, BitCounts) {
    EXPECT_EQ(asnBitCount(0), 0U);
    EXPECT_EQ(asnBitCount(1), 1U);
    EXPECT_EQ(asnBitCount(16), 5U);
    EXPECT_EQ(asnBitCount(0x7FFFFFFF), 31U);
    EXPECT_EQ(asnBitCount(0x80000000), 32U);
}

}  // namespace
