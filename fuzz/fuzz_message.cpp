// One message family: the export, and the properties that any input must keep. The first octet of
// an input is the variant, the rest the message.

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <string>

#include "../tests/allocation.h"
#include "Tamsel.h"
#include "TamselCore.h"

namespace {

constexpr const TamselFamily& k1998 = kTamsel1998.FUZZ_FAMILY;  // ras, ui or h245
constexpr const TamselFamily& k2009 = kTamsel2009.FUZZ_FAMILY;

/// Decodes as a family; the value is zeroed first.
class Root {
  public:
    explicit Root(const TamselFamily& family) : family_(family) {}
    AsnStatus decode(AsnContext& ctx) { return family_.decode(ctx, value_); }
    void print(AsnDump& dump) const { family_.print(dump, value_); }

  private:
    const TamselFamily& family_;
    alignas(16) unsigned char value_[kTamselValueSize] = {};
};

void require(bool holds, const char* property) {
    if (holds) return;
    std::fprintf(stderr, "property broken: %s\n", property);
    std::abort();
}

/// The dump of a message, or nothing. The octets are in a block of exactly their size.
std::string dumpOf(const TamselFamily& family, const uint8_t* octets, size_t size, bool aligned) {
    if (size == 0) return "";
    const std::unique_ptr<uint8_t[]> block(new uint8_t[size]);
    std::memcpy(block.get(), octets, size);
    allocation = {};
    AsnContext ctx;
    require(asnInitContext(ctx, block.get(), static_cast<uint32_t>(size)) == kAsnOk, "init");
    ctx.aligned = aligned ? 1 : 0;
    Root root(family);
    const AsnStatus status = root.decode(ctx);
    require(allocation.octets < (2 << 20) + int64_t{4096} * static_cast<int64_t>(size),
            "memory stays below 2 MiB and 4 KiB an octet");
    std::string text;
    if (status == kAsnOk) {
        AsnDump dump({[](void* to, const char* piece, size_t length) {
                          static_cast<std::string*>(to)->append(piece, length);
                      },
                      &text},
                     family.root);
        root.print(dump);
    }
    asnFreeContext(ctx);
    return text;
}

std::string exported(const uint8_t* octets, size_t size, bool aligned) {
    static const std::string path = "/dev/shm/tamsel-fuzz-" + std::to_string(getpid());
    unlink(path.c_str());
    allocation = {};
    const int done =
        FUZZ_EXPORT(octets, static_cast<unsigned short>(size), aligned ? 1 : 0, path.c_str());
    require(allocation.unreleased == 0, "nothing stays allocated");
    struct stat info {};
    require((stat(path.c_str(), &info) == 0) == (done == 1), "a file for a dump, and none without");
    std::ifstream in(path);
    std::string text(std::istreambuf_iterator<char>(in), {});
    unlink(path.c_str());
    return text;
}

/// Where the primitives of a message read: the traced fields, also of a message that fails.
struct Field {
    int64_t start;
    int64_t count;
};
std::vector<Field> fieldsOf(const TamselFamily& family, const uint8_t* octets, size_t size,
                            bool aligned) {
    std::vector<Field> fields;
    AsnContext ctx;
    if (size == 0 || asnInitContext(ctx, octets, static_cast<uint32_t>(size)) != kAsnOk)
        return fields;
    ctx.aligned = aligned ? 1 : 0;
    asnSetFieldTrace(ctx, 1);
    Root root(family);
    (void)root.decode(ctx);  // if it fails, the fields so far
    for (const AsnBitFieldLink* link = ctx.fieldList.head; link != nullptr; link = link->next)
        fields.push_back({link->field->bitOffset, link->field->bitCount});
    asnFreeContext(ctx);
    return fields;
}

void setBit(uint8_t* octets, size_t size, int64_t at, bool value) {
    if (at < 0 || static_cast<size_t>(at / 8) >= size) return;
    const auto mask = static_cast<uint8_t>(0x80 >> at % 8);
    octets[at / 8] = static_cast<uint8_t>(value ? octets[at / 8] | mask : octets[at / 8] & ~mask);
}

}  // namespace

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t maxSize);

/// Counts, lengths and indexes are changed as a whole, flags - the bits between the fields - one at
/// a time: so a mutation reaches the next type instead of shifting all that follows.
extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize,
                                          unsigned seed) {
    std::minstd_rand random(seed);
    if (size < 2 || random() % 3 == 0) return LLVMFuzzerMutate(data, size, maxSize);
    uint8_t* const octets = data + 1;
    size_t length = size - 1;
    if (random() % 4 == 0) {  // more to read, for a longer message
        const size_t more = std::min<size_t>(random() % 64, maxSize - size);
        for (size_t i = 0; i < more; ++i)
            octets[length + i] = static_cast<uint8_t>(random() & random() & 0xFF);
        length += more;
    }
    const std::vector<Field> fields =
        fieldsOf(random() % 2 == 0 ? k1998 : k2009, octets, length, (data[0] & 1) != 0);
    if (fields.empty()) return LLVMFuzzerMutate(data, size, maxSize);
    const size_t chosen = random() % fields.size();
    const Field& field = fields[chosen];
    const int64_t count = std::min<int64_t>(field.count, 32);
    switch (random() % 4) {
        case 0:  // a flag after the field
            setBit(octets, length, field.start + field.count + static_cast<int64_t>(random() % 12),
                   random() % 2 != 0);
            break;
        case 1:  // all ones or zeroes
            for (int64_t i = 0, ones = random() % 2; i < count; ++i)
                setBit(octets, length, field.start + i, ones != 0);
            break;
        case 2:  // a small number
            for (int64_t i = 0; i < count; ++i)
                setBit(octets, length, field.start + i, i + 3 >= count && random() % 2 != 0);
            break;
        default:  // any number
            for (int64_t i = 0; i < count; ++i)
                setBit(octets, length, field.start + i, random() % 2 != 0);
    }
    return length + 1;
}

namespace {

/// The properties of one set. Returns the dump.
std::string checkDumps(const TamselFamily& family, const uint8_t* octets, size_t length,
                       bool aligned, size_t cut) {
    const std::string dump = dumpOf(family, octets, length, aligned);
    require(dumpOf(family, octets, length, aligned) == dump, "the same octets give the same dump");
    if (dump.empty() || length >= 65500) return dump;
    std::string longer(reinterpret_cast<const char*>(octets), length);
    // With the modules of 1998, a message may end before its last flags, which then count as 0:
    // what follows it must not be taken for them.
    if (&family == &k1998) longer += std::string(8, '\0');
    longer += "\xFF\x55";
    require(dumpOf(family, reinterpret_cast<const uint8_t*>(longer.data()), longer.size(),
                   aligned) == dump,
            "octets behind a message do not change its dump");
    require(dumpOf(family, octets, cut, aligned).size() <= dump.size(),
            "a message cut short gives no longer dump");
    return dump;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2 || size > 65536) return 0;
    const bool aligned = (data[0] & 1) != 0;
    const uint8_t* const octets = data + 1;
    const size_t length = size - 1;
    const size_t cut = (data[0] >> 1) * length / 128;
    const std::string dump = checkDumps(k1998, octets, length, aligned, cut);
    require(exported(octets, length, aligned) == dump, "the export writes that dump");
    checkDumps(k2009, octets, length, aligned, cut);
    return 0;
}
