// Extension handling and the limits of the message types, on values rather than dumps.

#include "H235.h"
#include "H245.h"
#include "H245Decode.h"  // beside ZooDecode.h: the constants of two modules do not meet
#include "H323.h"
#include "ZooDecode.h"
#include "messages.h"
#include "types.h"

namespace {

template <class T>
struct Decoded {
    Decoded(const Octets& octets, AsnStatus (*decode)(AsnContext&, T&), bool aligned = true)
        : decoding(octets, aligned), status(decode(decoding.ctx, value)) {}
    Decoding decoding;
    T value{};
    AsnStatus status;
};

template <class T>
using Decoder = AsnStatus (*)(AsnContext&, T&);

using Root = Decoded<H245MultimediaSystemControlMessage>;
const Decoder<H245MultimediaSystemControlMessage> decodeRoot =
    DecodeH245MultimediaSystemControlMessage;

TEST(Trail, OfEachConstruct) {
    // None of a decoder's own steps is logged; what a primitive logs is.
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

TEST(Choice, UnknownAlternativeKeepsTheTag) {
    // extension bit, index 5, open type of two octets
    const Root root(bits("1 0000101 [02 AA BB]"), decodeRoot);
    ASSERT_EQ(root.status, kAsnOk);
    EXPECT_EQ(root.value.t, 0U);
    ASSERT_NE(root.value.u.extElem1, nullptr);
    EXPECT_EQ(root.value.u.extElem1->numocts, 4U);
    EXPECT_EQ(root.value.u.extElem1->data, root.decoding.ctx.data);
}

TEST(Choice, ExtensionAlternatives) {
    // request, extension index 0: communicationModeRequest, an empty extensible SEQUENCE
    const Root mode(bits("0 00 1 0000000 00000 [01 00]"), decodeRoot);
    ASSERT_EQ(mode.status, kAsnOk);
    EXPECT_EQ(mode.value.u.request->t, 12U);
    // in the UNALIGNED variant too the open type is read from the next octet boundary
    const Root unaligned(bits("0 00 1 0000000 00000 [01 00]"), decodeRoot, false);
    ASSERT_EQ(unaligned.status, kAsnOk);
    EXPECT_EQ(unaligned.value.u.request->t, 12U);
    EXPECT_EQ(Root(bits("0 00 1 0000000"), decodeRoot, false).status, kAsnEndOfData);
    // an index that is not known, without a trail entry
    const Root unknown(bits("0 00 1 0000010 00000 [01 00]"), decodeRoot);
    EXPECT_EQ(unknown.status, kAsnInvalidChoice);
    EXPECT_EQ(unknown.decoding.ctx.errInfo.trailCount, 0);
    // a root index beyond the root is no extension alternative: 11 would be tag 12
    const Root beyond(bits("0 00 0 1011"), decodeRoot);
    EXPECT_EQ(beyond.status, kAsnInvalidChoice);
    EXPECT_EQ(Root(bits("0 11 1 0000011 00000 [07 00 B5 00 00 02 00 00]"), decodeRoot)
                  .value.u.indication->t,
              18U);
    // an index so large that adding the root alternatives wraps
    EXPECT_EQ(Root(bits("0 00 1 1 000 [04 FF FF FF F6 01 00]"), decodeRoot).status,
              kAsnInvalidChoice);
}

TEST(Choice, RasRootHas25Alternatives) {
    using Ras = Decoded<H225RasMessage>;
    const Ras last(bits("0 11000 0 0 [00 00]"), DecodeH225RasMessage);
    EXPECT_EQ(last.status, kAsnOk);
    EXPECT_EQ(last.value.t, 25U);
    for (const char* index : {"11001", "11111"})
        EXPECT_EQ(
            Ras(bits("0 " + std::string(index) + " [00 00 00 00]"), DecodeH225RasMessage).status,
            kAsnInvalidChoice);
    EXPECT_EQ(Ras(bits("1 0000101 [01 00]"), DecodeH225RasMessage).status, kAsnInvalidChoice);
    // an empty open type: the first read inside it fails, a NULL alternative succeeds
    EXPECT_EQ(Ras(bits("1 0000000 [00]"), DecodeH225RasMessage).status, kAsnEndOfData);
    const Decoded<H225ReleaseCompleteReason> reason(bits("1 0000011 [00]"),
                                                    DecodeH225ReleaseCompleteReason);
    EXPECT_EQ(reason.status, kAsnOk);
    EXPECT_EQ(reason.value.t, 16U);
    EXPECT_EQ(reason.decoding.ctx.data[0], 0x83) << "the cursor is back in the message";
}

TEST(Sequence, AdditionsAreKnownOrSkipped) {
    // ReleaseComplete-UUIE: extension bit 1, no reason, protocolIdentifier of no arcs; then a
    // bitmap of three additions, of which the first is known.
    const std::string head = "1 0 000000 [00]";
    const Decoder<H225ReleaseComplete_UUIE> decode = DecodeH225ReleaseComplete_UUIE;
    using Release = Decoded<H225ReleaseComplete_UUIE>;
    const std::string guid = "11 00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F";
    const Release all(bits(head + "0 000010 1 1 1 000000 [" + guid + " 01 EE 00]"), decode);
    EXPECT_EQ(all.status, kAsnEndOfData) << "callIdentifier takes 17 octets behind its flag";
    const Release known(
        bits(head + "0 000010 1 1 1 000000 [12 00 " + guid.substr(3) + " 55 01 EE 00]"), decode);
    ASSERT_EQ(known.status, kAsnOk);
    EXPECT_EQ(known.value.m.callIdentifierPresent, 1U);
    EXPECT_EQ(known.value.callIdentifier.guid.data[15], 0x0F);
    const Release none(bits("0 0 000000 [00]"), decode);
    ASSERT_EQ(none.status, kAsnOk);
    EXPECT_EQ(none.value.m.callIdentifierPresent, 0U);
    const Release unaligned(bits("1 0 00000000 0 000001 0 1 00000010 [AA BB]"), decode, false);
    EXPECT_EQ(unaligned.status, kAsnOk) << "additions are not aligned in the UNALIGNED variant";
    EXPECT_EQ(Release(bits(head + "1 0000000 [04 FF FF FF FF]"), decode).status, kAsnEndOfData);
}

TEST(Sequence, UnknownAdditionsAreKept) {
    const Decoder<H245TerminalCapabilitySetAck> decode = DecodeH245TerminalCapabilitySetAck;
    const Decoded<H245TerminalCapabilitySetAck> ack(bits("1 0000000 [07] 0 000000 1 [01 AA]"),
                                                    decode);
    ASSERT_EQ(ack.status, kAsnOk);
    EXPECT_EQ(ack.value.sequenceNumber, 7);
    EXPECT_EQ(ack.value.extElem1.numocts, 3U);
    EXPECT_EQ(ack.value.extElem1.data, ack.decoding.ctx.data + 2);
    const Decoded<H245TerminalCapabilitySetAck> plain(bits("0 0000000 [07]"), decode);
    EXPECT_EQ(plain.value.extElem1.data, nullptr);
}

TEST(Sequence, FlagsBeyondTheEndCountAsAbsent) {
    // CallModel and the like need bits; a SEQUENCE of nothing but flags may end with the data.
    const Decoded<H235Params> params({}, DecodeH235Params);
    EXPECT_EQ(params.status, kAsnOk);
    EXPECT_EQ(params.value.m.ranIntPresent, 0U);
}

TEST(Lists, CountsAreRefusedBeforeAnythingIsAllocated) {
    const Decoder<H225AdmissionReject_callSignalAddress> decode =
        DecodeH225AdmissionReject_callSignalAddress;
    using List = Decoded<H225AdmissionReject_callSignalAddress>;
    const List empty({0x00}, decode);
    ASSERT_EQ(empty.status, kAsnOk);
    EXPECT_NE(empty.value.elem, nullptr);
    const List tooMany(hex("BF FF 00 00"), decode);
    EXPECT_EQ(tooMany.status, kAsnEndOfData);
    EXPECT_EQ(tooMany.decoding.ctx.memHeap.newest, nullptr);
    EXPECT_EQ(List(hex("C1 00 00"), decode).status, kAsnFragment) << "fragmented: not supported";
    Decoding fits({5, 0, 0});
    uint32_t count = 0;
    EXPECT_EQ(asnListLength(AsnPlainReader{fits.ctx}, &count, {3, 9}), kAsnOk) << "15 of 16 bits";
    Decoding tooShort({5, 0, 0});
    EXPECT_EQ(asnListLength(AsnPlainReader{tooShort.ctx}, &count, {4, 1}), kAsnEndOfData);
}

TEST(Tokens, SizesAtTheirBounds) {
    const auto halfkey = [](uint32_t count) {
        Octets octets{static_cast<uint8_t>(count >> 8), static_cast<uint8_t>(count)};
        octets.resize(2 + 300, 0xFF);
        return Decoded<H235DHset_halfkey>(octets, DecodeH235DHset_halfkey).status;
    };
    EXPECT_EQ(halfkey(2048), kAsnOk);
    EXPECT_EQ(halfkey(2049), kAsnTooLong);
    const auto challenge = [](uint8_t offset) {  // 7 bits above the least of 8
        Octets octets{static_cast<uint8_t>(offset << 1)};
        octets.resize(200, 1);
        return Decoded<H235ChallengeString>(octets, DecodeH235ChallengeString);
    };
    EXPECT_EQ(challenge(0).value.numocts, 8U);
    EXPECT_EQ(challenge(120).value.numocts, 128U);
    EXPECT_EQ(challenge(121).status, kAsnTooLong);
    // a ClearToken without any optional field
    const Decoded<H235ClearToken> token(bits("0 00000000 0000000 [02 2A 03]"),
                                        DecodeH235ClearToken);
    ASSERT_EQ(token.status, kAsnOk);
    EXPECT_EQ(token.value.tokenOID.numids, 3);
    EXPECT_EQ(token.value.dhkey.halfkey.numbits, 0U);
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
    const Root deeper(nestedElements(65), decodeRoot, false);
    EXPECT_EQ(deeper.status, kAsnTooDeep);
    EXPECT_EQ(deeper.decoding.ctx.depth, 0U);
    EXPECT_EQ(Root(nestedElements(10000), decodeRoot, false).status, kAsnTooDeep);
}

}  // namespace
