// How the details of a message are put together.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "details.h"
#include "escaped_text.h"

class DetailWriter {
  public:
    explicit DetailWriter(MessageDetails& details) : details_(details) {}

    /// Adds a fact; an empty text or list is none.
    void fact(std::string_view name, std::string value) {
        if (!value.empty()) details_.facts.emplace_back(name, std::move(value));
    }
    void fact(std::string_view name, std::vector<std::string> value) {
        if (!value.empty()) details_.facts.emplace_back(name, std::move(value));
    }
    void number(std::string_view name, int64_t value) { details_.facts.emplace_back(name, value); }

    /// Adds to the summary, after a blank: words of ours, and text from the wire.
    void say(std::string_view words) {
        if (words.empty()) return;
        separate();
        details_.summary += words;
    }
    void sayWire(std::string_view wire) {
        if (wire.empty()) return;
        separate();
        appendEscaped(details_.summary, wire);
    }
    void sayNumber(int64_t value) { say(std::to_string(value)); }

  private:
    void separate() {
        if (!details_.summary.empty()) details_.summary += ' ';
    }

    MessageDetails& details_;
};
