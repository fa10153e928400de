// Counts what is not read, by kind, for the last lines of the summary.
#pragma once

#include <map>
#include <string>
#include <string_view>

class Unread {
  public:
    /// Counts some of a kind, which is named in the plural: "frames of EtherType 0x88f7". If there
    /// are too many kinds, it counts as one of the others.
    void count(std::string_view kind, size_t count = 1) {
        auto found = kinds_.find(kind);
        if (found == kinds_.end())
            found = kinds_.emplace(kinds_.size() < kMaxKinds ? kind : kOthers, 0).first;
        found->second += count;
    }

    /// Takes back one of a kind, because it was read later.
    void takeBack(std::string_view kind) {
        const auto found = kinds_.find(kind);
        if (found != kinds_.end() && --found->second == 0) kinds_.erase(found);
    }

    const std::map<std::string, size_t, std::less<>>& kinds() const { return kinds_; }

  private:
    static constexpr size_t kMaxKinds = 64;
    static constexpr std::string_view kOthers = "frames of other kinds";

    std::map<std::string, size_t, std::less<>> kinds_;
};
