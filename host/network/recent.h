// A map of bounded size, for what a capture could otherwise fill without limit.
#pragma once

#include <cstddef>
#include <deque>
#include <map>

/// Holds the `limit` keys that were inserted last. A key that is set again keeps its place.
template <class Key, class Value>
class Recent {
  public:
    explicit Recent(size_t limit) : limit_(limit) {}

    /// Sets the value of a key. If there are too many keys, forgets the oldest.
    void put(const Key& key, Value value) {
        if (!values_.insert_or_assign(key, std::move(value)).second) return;
        order_.push_back(key);
        if (order_.size() <= limit_) return;
        values_.erase(order_.front());
        order_.pop_front();
    }

    /// The value of a key, or null. Valid until the next `put`.
    const Value* find(const Key& key) const {
        const auto found = values_.find(key);
        return found != values_.end() ? &found->second : nullptr;
    }
    Value* find(const Key& key) {
        const auto found = values_.find(key);
        return found != values_.end() ? &found->second : nullptr;
    }

  private:
    size_t limit_;
    std::map<Key, Value> values_;
    std::deque<Key> order_;  // oldest first
};
