// Hostile input against every type: memory, time, leaks.

#include <algorithm>
#include <cstring>
#include <sstream>

#include "allocation.h"
#include "messages.h"
#include "types.h"

namespace {

constexpr int64_t kBase = 2 << 20;      // what the memory of one call stays below:
constexpr int64_t kPerOctet = 4 << 10;  // this plus that for each octet of the message

/// Decodes the octets as the type; checks the bounds of memory, and that nothing stays behind.
AsnStatus decodeWithin(const AsnTypeInfo& type, const Octets& octets, bool aligned) {
    const auto value = newValue(type);
    allocation = {};
    AsnStatus status = kAsnOk;
    {
        Decoding decoding(octets, aligned);
        status = type.decode(decoding.ctx, value.get());
        EXPECT_LT(allocation.octets, kBase + kPerOctet * static_cast<int64_t>(octets.size()))
            << type.name;
    }
    EXPECT_EQ(allocation.unreleased, 0) << type.name;
    return status;
}

TEST(Limits, LongCountsOfEveryList) {
    // Counts that fit and counts that do not, and content that gives every flag and length a turn.
    for (const int fill : {0x00, 0xFF, 0x55, 0x80})
        for (const AsnTypeInfo* type : allTypes())
            for (const int count : {60, 1000, 16383}) {
                if (type->elementSize == 0) continue;
                Octets octets(1024, static_cast<uint8_t>(fill));
                octets[0] = static_cast<uint8_t>(0x80 | count >> 8);
                octets[1] = static_cast<uint8_t>(count);
                decodeWithin(*type, octets, true);
                decodeWithin(*type, octets, false);
            }
}

TEST(Limits, RandomOctetsForEveryType) {
    std::mt19937 random(1998);
    for (const AsnTypeInfo* type : allTypes())
        for (int round = 0; round < 40; ++round) {
            const Octets octets = randomOctets(random, random() % 200);
            decodeWithin(*type, octets, round % 2 == 0);
        }
}

TEST(Limits, ADumpIsAFunctionOfOctetsAndVariantAlone) {
    // A heap full of other octets must not show: what is not decoded is zero, or not printed.
    std::mt19937 random(245);
    int printed = 0;
    for (const AsnTypeInfo* type : allTypes())
        for (int round = 0; round < 20; ++round) {
            const Octets octets = randomOctets(random, 64);
            std::string texts[2];
            for (std::string& text : texts) {
                const auto value = newValue(*type);
                Decoding decoding(octets, round % 2 == 0);
                // Blocks come back from the allocator as they were left: leave them different.
                void* const dirt = std::malloc(sizeof(AsnMemBlock) + kAsnBlockPayload);
                std::memset(dirt, &text == texts ? 0xAA : 0x33, kAsnBlockPayload);
                std::free(dirt);
                if (type->decode(decoding.ctx, value.get()) != kAsnOk) continue;
                text = dumped([&](AsnDump& dump) { type->print(dump, value.get()); });
                ++printed;
            }
            EXPECT_EQ(texts[0], texts[1]) << type->name;
        }
    EXPECT_GT(printed, 1000);
}

/// All that a decode says, in one text.
std::string outcome(const AsnTypeInfo& type, const Octets& octets, bool aligned, bool traced) {
    const auto value = newValue(type);
    Decoding decoding(octets, aligned);
    if (traced) asnSetFieldTrace(decoding.ctx, 1);
    const AsnStatus status = type.decode(decoding.ctx, value.get());
    const AsnErrorInfo& error = decoding.ctx.errInfo;
    std::ostringstream text;
    text << type.name << ' ' << status << ' ' << error.status << " at " << decoding.ctx.byteIndex
         << ' ' << decoding.ctx.bitOffset;
    for (int32_t i = 0; i < error.trailCount; ++i)
        text << ' ' << error.trail[i].module << ':' << error.trail[i].line;
    if (status == kAsnOk)
        text << '\n' << dumped([&](AsnDump& dump) { type.print(dump, value.get()); });
    return text.str();
}

TEST(Limits, ATraceChangesNoDecode) {
    // The tracing reader is another instance of the same templates.
    std::mt19937 random(691);
    std::vector<Octets> inputs;
    for (int i = 0; i < 60; ++i) inputs.push_back(randomOctets(random, random() % 60));
    std::vector<std::string> outcomes;
    for (const bool traced : {false, true}) {
        size_t at = 0;
        for (const AsnTypeInfo* type : allTypes())
            for (size_t i = 0; i < inputs.size(); ++i) {
                const std::string text = outcome(*type, inputs[i], i % 2 == 0, traced);
                if (traced)
                    ASSERT_EQ(outcomes[at++], text) << "input " << i;
                else
                    outcomes.push_back(text);
            }
    }
}

TEST(Limits, ATypicalMessageTakesNoMemory) {
    int all = 0;
    for (const Message& message : allMessages()) {
        if (message.name.starts_with("alt-") || message.name.starts_with("made-")) continue;
        const TemporaryFile file;
        const std::string path = file.path();
        runExport(message, message.octets, path);  // the C library's own first
        allocation.requests = 0;
        const int64_t before = allocation.unreleased;
        ASSERT_EQ(message.dump(message.octets.data(),
                               static_cast<unsigned short>(message.octets.size()), 1, path.c_str()),
                  1);
        EXPECT_EQ(allocation.requests, 0) << message.name;
        EXPECT_EQ(allocation.unreleased, before);
        ++all;
    }
    EXPECT_GE(all, 11);
}

}  // namespace
