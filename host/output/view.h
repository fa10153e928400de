// One way to show messages: as dumps, as lines, as a diagram.
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
    /// What a stream of the call, or of any, lacks.
    virtual void remark(const CaptureRemark& /*remark*/, const CallRecord* /*call*/) {}
    /// A call that there is no more room for: nothing else will be heard of it.
    virtual void forgotten(const CallRecord& /*call*/, const CallBook& /*book*/) {}
    /// The captures have been read.
    virtual void end(const CallBook& /*book*/) {}

    /// What the view has to be told, besides messages.
    virtual bool needsDetails() const { return true; }
    virtual bool needsCalls() const { return false; }
};
