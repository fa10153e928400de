// What the decoders of messages do with failures, unknown alternatives and deep nesting.

#include "H235.h"
#include "H245.h"
#include "H245Decode.h"  // with ZooDecode.h: the names of two modules' constants do not collide
#include "H323.h"
#include "ZooDecode.h"
#include "messages.h"
#include "types.h"

namespace {

TEST(Trail, OfEachConstruct) {
    // The steps of a decoder are not logged; those of a primitive are.
    const char* const message = "H245MultimediaSystemControlMessage";
    const char* const unregistration = "H225UnregistrationConfirm";
    const struct {
        const char* why;
        const char* type;
        const char* octets;
        const char* outcome;
    } rows[] = {
        {"root index", message, "", "-2 bits numbers"},
        {"component", message, "01 00", "-2 numbers numbers"},
        {"unknown alternative", message, "81 C0", "-2 numbers opentypes opentypes H245:22926"},
        {"bitmap beyond the data", unregistration, "80 00 00 40 FF", "-2"},
        {"open type of an addition", unregistration, "80 00 00 01 80 02 FF",
         "-2 bits strings opentypes"},
        {"list that cannot fit, in an addition", unregistration, "80 00 00 01 80 01 05", "-2"},
        {"extension alternative, index", message, "10", "-2 bits numbers"},
        {"extension alternative, alignment", message, "10 00", "-2"},
        {"extension alternative, unknown", message, "10 40 01 00", "-11"},
        {"an index before a missing character", "H225NumberDigits", "04 F0", "-23 strings strings"},
        // open types that begin with an empty fragment
        {"an addition, kept", "H245MasterSlaveDetermination", "80 32 40 30 39 01 C0 02 DE AD", "0"},
        {"an alternative, decoded", message, "10 20 C0 01 00", "0"},
    };
    for (const auto& row : rows)
        for (const bool traced : {false, true}) {
            SCOPED_TRACE(std::string(row.why) + (traced ? ", traced" : ""));
            const AsnTypeInfo& type = typeNamed(row.type);
            Decoding decoding(hex(row.octets));
            asnSetFieldTrace(decoding.ctx, traced ? 1 : 0);
            const AsnStatus status = type.decode(decoding.ctx, newValue(type).get());
            EXPECT_EQ(failureOf(decoding.ctx, status), row.outcome);
        }
}

TEST(Choice, UnknownAlternativesAreKept) {
    // extension bit, index 5, open type of two octets
    Decoding decoding(bits("1 0000101 [02 AA BB]"));
    H245MultimediaSystemControlMessage root{};
    ASSERT_EQ(DecodeH245MultimediaSystemControlMessage(decoding.ctx, root), kAsnOk);
    EXPECT_EQ(root.t, 0U);
    ASSERT_NE(root.u.extElem1, nullptr);
    EXPECT_EQ(root.u.extElem1->numocts, 4U);
    EXPECT_EQ(root.u.extElem1->data, decoding.ctx.data);
}

TEST(Choice, UnknownAlternativesArePrinted) {
    const uint8_t octets[] = {0xAA};
    AsnOpenType unknown{1, octets};
    H235AuthenticationMechanism mechanism{};
    mechanism.t = 8;
    mechanism.u.extElem1 = &unknown;
    const auto print = [&](AsnDump& d) { PrintH235AuthenticationMechanism(d, mechanism); };
    EXPECT_EQ(dumped(print), "P.t = 8\nP.u@extElem1.numocts = 1\nP.u@extElem1.data = \naa " +
                                 std::string(46, ' ') + ".\n");
    mechanism.t = 9;
    EXPECT_EQ(dumped(print), "P.t = 9\n");
}

TEST(Names, ThatDeviateFromTheNotation) {
    const std::string dump = dumped([](AsnDump& d) {
        PrintH245TransparencyParameters(d, {});
        PrintH225SecurityCapabilities(d, {});
    });
    for (const char* name : {"P.offset-x =", "P.scale_x =", "P.scale-y =", "P.authenticaton.t ="})
        EXPECT_NE(dump.find(name), std::string::npos) << name;
}

/// multiplexEntrySend with one list of elements that nests `depth` deep, UNALIGNED.
Octets nestedElements(int depth) {
    // request, multiplexEntrySend, no additions; sequenceNumber, one descriptor: entry 1, a list of
    // 1
    std::string text = "0 00 0 0110 0 00000001 0000 1 0000 00000000";
    for (int i = 1; i < depth; ++i) text += "1 00000000";              // subElementList of two
    text += "0 0000000000000001 1";                                    // logicalChannelNumber 1
    for (int i = 1; i < depth; ++i) text += "0 0000000000000010 1 1";  // its neighbour; repeatCount
    return bits(text);
}

TEST(Nesting, PathsStayWholeAndDepthIsLimited) {
    const Message message{"nested", H323H245ASNDecode, false, {}, ""};
    const TemporaryFile file;
    ASSERT_EQ(runExport(message, nestedElements(15), file.path()), 1);
    std::string path =
        "MultimediaSystemControlMessage.u@request.u@multiplexEntrySend"
        ".multiplexEntryDescriptors.elem[0].elementList.elem[0]";
    for (int i = 1; i < 15; ++i) path += ".type.u@subElementList.elem[0]";
    EXPECT_NE(readFile(file.path()).find("\n" + path + ".type.u@logicalChannelNumber = 1\n"),
              std::string::npos);
    EXPECT_EQ(runExport(message, nestedElements(64), file.path()), 1);
    for (const int depth : {65, 10000}) {
        Decoding deeper(nestedElements(depth), false);
        H245MultimediaSystemControlMessage root{};
        EXPECT_EQ(DecodeH245MultimediaSystemControlMessage(deeper.ctx, root), kAsnTooDeep);
        EXPECT_EQ(deeper.ctx.depth, 0U);
    }
}

}  // namespace
