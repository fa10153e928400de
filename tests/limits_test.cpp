// Hostile input against every type, by way of the generated type tables: memory, time, leaks, and
// the failure of any allocation.

#include <cstring>
#include <random>
#include <sstream>

#include "allocation.h"
#include "asn1per/typetable.h"
#include "messages.h"

extern const AsnTypeInfo kH235Types[];
extern const size_t kH235TypeCount;
extern const AsnTypeInfo kH245Types[];
extern const size_t kH245TypeCount;
extern const AsnTypeInfo kH323Types[];
extern const size_t kH323TypeCount;

namespace {

constexpr int64_t kBase = 2 << 20;      // what the memory of one call stays below:
constexpr int64_t kPerOctet = 4 << 10;  // this plus that for each octet of the message

std::vector<const AsnTypeInfo*> allTypes() {
    std::vector<const AsnTypeInfo*> types;
    for (size_t i = 0; i < kH235TypeCount; ++i) types.push_back(&kH235Types[i]);
    for (size_t i = 0; i < kH245TypeCount; ++i) types.push_back(&kH245Types[i]);
    for (size_t i = 0; i < kH323TypeCount; ++i) types.push_back(&kH323Types[i]);
    return types;
}

/// Decodes the octets as the type; checks the bounds of memory, and that nothing stays behind.
AsnStatus decodeWithin(const AsnTypeInfo& type, const Octets& octets, bool aligned) {
    const std::unique_ptr<uint64_t[]> value(new uint64_t[type.size / 8 + 1]());
    allocation = {};
    AsnStatus status = kAsnOk;
    {
        Decoding decoding(octets, aligned);
        status = type.decode(decoding.ctx, value.get());
        EXPECT_LT(allocation.octets, kBase + kPerOctet * static_cast<int64_t>(octets.size()))
            << type.name;
        if (status != kAsnOk) EXPECT_LE(decoding.ctx.errInfo.trailCount, 8);
    }
    EXPECT_EQ(allocation.unreleased, 0) << type.name;
    return status;
}

TEST(Limits, ListElementsAreWorthTheirOctets) {
    int lists = 0;
    for (const AsnTypeInfo* type : allTypes()) {
        if (type->elementSize == 0) continue;
        ++lists;
        EXPECT_GT(type->elementLeast.aligned, 0U) << type->name;
        EXPECT_GT(type->elementLeast.unaligned, 0U) << type->name;
    }
    EXPECT_GT(lists, 80);
}

TEST(Limits, LongCountsOfEveryList) {
    // As many elements as a count can ask for, of content that gives every flag and length a turn.
    for (const int fill : {0x00, 0xFF, 0x55, 0x80})
        for (const AsnTypeInfo* type : allTypes()) {
            if (type->elementSize == 0) continue;
            Octets octets(65535, static_cast<uint8_t>(fill));
            octets[0] = 0xBF;
            octets[1] = 0xFF;
            decodeWithin(*type, octets, true);
            decodeWithin(*type, octets, false);
        }
}

TEST(Limits, RandomOctetsForEveryType) {
    std::mt19937 random(1998);
    for (const AsnTypeInfo* type : allTypes())
        for (int round = 0; round < 40; ++round) {
            Octets octets(random() % 200);
            // Few bits set reach deep, many set every flag.
            const uint32_t density = random() % 4;
            for (uint8_t& octet : octets) {
                octet = static_cast<uint8_t>(random());
                for (uint32_t i = 0; i < density; ++i)
                    octet = static_cast<uint8_t>(octet & random());
            }
            decodeWithin(*type, octets, round % 2 == 0);
        }
}

TEST(Limits, ADumpIsAFunctionOfOctetsAndVariantAlone) {
    // A heap full of other octets must not show: what is not decoded is zero, or not printed.
    std::mt19937 random(245);
    int printed = 0;
    for (const AsnTypeInfo* type : allTypes())
        for (int round = 0; round < 20; ++round) {
            Octets octets(64);
            for (uint8_t& octet : octets) octet = static_cast<uint8_t>(random() & random());
            std::string texts[2];
            for (std::string& text : texts) {
                const std::unique_ptr<uint64_t[]> value(new uint64_t[type->size / 8 + 1]());
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
    const std::unique_ptr<uint64_t[]> value(new uint64_t[type.size / 8 + 1]());
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

TEST(Limits, NoDecodeChangesForBeingWatched) {
    // Primitives run with another reader while the trace is on.
    std::mt19937 random(691);
    std::vector<Octets> inputs;
    for (int i = 0; i < 60; ++i) {
        Octets octets(random() % 60);
        for (uint8_t& octet : octets)
            octet = static_cast<uint8_t>(i % 3 == 0 ? random() : random() & random());
        inputs.push_back(octets);
    }
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

TEST(Limits, EveryAllocationMayFail) {
    for (const Message& message : allMessages()) {
        const TemporaryFile file;
        const std::string path = file.path();
        const auto length = static_cast<unsigned short>(message.octets.size());
        for (int64_t failAt = 1;; ++failAt) {
            ASSERT_LT(failAt, 1000) << message.name;
            allocation = {};
            allocation.failAt = failAt;
            const int done =
                message.dump(message.octets.data(), length, message.aligned ? 1 : 0, path.c_str());
            const Allocation counted = allocation;
            allocation = {};
            const bool failed = counted.requests >= failAt;
            EXPECT_EQ(counted.unreleased, 0) << message.name;
            EXPECT_EQ(done, failed ? 0 : 1) << message.name << ", allocation " << failAt;
            EXPECT_EQ(file.exists(), !failed);
            if (!failed) break;
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
    EXPECT_EQ(all, 11);
}

TEST(Limits, ALentBlockIsTheFirst) {
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

TEST(Limits, BigRecordsCostNoWrites) {
    // openLogicalChannelAck holds a key of up to 65535 octets inline: octets behind the count are
    // not cleared, all else is.
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

}  // namespace
