// --list: one line for each message, with an arrow between its hosts.
#pragma once

#include "recent.h"
#include "screen.h"
#include "view.h"
#include "writer.h"

class MessageLines : public View {
  public:
    MessageLines(Writer& writer, const Screen& screen);

    void message(const CapturedMessage& message, const MessageDetails& details,
                 const CallRecord* call) override;
    void remark(const CaptureRemark& remark, const CallRecord* call) override;

  private:
    void begin(Time time, uint32_t frame, const Flow& flow);
    void add(Style style, std::string_view words);
    void finish();

    Writer& writer_;
    const Screen& screen_;
    bool isNarrow_;  // the terminal has no room for columns
    /// The host on the left, for each pair of hosts: the one that sent the first message.
    Recent<std::pair<Address, Address>, Address> left_;
    std::string line_;
    size_t column_ = 0;  // the position in the last line of line_; counted if there is a width
};
