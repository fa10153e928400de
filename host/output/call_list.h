// The list of calls, and of the endpoints that sent messages outside calls.
#pragma once

#include <array>

#include "screen.h"
#include "view.h"
#include "writer.h"

/// In a pipe and on a wide terminal a call is one line with columns; on a narrow one it has two
/// lines.
class CallList : public View {
  public:
    CallList(Writer& writer, const Screen& screen);

    void message(const CapturedMessage& message, const MessageDetails& details,
                 const CallRecord* call) override;
    void forgotten(const CallRecord& call, const CallBook& book) override;
    void end(const CallBook& book) override;
    bool needsCalls() const override { return true; }

    /// "5 calls: 1 released, 3 failed, 1 rejected"
    std::string summary() const;

  private:
    static constexpr size_t kColumns = 8;  // to the left of the state
    using Row = std::array<std::string, kColumns>;

    static Row rowOf(const CallRecord& call);
    void begin(const CallBook& book);
    void add(const CallRecord& call);
    void addWide(const CallRecord& call);
    void addNarrow(const CallRecord& call);
    void addEndpointHeading();
    void addEndpoint(const EndpointRecord& endpoint);
    void addWrapped(std::string_view words, size_t from, size_t indent, Style style, size_t styled);

    Writer& writer_;
    const Screen& screen_;
    bool isWide_;
    bool hasBegun_ = false;
    std::array<size_t, kColumns> widths_{};
    std::array<size_t, 8> states_{};
};
