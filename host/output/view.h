// The interface of the views. Each shows messages in its own form: dumps, lines, a diagram.
#pragma once

#include "call_book.h"
#include "details.h"
#include "message.h"

class View {
  public:
    virtual ~View() = default;

    /// A message that is to be shown.
    ///   details  what it says; empty if no view needs them
    ///   call     the call that it belongs to; null outside calls, or if no view needs calls
    virtual void message(const CapturedMessage& message, const MessageDetails& details,
                         const CallRecord* call) = 0;
    /// A remark on a stream. `call` is the call of the stream; null if it is not known.
    virtual void remark(const CaptureRemark& /*remark*/, const CallRecord* /*call*/) {}
    /// A shown call that the book forgets, because it has no room. The view sees it for the last
    /// time.
    virtual void forgotten(const CallRecord& /*call*/, const CallBook& /*book*/) {}
    /// The captures have been read.
    virtual void end(const CallBook& /*book*/) {}

    /// Whether the view uses the details and the calls of messages. They are not read if no view
    /// does.
    virtual bool needsDetails() const { return true; }
    virtual bool needsCalls() const { return false; }
};
