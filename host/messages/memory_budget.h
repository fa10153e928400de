// Counts the octets that all readers of streams hold together. Each reader has a limit of its own,
// but a capture can have any number of streams.
#pragma once

#include <cstddef>

class MemoryBudget {
  public:
    explicit MemoryBudget(size_t limit) : limit_(limit) {}

    void take(size_t octets) { used_ += octets; }
    void giveBack(size_t octets) { used_ -= octets; }

    /// Whether too much is held. A reader that sees this gives up what it holds.
    bool isSpent() const { return used_ > limit_; }
    size_t used() const { return used_; }

  private:
    size_t limit_;
    size_t used_ = 0;
};
