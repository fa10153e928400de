// The messages in a page: blocks of compressed JSON, which the page reads when it needs them.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <ostream>
#include <string>
#include <string_view>

/// Writes each block as soon as it is full. Holds one block, at most kMaxOctets and a message.
class PageBlocks {
  public:
    static constexpr size_t kMaxMessages = 256;
    static constexpr size_t kMaxOctets = 1 << 20;

    explicit PageBlocks(std::ostream& page) : page_(page) {}

    /// message: what the list and the diagram show; details, as JSON: what is read if the message
    /// is selected.
    void add(const nlohmann::ordered_json& message, std::string_view details);

    /// Writes what is left.
    void finish();

  private:
    std::ostream& page_;
    size_t count_ = 0;
    std::string messages_;  // elements of a JSON array
    std::string details_;
};
