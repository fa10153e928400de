// The context: element heap, own buffer, second cursors, errors and their reports.

#include <cstring>

#include "allocation.h"
#include "support.h"

namespace {

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

TEST(Heap, UsesHolesOfOlderBlocks) {
    AsnMemHeap heap{};
    asnMemAlloc(heap, 4000);  // a hole of 88
    AsnMemBlock* const oldest = heap.newest;
    asnMemAlloc(heap, 4080);  // a hole of 8
    asnMemAlloc(heap, 4088);
    asnMemAlloc(heap, 96);  // too large for any hole: a new block
    asnMemAlloc(heap, 3992);
    EXPECT_EQ(heap.newest->used, 4088U);
    asnMemAlloc(heap, 80);
    EXPECT_EQ(oldest->used, 4080U);
    auto* const octets = static_cast<unsigned char*>(asnMemAlloc(heap, 8));
    for (int i = 0; i < 8; ++i) EXPECT_EQ(octets[i], 0);
    asnMemRelease(heap);
}

TEST(Heap, ALentBlockIsTheFirst) {
    AsnMemHeap heap{};
    AsnMemFirstBlock first;
    asnMemLend(heap, first);
    EXPECT_EQ(asnMemAlloc(heap, sizeof first.payload - 16), first.payload);
    void* const oversized = asnMemAllocRaw(heap, kAsnBlockPayload + 1);
    EXPECT_NE(heap.newest, &first.block);
    EXPECT_EQ(oversized, heap.newest + 1);
    EXPECT_EQ(asnMemAllocRaw(heap, 8), first.payload + sizeof first.payload - 16);
    void* const outside = asnMemAllocRaw(heap, kAsnBlockPayload);
    EXPECT_EQ(outside, heap.newest + 1);
    EXPECT_EQ(asnMemAllocRaw(heap, 8), first.payload + sizeof first.payload - 8);
    asnMemRelease(heap);  // the sanitizer tells if it is freed
}

TEST(Heap, RoomForKeysIsNotCleared) {
    // openLogicalChannelAck holds a key of up to 65535 octets inline: octets beyond the count
    // are not cleared, all others are.
    AsnContext ctx;
    const uint8_t octet = 0;
    ASSERT_EQ(asnInitContext(ctx, &octet, 1), kAsnOk);
    const AsnSpan spans[] = {{8, 4}, {16, 2}};
    auto* const dirt = static_cast<unsigned char*>(asnMemAlloc(ctx.memHeap, 48));
    std::memset(dirt, 0xAA, 48);
    ctx.memHeap.newest->used = 0;
    const auto* records = static_cast<unsigned char*>(asnAllocRecords(ctx, 2, 24, spans, 2));
    for (size_t i = 0; i < 48; ++i) {
        const size_t at = i % 24;
        const bool uncleared = (at >= 8 && at < 12) || at == 16 || at == 17;
        EXPECT_EQ(records[i], uncleared ? 0xAA : 0) << i;
    }
    EXPECT_EQ(asnAllocRecords(ctx, SIZE_MAX / 8, 24, nullptr, 0), nullptr);
    asnFreeContext(ctx);
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
    asnFreeContext(*ctx);  // what it allocated is freed, although the cursor is elsewhere
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

TEST(Errors, KeepTheFirstStatusAndEightSites) {
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
    const auto keep = [](const char* text, void* to) {
        *static_cast<std::string*>(to) += std::string(text) + "|";
    };
    asnLogErrorCb(info, keep, &lines);
    EXPECT_EQ(lines,
              "ASN.1 ERROR: Status -12|No dynamic memory available|"
              "  Module: H323, Line 7\n|  Module: rtsrc/asn1per, Line 1042\n|");
    EXPECT_EQ(info.status, 0);
    info.trailCount = 0;
    info.status = kAsnConstraint;
    const std::string longText(3000, 'x');
    EXPECT_EQ(asnAddErrorText(info, longText.c_str()), 1);
    lines.clear();
    asnLogErrorCb(info, keep, &lines);
    EXPECT_NE(lines.find("field " + longText + ", value ?|"), std::string::npos);
    fail();
    ::testing::internal::CaptureStdout();
    asnPrintError(info);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
              "ASN.1 ERROR: Status -12\nNo dynamic memory available\n"
              "Stack trace:  Module: H323, Line 7\n  Module: rtsrc/asn1per, Line 1042\n");
    EXPECT_EQ(info.trailCount, 0);
}

#if !defined(_WIN32)  // there operator new is counted as well
TEST(Memory, ContextsAndReports) {
    allocation = {.failAt = 1};
    EXPECT_EQ(asnNewContext(nullptr, 0, 1), nullptr);
    allocation = {.failAt = 2};
    EXPECT_EQ(asnNewContext(nullptr, 0, 1), nullptr);
    EXPECT_EQ(allocation.unreleased, 0);

    const uint8_t octet = 0;
    AsnContext ctx;
    ASSERT_EQ(asnInitContext(ctx, &octet, 1), kAsnOk);
    allocation = {.failAt = 1};
    EXPECT_EQ(asnBindBuffer(ctx, nullptr, 0), kAsnNoMemory);
    EXPECT_EQ(ctx.data, &octet) << "the octets stay bound";
    allocation = {};
    const std::string parameter(300, 'x');
    EXPECT_EQ(asnAddErrorText(ctx.errInfo, parameter.c_str()), 1);
    allocation.failAt = 2;
    EXPECT_EQ(asnAddErrorInt(ctx.errInfo, 1), 0);
    EXPECT_EQ(ctx.errInfo.parmCount, 1);
    ctx.errInfo.status = -3;
    std::vector<std::string> report;
    const auto collect = [](const char* line, void* to) {
        static_cast<std::vector<std::string>*>(to)->emplace_back(line);
    };
    asnLogErrorCb(ctx.errInfo, collect, &report);
    ASSERT_EQ(report.size(), 2U);
    EXPECT_EQ(report[1], ("Unexpected tag encountered: expected = " + parameter).substr(0, 199))
        << "without memory, a long message is truncated";
    allocation.failAt = 0;
    EXPECT_EQ(asnAddErrorInt(ctx.errInfo, 1), 1);  // freed with the context
    asnFreeContext(ctx);
    EXPECT_EQ(allocation.unreleased, 0);
    allocation = {};
}

#endif

}  // namespace
