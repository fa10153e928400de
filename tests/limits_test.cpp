// Hostile input against every type: memory, time, leaks.

#include <cstring>

#include "allocation.h"
#include "messages.h"
#include "types.h"

namespace {

// The memory of one call stays below kBase, plus kPerOctet for each octet of the message.
constexpr int64_t kBase = 2 << 20;
constexpr int64_t kPerOctet = 4 << 10;

/// Decodes the octets as the type; checks the bounds of memory, and that all of it is freed.
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
    // Counts that fit and counts that do not, with contents in which flags and lengths differ.
    for (const int fill : {0x00, 0xFF, 0x55, 0x80})
        for (const AsnTypeInfo* type : allTypes())
            for (const int count : {60, 1000, 16383}) {
                if (type->elementSize == 0) continue;
                Octets octets(1024, static_cast<uint8_t>(fill));
                octets[0] = static_cast<uint8_t>(0x80 | count >> 8);
                octets[1] = static_cast<uint8_t>(count);
                decodeWithin(*type, octets, true);
                decodeWithin(*type, octets, false);
                octets.assign(1 << 14, static_cast<uint8_t>(fill));
                octets[0] = 0xC1;  // and in fragments, as many as fit
                decodeWithin(*type, octets, true);
                decodeWithin(*type, octets, false);
            }
}

/// The outcome of a decode as one text. Blocks from the allocator contain what was last written to
/// them, here `dirt`, which must not show.
std::string outcome(const AsnTypeInfo& type, const Octets& octets, bool aligned, bool traced,
                    int dirt) {
    void* const block = std::malloc(sizeof(AsnMemBlock) + kAsnBlockPayload);
    std::memset(block, dirt, kAsnBlockPayload);
    std::free(block);
    const auto value = newValue(type);
    Decoding decoding(octets, aligned);
    asnSetFieldTrace(decoding.ctx, traced ? 1 : 0);
    const AsnStatus status = type.decode(decoding.ctx, value.get());
    std::string text = failureOf(decoding.ctx, status) + " at " +
                       std::to_string(pd_GetBitOffset(decoding.ctx)) + "\n";
    if (status == kAsnOk) text += dumped([&](AsnDump& dump) { type.print(dump, value.get()); });
    return text;
}

TEST(Limits, RandomOctetsForEveryType) {
    std::mt19937 random(1998);
    int decoded = 0;
    for (const AsnTypeInfo* type : allTypes())
        for (int round = 0; round < 60; ++round) {
            SCOPED_TRACE(type->name);
            const bool aligned = round % 2 == 0;
            const Octets octets = randomOctets(random, random() % 100);
            if (decodeWithin(*type, octets, aligned) == kAsnOk) ++decoded;
            const std::string text = outcome(*type, octets, aligned, false, 0xAA);
            ASSERT_EQ(outcome(*type, octets, aligned, false, 0x33), text);
            // The tracing reader is another instance of the same templates.
            ASSERT_EQ(outcome(*type, octets, aligned, true, 0), text);
        }
    EXPECT_GT(decoded, 1000);
}

TEST(Limits, TypicalMessagesDoNotAllocate) {
    int all = 0;
    for (const Message& message : allMessages()) {
        if (message.name.starts_with("alt-") || message.name.starts_with("made-")) continue;
        const TemporaryFile file;
        const std::string path = file.path();
        runExport(message, message.octets, path);  // the C library allocates in the first call
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
