// The text of every construct, the trace and the diagnostics.

#include <algorithm>
#include <functional>

#include "support.h"

namespace {

const std::string kBlanks(49, ' ');

TEST(Print, Leaves) {
    const uint8_t octets[33] = {0x41, 0x42, 0x00, 0x7F, 0x20, 0x20};
    AsnObjId id{6, {0, 0, 8, 2250, 0, UINT32_MAX}};
    uint16_t characters[] = {0x41, 0x263A};
    const AsnBMPString bmp{2, characters};
    const struct {
        std::string text;
        std::string expected;
    } cases[] = {
        {dumped([](AsnDump& d) { asnPrintBoolean(d, 2); }), "P = TRUE\n"},
        {dumped([](AsnDump& d) { asnPrintBoolean(d, 0); }), "P = FALSE\n"},
        {dumped([](AsnDump& d) { asnPrintInteger(d, INT32_MIN); }), "P = -2147483648\n"},
        {dumped([](AsnDump& d) { asnPrintInteger(d, 100); }), "P = 100\n"},
        {dumped([](AsnDump& d) { asnPrintUnsigned(d, UINT32_MAX); }), "P = 4294967295\n"},
        {dumped([](AsnDump& d) { asnPrintReal(d, 0.5); }), "P = 0.500000\n"},
        {dumped([](AsnDump& d) { asnPrintCharStr(d, "a'\x01"); }), "P = 'a'\x01'\n"},
        // C0, DEL, C1 as one octet and as UTF-8, a line end that would make a line of its own.
        {dumped([](AsnDump& d) {
             d.escaped = true;
             asnPrintCharStr(d, "a~\\\x1b[\x7f\x9b\xc2\x9b\xff'\nP = 1");
         }),
         R"(P = 'a~\\\x1b[\x7f\x9b\xc2\x9b\xff'\x0aP = 1')"
         "\n"},
        {dumped([&](AsnDump& d) { asnPrintOID(d, id); }), "P = { \n0 0 8 2250 0 -1 }\n"},
        {dumped([&](AsnDump& d) { asnPrintOIDValue(d, {}); }), "{ \n}\n"},
        {dumped([&](AsnDump& d) { asnPrintOctStr(d, 6, octets, "."); }),
         "P.numocts = 6\nP.data = \n41 42 00 7f 20 20 " + std::string(31, ' ') + "AB..\n"},
        {dumped([&](AsnDump& d) { asnPrintBitStr(d, 9, octets, "/"); }),
         "P/numbits = 9\nP/data = \n41 42 " + std::string(43, ' ') + "AB\n"},
        {dumped([&](AsnDump& d) { asnPrintOpenType(d, 0, nullptr, "."); }),
         "P.numocts = 0\nP.data = \n" + kBlanks + "\n"},
        {dumped([&](AsnDump& d) { asnPrintBMPStr(d, bmp, "."); }),
         "P.nchars = 2\nP.data = \n41 00 3a 26 " + std::string(37, ' ') + "A.:&\n"},
    };
    for (const auto& c : cases) EXPECT_EQ(c.text, c.expected);
    for (const uint32_t count : {0U, 1U, 15U, 16U, 17U, 32U, 33U}) {
        const std::string text = dumped([&](AsnDump& d) { asnHexDump(d, octets, count); });
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'),
                  count / 16 + (count % 16 != 0 || count == 0));
        if (count >= 16) EXPECT_EQ(text[48 + 1 + 16], '\n');
    }
}

TEST(Print, FormsWithAPathGiveTheSame) {
    const uint8_t octets[] = {1};
    ::testing::internal::CaptureStdout();
    asnPrintInteger("A.b", -1);
    asnPrintUnsigned("A.b", 1);
    asnPrintBoolean("A.b", 1);
    asnPrintReal("A.b", 1);
    asnPrintCharStr("A.b", "x");
    asnPrintOID("A.b", {1, {9}});
    asnPrintBitStr("A.b", 1, octets, ".");
    asnPrintBMPStr("A.b", {}, ".");
    asnHexDump(octets, 0);
    const std::string one = "01 " + std::string(46, ' ') + ".\n";
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
              "A.b = -1\nA.b = 1\nA.b = TRUE\nA.b = 1.000000\nA.b = 'x'\nA.b = { \n9 }\n"
              "A.b.numbits = 1\nA.b.data = \n" +
                  one + "A.b.nchars = 0\nA.b.data = \n" + kBlanks + "\n" + kBlanks + "\n");
}

TEST(Print, PathsHaveNoLimit) {
    // Longer than the path buffer, both by its root and by its steps.
    const std::string root(5000, 'r');
    const std::string name = "." + std::string(300, 'n');
    std::string expected = root;
    const std::function<void(AsnDump&, int)> nest = [&](AsnDump& dump, int depth) {
        if (depth == 0) return asnPrintInteger(dump, 1);
        const AsnDumpStep step(dump, name);
        const AsnElementStep element(dump, 7);
        nest(dump, depth - 1);
        asnPrintTag(dump, 3);
    };
    for (int i = 0; i < 40; ++i) expected += name + ".elem[7]";
    std::string tags;
    for (std::string path = expected; path != root; path.resize(path.size() - name.size() - 8))
        tags += path + ".t = 3\n";
    const std::string text = dumped([&](AsnDump& d) { nest(d, 40); }, root.c_str());
    EXPECT_EQ(text, expected + " = 1\n" + tags);
    EXPECT_EQ(dumped([&](AsnDump& d) { nest(d, 0); }, root.c_str()), root + " = 1\n");
}

TEST(Trace, RecordsFieldsOnlyWhileOn) {
    Decoding off({0xFF, 0xFF});
    uint32_t value = 0;
    ASSERT_EQ(pd_ConsUnsigned(off.ctx, &value, 0, 7), kAsnOk);
    EXPECT_EQ(off.ctx.fieldList.count, 0);
    EXPECT_EQ(off.ctx.memHeap.newest, nullptr);
    EXPECT_EQ(pu_popName(off.ctx), nullptr);

    Decoding on(hex("FF 02 41 42"));
    asnSetFieldTrace(on.ctx, 1);
    on.at(2);
    ASSERT_EQ(pd_ConsUnsigned(on.ctx, &value, 0, 7), kAsnOk);
    ASSERT_EQ(on.ctx.fieldList.count, 1);
    EXPECT_STREQ(on.ctx.fieldList.head->field->name, " ConsUnsigned");
    EXPECT_EQ(on.ctx.fieldList.head->field->bitOffset, 2);
    EXPECT_EQ(on.ctx.fieldList.head->field->bitCount, 3);

    ASSERT_EQ(pu_pushName(on.ctx, "setup"), kAsnOk);
    ASSERT_EQ(pu_pushName(on.ctx, "alias"), kAsnOk);
    const char* text = nullptr;
    ASSERT_EQ(pd_IA5String(on.ctx, &text, nullptr), kAsnOk);
    EXPECT_STREQ(pu_popName(on.ctx), "alias");
    ::testing::internal::CaptureStdout();
    pu_printBitFieldList(on.ctx, ">");
    pu_hexDump(on.ctx);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
              "> ConsUnsigned\n"
              "--111xxx --------------------------    ff------    .---\n\n"
              ">.setup.alias length\n"
              "00000010 --------------------------    02------    .---\n\n"
              ">.setup.alias CharString\n"
              "01000001 01000010 -----------------    4142----    AB--\n\n"
              "\nHEX                                              ASCII\n"
              "ff 02 41 42 " +
                  std::string(36, ' ') + " ..AB" + std::string(12, ' ') + "\n");
}

TEST(Trace, NamesNest32Deep) {
    Decoding decoding({0});
    asnSetFieldTrace(decoding.ctx, 1);
    for (int i = 0; i < 32; ++i) ASSERT_EQ(pu_pushName(decoding.ctx, "x"), kAsnOk);
    EXPECT_EQ(pu_pushName(decoding.ctx, "x"), kAsnTooDeep);
    EXPECT_NE(pu_newField(decoding.ctx, nullptr), nullptr);
    EXPECT_STREQ(decoding.ctx.fieldList.tail->field->name,
                 ".x.x.x.x.x.x.x.x.x.x.x.x.x.x.x.x.x.x.x.x.x.x.x.x.x.x.x.x.x.x.x.x");
}

TEST(Diagnostics, SayWhatIsRead) {
    Decoding decoding({0xA5, 0x80});
    uint32_t value = 0;
    uint8_t bit = 0;
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(asnSetDiag(1), 1);
    EXPECT_EQ(pd_bit(decoding.ctx, &bit), kAsnOk);
    EXPECT_EQ(pd_bits(decoding.ctx, &value, 8), kAsnOk);
    EXPECT_EQ(pd_moveBitCursor(decoding.ctx, -1), kAsnOk);
    EXPECT_EQ(asnSetDiag(0), 0);
    EXPECT_EQ(pd_bit(decoding.ctx, &bit), kAsnOk);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
              "pd_IncrBitIdx: bitOffset = 7, byteIndex = 0\npd_bit: value = 1\n"
              "pd_bits: nbits = 8, nbytes = 1\npd_bits: mask = 7f, data[index] = a5\n"
              "pd_moveBitCursor: bitOffset = -1\n"
              "context before move: bitOffset = 7, byteIndex = 1\n"
              "context after move: bitOffset = 8, byteIndex = 1\n");
}

}  // namespace
