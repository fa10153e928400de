// How many octets the readers of streams hold together. Each by itself is bounded, but a capture
// can have any number of them.
#pragma once

#include <cstddef>

class MemoryBudget {
  public:
    explicit MemoryBudget(size_t limit) : limit_(limit) {}

    void take(size_t octets) { used_ += octets; }
    void giveBack(size_t octets) { used_ -= octets; }

    /// Whether too much is held. If so, no more may be held, and what is held is given up.
    bool isSpent() const { return used_ > limit_; }
    size_t used() const { return used_; }

  private:
    size_t limit_;
    size_t used_ = 0;
};
