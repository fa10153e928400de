// Writes the messages of a page as blocks of compressed JSON, which the page reads when it needs
// them.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <ostream>
#include <string>
#include <string_view>

/// Each block is written as soon as it is full. One block is in memory: at most kMaxOctets and one
/// message.
class PageBlocks {
  public:
    static constexpr size_t kMaxMessages = 256;
    static constexpr size_t kMaxOctets = 1 << 20;

    explicit PageBlocks(std::ostream& page) : page_(page) {}

    /// Adds a message.
    ///   message  what the list and the diagram show
    ///   details  what is shown if the message is selected, as JSON
    void add(const nlohmann::ordered_json& message, std::string_view details);

    /// Writes the last block.
    void finish();

  private:
    std::ostream& page_;
    size_t count_ = 0;
    std::string messages_;  // elements of a JSON array
    std::string details_;
};
