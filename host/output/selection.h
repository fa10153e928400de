// Which messages are shown: of families, of hosts, with names, at times.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "message.h"

/// A moment that people write. Without a date it is one of the day of the first message.
struct Moment {
    Time time = 0;
    bool hasDate = false;
};

/// Reads "2026-11-22", "2026-11-22T05:11", "2026-11-22 05:11:39.5", "05:11:39"; UTC, perhaps with a
/// Z after it. Returns nothing if a text is none of these.
std::optional<Moment> readMoment(std::string_view text);

std::string lowerCase(std::string_view text);

struct SelectionOptions {
    std::set<FamilyId> families{std::begin(kFamilies), std::end(kFamilies)};
    std::set<Address> hosts = {};      // sender or receiver; empty for all
    std::set<std::string> names = {};  // of messages, in lower case; empty for all
    std::optional<Moment> from = {};
    std::optional<Moment> to = {};
};

class Selection {
  public:
    explicit Selection(SelectionOptions options) : options_(std::move(options)) {}

    bool has(const CapturedMessage& message);
    /// What streams lack may have been a message of any name and family.
    bool has(const CaptureRemark& remark) { return has(remark.time, remark.flow); }

  private:
    bool has(Time time, const Flow& flow);

    SelectionOptions options_;
    std::optional<Time> day_ = {};  // of the first message
};
