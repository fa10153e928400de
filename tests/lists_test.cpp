// The shortest list of every type. A search finds how many bits an element takes at least, from
// what the decoder reads: the generator's own figure is not used.

#include <algorithm>
#include <cstring>
#include <set>

#include "allocation.h"
#include "types.h"

namespace {

/// One decode of a list, traced, over bits that zeroes follow.
struct Reading {
    struct Field {
        std::string name;
        uint32_t start;
        uint32_t count;
        bool operator==(const Field&) const = default;
    };
    AsnStatus status = kAsnOk;
    uint32_t n = 0;
    uint32_t end = 0;
    std::vector<Field> fields = {};
    std::string dump = {};
};

constexpr size_t kOctets = 256;  // more than any of these lists takes

void set(Octets& octets, uint32_t bit, uint32_t count, uint32_t value) {
    for (uint32_t i = 0; i < count; ++i) {
        const auto mask = static_cast<uint8_t>(0x80 >> (bit + i) % 8);
        uint8_t& octet = octets[(bit + i) / 8];
        octet = static_cast<uint8_t>((value >> (count - 1 - i) & 1) != 0 ? octet | mask
                                                                         : octet & ~mask);
    }
}

/// Where the elements start: if there is no memory for them, reading ends there.
uint32_t elementsOf(const AsnTypeInfo& type, const Octets& octets, bool aligned, uint32_t at) {
    const auto value = newValue(type);
    Decoding decoding(octets, aligned);
    decoding.at(at);
    allocation.failAt = allocation.requests + 1;
    EXPECT_EQ(type.decode(decoding.ctx, value.get()), kAsnNoMemory);
    allocation.failAt = 0;
    return static_cast<uint32_t>(asnBitPosition(decoding.ctx));
}

Reading readList(const AsnTypeInfo& type, const Octets& octets, bool aligned, uint32_t at,
                 bool wantsDump = false) {
    const auto value = newValue(type);
    Decoding decoding(octets, aligned);
    decoding.at(at);
    asnSetFieldTrace(decoding.ctx, 1);
    Reading reading;
    reading.status = type.decode(decoding.ctx, value.get());
    std::memcpy(&reading.n, value.get(), sizeof reading.n);
    reading.end = static_cast<uint32_t>(asnBitPosition(decoding.ctx));
    for (auto* link = decoding.ctx.fieldList.head; link != nullptr; link = link->next)
        reading.fields.push_back({link->field->name, static_cast<uint32_t>(link->field->bitOffset),
                                  static_cast<uint32_t>(link->field->bitCount)});
    if (wantsDump && reading.status == kAsnOk)
        reading.dump = dumped([&](AsnDump& dump) { type.print(dump, value.get()); });
    return reading;
}

/// Tries all alternatives of every CHOICE. Everything else takes the fewest bits if it is zero.
class Search {
  public:
    Search(const AsnTypeInfo& type, bool aligned, Octets octets)
        : type_(type), aligned_(aligned), octets_(std::move(octets)) {
        elements_ = elementsOf(type, octets_, aligned, 0);
        decide(1, elements_);
    }
    uint32_t least = UINT32_MAX;  // bits of all elements; padding is not counted
    Octets shortest;

  private:
    /// The first `known` fields are fixed, up to bit `from`.
    void decide(size_t known, uint32_t from) {
        if (from > elements_ + end_) return;
        const Reading reading = readList(type_, octets_, aligned_, 0);
        for (size_t i = known; i < reading.fields.size(); ++i) {
            const Reading::Field& field = reading.fields[i];
            const bool isChoice = field.name == " ConsUnsigned" && field.count < 8;
            if ((!isChoice && field.name != " ConsInteger") || field.start < from) continue;
            for (uint32_t index = 0; index < (isChoice ? 1U << field.count : 1U); ++index) {
                set(octets_, field.start, field.count, index);
                decide(i + 1, field.start + field.count);
            }
            set(octets_, field.start, field.count, 0);
            const uint32_t before = reading.fields[i - 1].start + reading.fields[i - 1].count;
            for (uint32_t bit = std::max(from, before); bit < field.start; ++bit)
                extend(i, bit, isChoice);
            return;
        }
        if (reading.status == kAsnOk && reading.end < elements_ + end_ + 8) measure(reading.end);
    }

    /// The bit, which is in no field, may be the extension bit of a CHOICE, before an index and an
    /// open type, or that of an INTEGER, before a length of 0.
    void extend(size_t known, uint32_t bit, bool isChoice) {
        const Octets undecided = octets_;
        // As published, an open type is aligned only in the ALIGNED variant.
        const bool published = std::string(type_.name).find("::") != std::string::npos;
        const uint32_t length = published && !aligned_ ? bit + 8 : (bit + 15) / 8 * 8;
        set(octets_, bit, 1, 1);
        for (uint32_t index = 0; index < (isChoice ? 12 : 1); ++index)
            for (uint32_t octets = 0; octets < (isChoice ? 4 : 1); ++octets) {
                set(octets_, bit + 2, 6, index);
                set(octets_, length, 8, octets);
                decide(known, isChoice ? length + 8 + octets * 8 : bit + 9);
            }
        octets_ = undecided;
    }

    /// Counts the bits that are not padding: if one is changed, another value is decoded. Only the
    /// index of an unknown alternative does not change the value.
    void measure(uint32_t end) {
        const Reading reading = readList(type_, octets_, aligned_, 0, true);
        uint32_t bits = 0;
        for (uint32_t bit = elements_; bit < end && bits < least; ++bit) {
            const auto mask = static_cast<uint8_t>(0x80 >> bit % 8);
            octets_[bit / 8] ^= mask;
            const Reading other = readList(type_, octets_, aligned_, 0, true);
            octets_[bit / 8] ^= mask;
            bits += other.status != reading.status || other.end != reading.end ||
                    other.dump != reading.dump || other.fields != reading.fields ||
                    std::any_of(reading.fields.begin(), reading.fields.end(), [&](auto& field) {
                        return field.name == " choice index" && bit >= field.start &&
                               bit < field.start + field.count;
                    });
        }
        if (bits >= least) return;
        least = bits;
        end_ = end - elements_;
        shortest.assign(octets_.begin(), octets_.begin() + (end + 7) / 8);
    }

    const AsnTypeInfo& type_;
    const bool aligned_;
    Octets octets_;
    uint32_t elements_ = 0;  // where they start
    uint32_t end_ = 1000;    // bits of the shortest, padding included
};

TEST(Lists, TheShortestThatFits) {
    for (const AsnTypeInfo* type : allTypes())
        for (const bool aligned : {true, false}) {
            if (type->elementSize == 0) continue;
            SCOPED_TRACE(type->name + std::string(aligned ? ", ALIGNED" : ", UNALIGNED"));
            // The count of the list that zeroes give, and how a greater one is written.
            Octets octets(kOctets);
            const Reading none = readList(*type, octets, aligned, 0);
            const auto write = [&](Octets& to, uint32_t at, uint32_t n) {
                const uint32_t elements = elementsOf(*type, to, aligned, at);
                const uint32_t count = none.fields[0].count;
                set(to, elements - count, count, n - none.n);
                return elements;
            };
            const uint32_t lowest = std::max(none.n, 1U);
            write(octets, 0, lowest);
            const Search found(*type, aligned, octets);
            ASSERT_LT(found.least, 1000U);
            ASSERT_EQ(found.least % lowest, 0U);
            const uint32_t element = found.least / lowest;

            Octets list = found.shortest;
            list.push_back(0);  // a number of no octets needs an octet after it
            EXPECT_EQ(readList(*type, list, aligned, 0).status, kAsnOk);
            list.resize(list.size() - 2);
            EXPECT_EQ(readList(*type, list, aligned, 0).status, kAsnEndOfData);

            // From each bit of an octet on: exactly the bits that elements take at least, and up to
            // an octet less. Only in the first case memory is requested.
            std::set<bool> tried;
            for (uint32_t at = 0; at < 8; ++at)
                for (uint32_t n = lowest; n < lowest + 8; ++n) {
                    list.assign(kOctets, 0);
                    const uint32_t elements = write(list, at, n);
                    if (readList(*type, list, aligned, at).n != n) continue;
                    for (uint32_t missing = 0; missing <= 8; ++missing) {
                        const uint32_t end = elements + n * element - missing;
                        if (end % 8 != 0) continue;
                        tried.insert(missing != 0);
                        list.resize(end / 8);
                        const auto value = newValue(*type);
                        Decoding decoding(list, aligned);
                        decoding.at(at);
                        allocation = {};
                        const AsnStatus status = type->decode(decoding.ctx, value.get());
                        EXPECT_EQ(allocation.requests > 0, missing == 0) << n << " at " << at;
                        if (missing != 0) EXPECT_EQ(status, kAsnEndOfData);
                        list.resize(kOctets);
                    }
                }
            EXPECT_EQ(tried.size(), 2U);
        }
}

}  // namespace
