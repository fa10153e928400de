// The bit reader and the context: positions, forms of the cursor, ends of the data.

#include "support.h"

namespace {

struct ReadCase {
    const char* why;
    const char* octets;
    uint32_t byteIndex;
    int16_t bitOffset;
    uint32_t nbits;
    AsnStatus status;
    uint32_t value;
    uint32_t endByte;
    int16_t endOffset;
};

TEST(Bits, ReadsNumbers) {
    const ReadCase cases[] = {
        // why                           octets           at     bits status value      end
        {"no bits never fail", "FF", 1, 8, 0, 0, 0, 1, 8},
        {"last two and the next one", "03 80", 0, 2, 3, 0, 7, 1, 7},
        {"within an octet", "3C", 0, 7, 5, 0, 15, 0, 2},
        {"to the end of an octet", "3C", 0, 4, 4, 0, 12, 1, 8},
        {"(n, 0) is (n + 1, 8)", "FF A5", 0, 0, 8, 0, 0xA5, 2, 8},
        {"32 bits over five octets", "01 23 45 67 8F", 0, 4, 32, 0, 0x12345678, 4, 4},
        {"earliest bits are lost", "FF 01 02 03 04", 0, 8, 40, 0, 0x01020304, 5, 8},
        {"straddling the end", "FF", 0, 3, 8, -2, 0, 0, 3},
        {"one bit too many", "FF FF", 0, 7, 16, -2, 0, 0, 7},
        {"at the end", "FF", 0, 0, 1, -2, 0, 0, 0},
    };
    for (const ReadCase& c : cases) {
        SCOPED_TRACE(c.why);
        Decoding decoding(hex(c.octets));
        decoding.ctx.byteIndex = c.byteIndex;
        decoding.ctx.bitOffset = c.bitOffset;
        uint32_t value = 0;
        EXPECT_EQ(pd_bits(decoding.ctx, &value, c.nbits), c.status);
        EXPECT_EQ(value, c.value);
        EXPECT_EQ(decoding.ctx.byteIndex, c.endByte);
        EXPECT_EQ(decoding.ctx.bitOffset, c.endOffset);
        EXPECT_EQ(decoding.ctx.errInfo.trailCount, c.status < 0 ? 1 : 0);
    }
}

struct CopyCase {
    const char* why;
    const char* octets;
    int16_t bitOffset;
    uint32_t nbits;
    uint32_t capacity;
    AsnStatus status;
    const char* expected;
    uint32_t endByte;
    int16_t endOffset;
};

TEST(Bits, CopiesOctets) {
    const CopyCase cases[] = {
        // why                               octets      at bits cap status expected end
        {"aligned", "12 34 56", 8, 24, 3, 0, "12 34 56", 3, 8},
        {"aligned, low bits cleared", "FF FF", 8, 12, 2, 0, "FF F0", 1, 4},
        {"unaligned, low bits cleared", "0F FF FF", 4, 12, 2, 0, "FF F0", 2, 8},
        {"within what is left of an octet", "0F", 4, 3, 1, 0, "E0", 0, 1},
        {"whole octets keep (n, 0)", "FF A5 5A", 0, 16, 2, 0, "A5 5A", 2, 0},
        {"a part from (n, 0)", "FF A5", 0, 4, 1, 0, "A0", 1, 4},
        {"across one boundary", "01 80", 1, 2, 1, 0, "C0", 1, 7},
        {"end of the data", "FF FF", 7, 16, 9, -2, "", 0, 7},
        {"buffer too small", "FF FF", 8, 9, 1, -17, "", 0, 8},
        {"nothing at the end", "FF", 0, 0, 0, 0, "", 0, 0},
    };
    for (const CopyCase& c : cases) {
        SCOPED_TRACE(c.why);
        Decoding decoding(hex(c.octets));
        decoding.ctx.bitOffset = c.bitOffset;
        const Octets expected = hex(c.expected);
        Octets copied(expected.size());
        EXPECT_EQ(pd_octets(decoding.ctx, copied.data(), c.capacity, c.nbits), c.status);
        EXPECT_EQ(copied, expected);
        EXPECT_EQ(decoding.ctx.byteIndex, c.endByte);
        EXPECT_EQ(decoding.ctx.bitOffset, c.endOffset);
    }
}

TEST(Bits, SingleBitsLeaveTheOctetFullyRead) {
    Decoding decoding({0xB2});
    std::string bits;
    uint8_t bit = 0;
    while (pd_bit(decoding.ctx, &bit) == kAsnOk) bits += static_cast<char>('0' + bit);
    EXPECT_EQ(bits, "10110010");
    EXPECT_EQ(decoding.ctx.byteIndex, 0U);
    EXPECT_EQ(decoding.ctx.bitOffset, 0);
    EXPECT_EQ(pd_GetBitOffset(decoding.ctx), 8);
    EXPECT_FALSE(asnExtensionBit(AsnPlainReader{decoding.ctx}))
        << "a flag beyond the end counts as 0";
    EXPECT_EQ(pd_byteAlign(decoding.ctx), kAsnEndOfData);
    EXPECT_EQ(decoding.ctx.byteIndex, 1U);
    EXPECT_EQ(decoding.ctx.bitOffset, 8);
    EXPECT_EQ(pd_bit(decoding.ctx, nullptr), kAsnEndOfData) << "(size, 8) is the end too";
}

TEST(Bits, MovesWithinSevenBitsOfTheEnd) {
    const struct {
        int64_t distance;
        AsnStatus status;
        uint32_t byteIndex;
        int16_t bitOffset;
    } cases[] = {
        {11, 0, 1, 5}, {16, 0, 2, 8}, {23, 0, 2, 1}, {24, -2, 3, 8}, {int64_t{1} << 32, -2, 3, 8},
        {-1, -2, 0, 8}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.distance);
        Decoding decoding({0, 0});
        EXPECT_EQ(pd_moveBitCursor(decoding.ctx, c.distance), c.status);
        EXPECT_EQ(decoding.ctx.byteIndex, c.byteIndex);
        EXPECT_EQ(decoding.ctx.bitOffset, c.bitOffset);
        uint32_t value = 0;
        if (c.distance >= 16) EXPECT_EQ(pd_bits(decoding.ctx, &value, 1), kAsnEndOfData);
    }
}

TEST(Heap, FillsBlocksFromTheNewest) {
    AsnMemHeap heap{};
    auto* const first = static_cast<unsigned char*>(asnMemAlloc(heap, 1));
    EXPECT_EQ(asnMemAlloc(heap, 0), first + 8) << "1 octet takes 8, none takes none";
    for (int i = 2; i <= 511; ++i) asnMemAlloc(heap, 8);
    EXPECT_EQ(heap.newest->used, 4088U);
    EXPECT_EQ(heap.newest->next, nullptr);
    asnMemAlloc(heap, 8);
    AsnMemBlock* const second = heap.newest;
    EXPECT_EQ(second->used, 8U) << "the 512th starts a block";
    auto* const large = static_cast<unsigned char*>(asnMemAlloc(heap, 4089));
    EXPECT_EQ(heap.newest->used, 4088U) << "an oversized block counts as full";
    large[4095] = 1;  // a block of 4096 payload octets: for the sanitizer
    EXPECT_EQ(asnMemAlloc(heap, 16), reinterpret_cast<unsigned char*>(second + 1) + 8);
    EXPECT_EQ(asnMemAlloc(heap, SIZE_MAX), nullptr);
    asnMemRelease(heap);
}

TEST(Heap, UsesHolesBehindTheNewestBlock) {
    AsnMemHeap heap{};
    asnMemAlloc(heap, 4000);  // a hole of 88
    AsnMemBlock* const oldest = heap.newest;
    asnMemAlloc(heap, 4080);  // a hole of 8
    asnMemAlloc(heap, 4088);
    asnMemAlloc(heap, 96);  // too large for any: a walk in vain, and a new block
    asnMemAlloc(heap, 3992);
    EXPECT_EQ(heap.newest->used, 4088U);
    asnMemAlloc(heap, 80);
    EXPECT_EQ(oldest->used, 4080U);
    auto* const octets = static_cast<unsigned char*>(asnMemAlloc(heap, 8));
    for (int i = 0; i < 8; ++i) EXPECT_EQ(octets[i], 0);
    asnMemRelease(heap);
}

TEST(Context, OwnBufferSurvivesARedirection) {
    AsnContext* const ctx = asnNewContext(nullptr, 0, 1);
    ASSERT_NE(ctx, nullptr);
    EXPECT_EQ(ctx->size, 16384U);
    EXPECT_EQ(ctx->dynamic, 1);
    EXPECT_EQ(ctx->reserved, 0x0A0A);
    const uint8_t octets[] = {1, 2};
    ASSERT_EQ(asnBindBuffer(*ctx, octets, 2), kAsnOk);
    EXPECT_EQ(ctx->dynamic, 0);
    asnFreeContext(*ctx);  // what it allocated is freed, although the cursor stands elsewhere
}

TEST(Context, ForkIsASecondCursor) {
    Decoding decoding({0x12, 0x34});
    decoding.at(3);
    asnSetFieldTrace(decoding.ctx, 1);
    AsnContext fork;
    asnForkContext(fork, decoding.ctx);
    uint32_t value = 0;
    EXPECT_EQ(pd_bits(fork, &value, 5), kAsnOk);
    EXPECT_EQ(value, 0x12U);
    EXPECT_EQ(fork.flags, 0);
    EXPECT_EQ(pd_GetBitOffset(decoding.ctx), 3);
    asnFreeContext(fork);
}

TEST(Errors, FirstStatusAndEightSites) {
    Decoding decoding({0});
    AsnErrorInfo& info = decoding.ctx.errInfo;
    for (int line = 1; line <= 10; ++line) asnLogError(info, -1 - line, "H245", line);
    EXPECT_EQ(info.status, -2);
    EXPECT_EQ(info.trailCount, 8);
    EXPECT_EQ(info.trail[7].line, 8);
}

TEST(Errors, TextsTakeTheirParameters) {
    Decoding decoding({0});
    AsnErrorInfo& info = decoding.ctx.errInfo;
    char text[100];
    info.status = kAsnConstraint;
    EXPECT_EQ(asnAddErrorText(info, "X"), 1);
    EXPECT_STREQ(asnErrorText(info, text, sizeof text),
                 "Value constraint violation: field X, value ?");
    EXPECT_EQ(asnAddErrorInt(info, -7) + asnAddErrorUnsigned(info, 7) + asnAddErrorHex(info, 10),
              3);
    EXPECT_STREQ(info.parms[3], "000a");
    EXPECT_STREQ(asnErrorText(info, text, sizeof text),
                 "Value constraint violation: field X, value -7");
    EXPECT_STREQ(asnErrorText(info, text, 6), "Value");
    EXPECT_EQ(asnAddErrorText(info, "fifth"), 1);
    EXPECT_EQ(asnAddErrorText(info, "sixth"), 0);
    asnClearErrorParams(info);
    for (const AsnStatus status : {0, 2}) {
        info.status = status;
        EXPECT_STREQ(asnErrorText(info, text, sizeof text), "normal completion status");
    }
    for (const AsnStatus status : {-25, -100, INT32_MIN}) {
        info.status = status;
        EXPECT_STREQ(asnErrorText(info, text, sizeof text), "unrecognized completion status");
    }
}

TEST(Errors, ReportsFromTheOutermostSite) {
    Decoding decoding({0});
    AsnErrorInfo& info = decoding.ctx.errInfo;
    const auto fail = [&] {
        asnLogError(info, kAsnNoMemory, kAsnRuntime, 1042);
        asnLogError(info, kAsnNoMemory, "H323", 7);
    };
    fail();
    std::string lines;
    asnLogErrorCb(
        info,
        [](const char* text, void* to) {
            *static_cast<std::string*>(to) += std::string(text) + "|";
        },
        &lines);
    EXPECT_EQ(lines,
              "ASN.1 ERROR: Status -12|No dynamic memory available|"
              "  Module: H323, Line 7|  Module: rtsrc/asn1per, Line 1042|");
    EXPECT_EQ(info.status, 0);
    info.trailCount = 0;
    fail();
    ::testing::internal::CaptureStdout();
    asnPrintError(info);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
              "ASN.1 ERROR: Status -12\nNo dynamic memory available\n"
              "Stack trace:  Module: H323, Line 7\n  Module: rtsrc/asn1per, Line 1042\n");
    EXPECT_EQ(info.trailCount, 0);
}

}  // namespace
