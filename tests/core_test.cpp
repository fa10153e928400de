// The core: messages in memory, why they failed, and what is reused.

#include "H245.h"
#include "H323.h"
#include "allocation.h"
#include "messages.h"

namespace {

TEST(Core, DumpsEveryMessage) {
    const std::vector<Message> messages = allMessages();
    const auto decoder = std::make_unique<TamselDecoder>();
    int64_t blocks = 0;
    for (const int round : {1, 2}) {
        allocation.requests = 0;
        for (const Message& message : messages) {
            Octets longer = message.octets;
            longer.push_back(0xFF);  // not part of the message
            const std::string name = message.name;
            ASSERT_EQ(decoder->decode(familyOf(message), longer, message.aligned), kAsnOk) << name;
            EXPECT_EQ(decoder->octets(), message.octets.size()) << name;
            std::string_view text;
            ASSERT_EQ(decoder->dump(&text), kAsnOk);
            EXPECT_EQ(text, message.expected) << name;
            std::string pieces;
            decoder->print({[](void* target, const char* piece, size_t size) {
                                static_cast<std::string*>(target)->append(piece, size);
                            },
                            &pieces});
            EXPECT_EQ(pieces, message.expected) << name;
        }
        if (round == 1) blocks = allocation.requests;
    }
    EXPECT_LT(allocation.requests, blocks) << "memory for text is kept from message to message";
}

TEST(Core, TypedValues) {
    TamselDecoder decoder;
    // unregistrationConfirm, requestSeqNum 1
    ASSERT_EQ(decoder.decode(kTamsel1998.ras, hex("1C 00 00"), true), kAsnOk);
    const auto& message = decoder.value<H225RasMessage>();
    ASSERT_EQ(message.t, unsigned{H225RasMessage::unregistrationConfirm});
    EXPECT_EQ(message.u.unregistrationConfirm->requestSeqNum, 1);
}

TEST(Core, WhyAMessageFailed) {
    const struct {
        const char* why;
        const TamselFamily& family;
        const char* octets;
        AsnStatus status;
        int64_t bitPosition;
        const char* text;
    } kCases[] = {
        {"no octets", kTamsel1998.ras, "", -2, 0, "Unexpected end of buffer on decode"},
        {"ends within a number", kTamsel1998.ras, "1C 00", -2, 8,
         "Unexpected end of buffer on decode"},
        {"the position is that in the message, not in the open type", kTamsel1998.ras,
         "80 04 00 00 00 FF", -2, 40, "Unexpected end of buffer on decode"},
        {"not all statuses are logged", kTamsel1998.ras, "BC 01 00", -11, 16,
         "Element with tag ? is an invalid option in choice"},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.why);
        TamselDecoder decoder;
        const Octets octets = hex(c.octets);
        EXPECT_EQ(decoder.decode(c.family, octets, true), c.status);
        EXPECT_EQ(decoder.status(), c.status);
        EXPECT_EQ(decoder.bitPosition(), c.bitPosition);
        char text[100];
        EXPECT_STREQ(asnErrorText(decoder.errors(), text, sizeof text), c.text);
        std::string_view dump = "not empty";
        EXPECT_EQ(decoder.dump(&dump), kAsnOk);
        EXPECT_EQ(dump, "");
    }
}

TEST(Core, FieldsHaveThePathsOfTheDump) {
    const auto decoder = std::make_unique<TamselDecoder>();
    for (const Message& message : allMessages()) {
        SCOPED_TRACE(message.name);
        ASSERT_EQ(decoder->decodeTraced(familyOf(message), message.octets, message.aligned),
                  kAsnOk);
        std::string_view text;
        ASSERT_EQ(decoder->dump(&text), kAsnOk);
        EXPECT_EQ(text, message.expected);
        const auto bits = static_cast<int32_t>(message.octets.size() * 8);
        EXPECT_GT(decoder->fields().count, 0);
        for (auto* link = decoder->fields().head; link != nullptr; link = link->next) {
            const AsnBitField& field = *link->field;
            const std::string name = field.name;
            // An unknown alternative has no line of its own.
            const size_t end = std::min(name.find(' '), name.find(".u@extElem1"));
            EXPECT_NE(text.find(name.substr(0, end)), text.npos) << name;
            EXPECT_TRUE(field.bitOffset >= 0 && field.bitCount >= 0 &&
                        field.bitCount <= bits - field.bitOffset)
                << name << " " << field.bitOffset << " " << field.bitCount;
        }
    }
}

TEST(Core, FieldsUpToTheFailure) {
    TamselDecoder decoder;
    // A gatekeeperRequest that ends in its first address.
    const Octets octets = hex("00 01 23 06 00 08");
    EXPECT_EQ(decoder.decodeTraced(kTamsel1998.ras, octets, true), kAsnEndOfData);
    std::string table;
    decoder.printFields({[](void* target, const char* text, size_t size) {
                             static_cast<std::string*>(target)->append(text, size);
                         },
                         &table});
    EXPECT_EQ(table, R"(RasMessage ConsUnsigned
-00000xx xxxxxxxx -----------------    0001----    ..--

RasMessage.u@gatekeeperRequest.requestSeqNum ConsInteger
00100011 00000110 -----------------    2306----    #.--

RasMessage.u@gatekeeperRequest.protocolIdentifier length
00000000 --------------------------    00------    .---

RasMessage.u@gatekeeperRequest.protocolIdentifier ObjectID
x----------------------------------    --------    ----

RasMessage.u@gatekeeperRequest.rasAddress ConsUnsigned
-000-------------------------------    --------    ----

RasMessage.u@gatekeeperRequest.rasAddress.u@ipAddress.ip length
----xxxx --------------------------    08------    .---

RasMessage.u@gatekeeperRequest.rasAddress.u@ipAddress.ip OctetString

)");
}

TEST(Core, OutOfMemoryForTheText) {
    allocation = {};
    {
        TamselDecoder decoder;
        ASSERT_EQ(decoder.decode(kTamsel1998.ras, hex("1C 00 00"), true), kAsnOk);
        std::string_view text;
        allocation.failAt = 1;
        EXPECT_EQ(decoder.dump(&text), kAsnNoMemory);
        EXPECT_EQ(text, "");
        allocation.failAt = 0;
        EXPECT_EQ(decoder.dump(&text), kAsnOk);
        EXPECT_EQ(text.substr(0, 17), "RasMessage.t = 8\n");
    }
    EXPECT_EQ(allocation.unreleased, 0);
}

TEST(Core, ALongText) {
    // registrationConfirm with 1000 call signalling addresses
    Octets octets = hex("10 00 00 00 06 00 08 91 4A 00 02 83 E8");
    for (int i = 0; i < 1000; ++i) {
        const Octets address = hex("00 0A 00 00 01 27 10");
        octets.insert(octets.end(), address.begin(), address.end());
    }
    octets.insert(octets.end(), {0, 0, 0x41});
    allocation = {};
    {
        TamselDecoder decoder;
        ASSERT_EQ(decoder.decode(kTamsel1998.ras, octets, true), kAsnOk);
        std::string_view text;
        allocation.requests = 0;
        allocation.failAt = 2;  // when the text grows
        EXPECT_EQ(decoder.dump(&text), kAsnNoMemory);
        EXPECT_EQ(text, "");
        allocation.failAt = 0;
        EXPECT_EQ(decoder.dump(&text), kAsnOk);
        EXPECT_GT(text.size(), 100000U);
        std::string pieces;
        const auto append = [](void* to, const char* piece, size_t size) {
            static_cast<std::string*>(to)->append(piece, size);
        };
        decoder.print({append, &pieces});
        EXPECT_TRUE(text == pieces);
    }
    EXPECT_EQ(allocation.unreleased, 0);
}

TEST(Core, AMessageMayBeTooLong) {
    const uint8_t octet = 0;  // no octet after it is read
    TamselDecoder decoder;
    EXPECT_EQ(decoder.decode(kTamsel1998.ras, {&octet, TamselDecoder::kMaxOctets + 1}, true),
              kAsnTooLong);
}

}  // namespace
