// A histogram in bounded memory. Values below 64 are exact, greater ones have an error of at most
// 3 %.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

class Histogram {
  public:
    void add(uint64_t value) {
        min_ = count_ == 0 ? value : std::min(min_, value);
        max_ = std::max(max_, value);
        ++count_;
        ++counts_.at(bucketOf(value));
    }

    size_t count() const { return count_; }
    uint64_t min() const { return min_; }
    uint64_t max() const { return max_; }

    /// The value that `percent` of the values do not exceed.
    uint64_t percentile(unsigned percent) const {
        const size_t wanted = std::max<size_t>((count_ * percent + 99) / 100, 1);
        size_t seen = 0;
        for (size_t bucket = 0; bucket < kBuckets; ++bucket) {
            seen += counts_.at(bucket);
            if (seen >= wanted) return std::clamp(middleOf(bucket), min_, max_);
        }
        return max_;
    }

  private:
    // The bucket of a value is given by its six highest bits, and by the number of bits below them.
    static constexpr unsigned kBits = 6;
    static constexpr size_t kHalf = 1U << (kBits - 1);
    static constexpr unsigned kMaxShift = 34;  // of microseconds: up to 12 days
    static constexpr size_t kBuckets = kHalf * (kMaxShift + 2);

    static size_t bucketOf(uint64_t value) {
        const unsigned width = static_cast<unsigned>(std::bit_width(value));
        const unsigned shift = width > kBits ? width - kBits : 0;
        if (shift > kMaxShift) return kBuckets - 1;
        return kHalf * shift + static_cast<size_t>(value >> shift);
    }
    static uint64_t middleOf(size_t bucket) {
        if (bucket < 2 * kHalf) return bucket;
        const size_t shift = bucket / kHalf - 1;
        return ((bucket - kHalf * shift) << shift) + (uint64_t{1} << shift) / 2;
    }

    size_t count_ = 0;
    uint64_t min_ = 0;
    uint64_t max_ = 0;
    std::array<size_t, kBuckets> counts_{};
};
