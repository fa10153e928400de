// Selects messages by family, host, name and time.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "message.h"

/// A time that the user gives. Without a date it is on the day of the first message.
struct Moment {
    Time time = 0;  // without a date, since midnight
    bool hasDate = false;
};

/// Reads "2026-11-22", "2026-11-22T05:11", "2026-11-22 05:11:39.5" or "05:11:39", in UTC; a Z may
/// follow. Returns nothing if the text has another form.
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

    /// Whether a message is shown. The first call sets the day of times without a date.
    bool has(const CapturedMessage& message);
    /// The same for a remark. Names and families do not matter, because missing octets may have
    /// been any message.
    bool has(const CaptureRemark& remark) { return has(remark.time, remark.flow); }

  private:
    bool has(Time time, const Flow& flow);

    SelectionOptions options_;
    std::optional<Time> day_ = {};  // of the first message
};
