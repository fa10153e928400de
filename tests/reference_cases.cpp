#include "reference_cases.h"

uint64_t Choices::word() {
    if (octets_ != nullptr) {
        uint64_t word = 0;
        for (int i = 0; i < 2 && count_ > 0; ++i, --count_) word = word << 8 | *octets_++;
        return word;
    }
    uint64_t z = state_ += 0x9E3779B97F4A7C15;
    z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9;
    z = (z ^ z >> 27) * 0x94D049BB133111EB;
    return z ^ z >> 31;
}
namespace {

/// Makes octets with plausible encodings from a bit on: numbers, bitmaps, lengths and contents.
class Encoding {
  public:
    Encoding(Choices& choices, bool aligned) : c_(choices), aligned_(aligned) {}

    reference::Octets make(uint32_t start) {
        for (uint32_t i = 0; i < start; ++i) put(c_.below(2), 1);
        const uint32_t kind = c_.below(8);
        mask_ = c_.pick({0xFFU, 0xFFU, 0x07U, 0x7FU, 0x0FU});
        fixed_ = c_.pick({0x00U, 0x00U, 0x30U, 0x80U, 0xC0U});
        if (kind == 0) {
            putContents(1 + c_.below(24), false);
        } else {
            lead();
            for (uint32_t items = 1 + c_.below(3); items > 0; --items) item();
            if (c_.oneIn(2)) putContents(c_.below(4), false);
        }
        if (c_.oneIn(4)) octets_.resize(c_.below(static_cast<uint32_t>(octets_.size()) + 1));
        if (octets_.empty()) octets_.push_back(static_cast<uint8_t>(c_.below(256)));
        return {octets_.begin(), octets_.end()};  // in a block of exactly this size
    }

  private:
    void put(uint32_t value, uint32_t nbits) {
        for (; nbits > 0; --nbits, ++at_) {
            if (at_ % 8 == 0) octets_.push_back(0);
            const uint32_t bit = value >> (nbits - 1) & 1;
            octets_.back() = static_cast<uint8_t>(octets_.back() | bit << (7 - at_ % 8));
        }
    }
    void align() { put(0, (8 - at_ % 8) % 8); }

    /// What precedes a length: nothing, bits, or a small number with a bitmap.
    void lead() {
        const uint32_t n = c_.below(c_.oneIn(8) ? 64 : 4);
        switch (c_.below(6)) {
            case 0:
            case 1:
                return;
            case 2:
                return put(c_.below(4), 1 + c_.below(2));
            case 3:
                return put(n, 7);
            case 4:
                put(n, 7);
                for (uint32_t i = 0; i <= n; ++i) put(c_.below(2), 1);
                return;
            default:
                put(1, 1);
                if (aligned_) align();
                put(c_.oneIn(4) ? 0 : 1, 8);
                align();
                put(n, 8);
                if (c_.oneIn(2)) put(c_.below(1 << n % 16), n % 16);
        }
    }

    /// A length determinant and contents.
    void item() {
        if (aligned_) align();
        uint32_t length = c_.below(10);
        switch (c_.below(16)) {
            case 0:
                length = c_.pick({16U, 17U, 63U, 64U, 100U, 127U});
                break;
            case 1:
                length = c_.pick({2U, 100U, 128U, 129U, 130U, 140U, 200U, 299U, 300U, 301U});
                put(2, 2);
                put(length, 14);
                return putContents(length, !c_.oneIn(4));
            case 2: {
                const uint32_t m = c_.below(6);
                put(3, 2);
                put(c_.oneIn(64) ? 63 : m, 6);
                // Most are cut short; some have all bits; few have all octets.
                putContents(c_.oneIn(64) ? m * 16384 : c_.oneIn(4) ? m * 2048 : 3, true);
                return;
            }
            default:
                break;
        }
        put(length, 8);
        putContents(length, true);
    }

    void putContents(uint32_t count, bool real) {
        if (count > 1000) {
            align();
            octets_.insert(octets_.end(), count, static_cast<uint8_t>(c_.below(256)));
            at_ += count * 8;
            return;
        }
        for (uint32_t i = 0; i < count; ++i)
            put(i == 0 && real && c_.oneIn(6)
                    ? c_.pick({0x40U, 0x41U, 0x42U, 0x43U, 0x80U, 0x81U, 0x94U, 0xA9U, 0xC0U})
                    : (c_.below(256) & mask_) | fixed_,
                8);
    }

    Choices& c_;
    bool aligned_;
    uint32_t mask_ = 0;
    uint32_t fixed_ = 0;
    uint32_t at_ = 0;
    reference::Octets octets_;
};

}  // namespace

reference::Octets makeOctets(Choices& choices, bool aligned, uint32_t start) {
    return Encoding(choices, aligned).make(start);
}

void makeArguments(Choices& c, Arguments& a) {
    a.nbits = c.oneIn(8) ? c.below(400) : c.below(40);
    a.capacity = c.oneIn(2) ? (a.nbits + 7) / 8 - (a.nbits > 0 && c.oneIn(4) ? 1 : 0)
                            : c.pick({0U, 1U, 2U, 3U, 64U, 64U, 300U, 2048U});
    if (c.oneIn(64)) a.capacity = 70000;
    constexpr uint32_t kRanges[] = {0,     1,     2,        3,          10,        11,
                                    64,    255,   256,      257,        65535,     65536,
                                    65537, 70000, 1U << 24, 1U << 31,   128,       40000,
                                    300,   4,     1000000,  UINT32_MAX, 0x7FFFFFFF};
    a.rangeSize = c.pick(kRanges);
    constexpr int32_t kBounds[] = {INT32_MIN, -70000, -128, -5, -1,  0,     0,     1,        1,
                                   2,         7,      15,   63, 127, 16384, 65536, INT32_MAX};
    a.lower = c.pick(kBounds);
    const uint32_t reach = c.pick(kRanges);
    a.upper = static_cast<int32_t>(static_cast<uint32_t>(a.lower) + reach -
                                   (c.oneIn(2) ? 1 : c.below(300)));
    a.distance = static_cast<int64_t>(c.below(c.oneIn(8) ? 2000000 : 120)) - (c.oneIn(4) ? 40 : 0);
    if (c.oneIn(4)) a.distance = -a.distance;
    a.itemBits = c.pick({1U, 8U, 8U, 3U, 2U, 4U, 7U, 16U, 64U});
    if (c.oneIn(2))
        a.permitted =
            c.pick({"0123456789#*,", "0123456789#*ABCD!", "", "a", "01", "~}\x7f", "\xe4",
                    " !\"#$%&'()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\]^_",
                    "0123456789 ", "abcdefghijklmnopqrstuvwxyz0123456789ABCDEFGHIJKLMNOP"});
    for (uint32_t records = c.oneIn(6) ? 3 : c.below(3); records > 0; --records) {
        constexpr uint32_t kCounts[] = {0,  0,  1,  1,   2,   2,   3,     4,     8,
                                        15, 16, 17, 128, 255, 256, 300,   65535, 65536,
                                        5,  7,  0,  1,   2,   16,  70000, 0,     UINT32_MAX};
        uint32_t lower = c.pick(kCounts);
        uint32_t upper = c.oneIn(4) ? lower : c.pick(kCounts);
        if (lower > upper && !c.oneIn(32)) std::swap(lower, upper);
        a.chain.push_back({c.oneIn(3), lower, upper});
    }
    for (const reference::Size& size : a.chain)
        a.records.push_back({size.extended, size.lower, size.upper, nullptr});
    for (size_t i = 1; i < a.records.size(); ++i) a.records[i - 1].next = &a.records[i];
    a.restricted = c.oneIn(2);
    for (uint32_t i = c.pick({0U, 1U, 2U, 3U, 10U, 16U, 17U, 255U}); i > 0; --i)
        a.codes.push_back(static_cast<uint16_t>(i * 259));
    a.codes16 = {static_cast<uint32_t>(a.codes.size()), a.codes.data()};
    a.width = 1 + a.nbits % 16;
    a.lowest = static_cast<uint16_t>(c.below(3) * 0x7001);
    a.length = c.below(c.oneIn(4) ? 200 : 6);
}
