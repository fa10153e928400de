// Out of memory: every allocation fails once, for every type, message and primitive.
//
// A block of the element heap holds many values, so most requests to the heap do not reach the
// general allocator. These tests leave `room` octets in the heap's only block, for every room, so
// that each request in turn is the first one that needs memory.

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <tuple>

#include "allocation.h"
#include "messages.h"
#include "types.h"

namespace {

using Decode = std::function<AsnStatus(AsnContext& ctx)>;
using Fields = std::vector<std::tuple<std::string, int32_t, int32_t>>;

struct Attempt {
    uint32_t room;   // octets of the block
    int64_t failAt;  // this allocation fails; 0: none
    size_t from;     // of those that are as large as this
    bool refused = false;
    AsnStatus status = kAsnOk;
    Fields fields = {};
};

/// While the trace is on, only one allocation fails; otherwise all later ones do, too.
void attempt(Attempt& a, const Decode& decode, const Octets& octets, bool aligned, bool traced) {
    allocation = {};
    {
        Decoding decoding(octets, aligned);
        asnSetFieldTrace(decoding.ctx, traced ? 1 : 0);
        auto* const block =
            static_cast<AsnMemBlock*>(std::malloc(sizeof(AsnMemBlock) + kAsnBlockPayload));
        *block = {nullptr, kAsnBlockPayload - a.room};
        decoding.ctx.memHeap.newest = decoding.ctx.memHeap.filled = block;
        decoding.ctx.memHeap.filledPayload = kAsnBlockPayload;

        allocation.requests = 0;
        allocation.once = traced;
        allocation.from = a.from;
        allocation.failAt = a.failAt;
        a.status = decode(decoding.ctx);
        a.refused = a.failAt != 0 && allocation.requests >= a.failAt;
        allocation.failAt = 0;
        if (a.status == kAsnNoMemory) EXPECT_EQ(decoding.ctx.errInfo.status, a.status);
        for (auto* link = decoding.ctx.fieldList.head; link != nullptr; link = link->next)
            a.fields.emplace_back(link->field->name, link->field->bitOffset, link->field->bitCount);
    }
    EXPECT_EQ(allocation.unreleased, 0);
}

/// Whether the fields are some of `all`, in order. If the decode failed, the last one may still
/// change: only its name counts.
bool areSome(const Fields& fields, const Fields& all, bool failed) {
    auto next = all.begin();
    for (size_t i = 0; i < fields.size(); ++i, ++next) {
        const bool open = failed && i + 1 == fields.size();
        next = std::find_if(next, all.end(), [&](const auto& field) {
            return open ? std::get<0>(field) == std::get<0>(fields[i]) : field == fields[i];
        });
        if (next == all.end()) return false;
    }
    return true;
}

Decode decoderOf(const AsnTypeInfo& type) {
    return [&type](AsnContext& ctx) { return type.decode(ctx, newValue(type).get()); };
}

/// Fails each allocation of the decode in turn, which gives status -12.
void failEach(const Decode& decode, const Octets& octets, bool aligned) {
    Attempt whole{0, 0, 0};
    attempt(whole, decode, octets, aligned, false);
    for (int64_t failAt = 1;; ++failAt)  // values larger than a block need further allocations
        for (uint32_t room = 0; room <= (failAt < 3 ? kAsnBlockPayload : 0); room += 8) {
            Attempt a{room, failAt, 0};
            attempt(a, decode, octets, aligned, false);
            ASSERT_EQ(a.status, a.refused ? kAsnNoMemory : whole.status);
            if (!a.refused && room == 0) return;
            if (!a.refused) break;
        }
}

/// The same while the trace is on: a value is missing, or the trace lacks one field.
void failEachTraced(const Decode& decode, const Octets& octets, bool aligned) {
    Attempt whole{0, 0, 0};
    attempt(whole, decode, octets, aligned, true);
    bool refused = true;
    const auto check = [&](Attempt a) {
        attempt(a, decode, octets, aligned, true);
        refused = a.refused && !::testing::Test::HasFailure();
        ASSERT_TRUE(areSome(a.fields, whole.fields, a.status != kAsnOk));
        if (a.refused && a.status == kAsnNoMemory) return;
        ASSERT_EQ(a.status, whole.status);
        ASSERT_EQ(a.fields.size(), whole.fields.size() - (a.refused ? 1 : 0));
    };
    for (uint32_t room = 0; refused && room < kAsnBlockPayload; room += 8)
        check({room, 1, kAsnBlockPayload});
    refused = true;
    for (int64_t failAt = 1; refused; ++failAt) check({kAsnBlockPayload, failAt, 0});
}

TEST(Memory, EveryAllocationOfEveryTypeMayFail) {
    std::mt19937 random(12);
    for (const AsnTypeInfo* type : allTypes())
        for (uint32_t first = 0; first < 256; ++first) {
            SCOPED_TRACE(type->name);
            Octets octets = randomOctets(random, 22 + random() % 20);
            octets[0] = static_cast<uint8_t>(first);  // each alternative of a CHOICE
            if (first >= 128) octets[1] = 20;         // in an open type
            for (const bool aligned : {true, false}) {
                failEach(decoderOf(*type), octets, aligned);
                if (first % 64 == 0) failEachTraced(decoderOf(*type), octets, aligned);
            }
            if (HasFailure()) return;
        }
}

TEST(Memory, EveryAllocationOfEveryMessageMayFail) {
    for (const Message& message : allMessages()) {
        SCOPED_TRACE(message.name);
        const TamselFamily& family = familyOf(message);
        const Decode decode = [&family](AsnContext& ctx) {
            alignas(16) unsigned char value[kTamselValueSize] = {};
            return family.decode(ctx, value);
        };
        failEach(decode, message.octets, message.aligned);
        failEachTraced(decode, message.octets, message.aligned);
        if (HasFailure()) return;
    }
}

TEST(Memory, EveryAllocationOfLongStringsMayFail) {
    Octets fragments(16384 + 6, 3);  // 3 is a character, and an index, of each alphabet
    for (const char* name : {"ZooIa5", "ZooBmp", "ZooBits", "ZooOctets", "ZooOpen", "ZooKnown"}) {
        SCOPED_TRACE(name);
        const bool isOpenType = std::string(name) == "ZooKnown";
        fragments[0] = isOpenType ? 0x82 : 0xC1;
        fragments[1] = isOpenType ? 0xC1 : 3;
        for (const bool aligned : {true, false}) {
            failEach(decoderOf(typeNamed(name)), fragments, aligned);
            failEachTraced(decoderOf(typeNamed(name)), fragments, aligned);
        }
    }
}

TEST(Memory, PrintersDoNotAllocate) {
    const auto check = [](const AsnDumpSink& sink, auto print) {
        allocation = {.failAt = 1};
        {
            AsnDump dump(sink, "P");
            print(dump);
        }
        EXPECT_EQ(allocation.requests, 0);
        allocation = {};
    };
    size_t printed = 0;
    const AsnDumpSink counter{
        [](void* to, const char* /*text*/, size_t size) { *static_cast<size_t*>(to) += size; },
        &printed};
    std::mt19937 random(7);
    for (const AsnTypeInfo* type : allTypes())
        for (int round = 0; round < 20; ++round) {
            SCOPED_TRACE(type->name);
            const auto value = newValue(*type);
            Decoding decoding(randomOctets(random, 60));
            if (type->decode(decoding.ctx, value.get()) != kAsnOk) continue;
            check(counter, [&](AsnDump& dump) { type->print(dump, value.get()); });
        }
    EXPECT_GT(printed, 1000000U);
}

TEST(Memory, AnExportWithoutMemoryMakesNoFile) {
    const TemporaryFile file;
    for (const Message& message : allMessages()) {
        if (message.octets.size() < 1000 && message.name != "h245-openLogicalChannelAck") continue;
        for (int64_t failAt = 1;; ++failAt) {
            allocation = {.failAt = failAt};
            const int done = runExport(message, message.octets, file.path());
            const bool refused = allocation.requests >= failAt;
            EXPECT_EQ(allocation.unreleased, 0);
            allocation = {};
            ASSERT_EQ(done, refused ? 0 : 1) << message.name;
            ASSERT_EQ(file.exists(), !refused) << message.name;
            if (!refused) break;
        }
        std::filesystem::remove(file.path());
    }
}

}  // namespace
