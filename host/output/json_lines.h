// Messages and calls as lines of JSON. docs/json.md documents them.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "view.h"
#include "writer.h"

/// Adds the members of a message to an object, without its dump (json_dump.h). Text may be invalid
/// UTF-8, therefore the object must be written by appendJson (json_text.h).
void appendMessage(nlohmann::ordered_json& object, const CapturedMessage& message,
                   const MessageDetails& details);

/// Adds the members of a call to an object.
void appendCall(nlohmann::ordered_json& object, const CallRecord& call);

/// --json: each message as soon as it is complete.
class JsonMessages : public View {
  public:
    /// isFull: whether the dumps are added, as paths and values.
    JsonMessages(Writer& writer, bool isFull) : writer_(writer), isFull_(isFull) {}

    void message(const CapturedMessage& message, const MessageDetails& details,
                 const CallRecord* call) override;

  private:
    Writer& writer_;
    bool isFull_;
};

/// --calls --json: the calls of which a message is shown, at the end.
class JsonCalls : public View {
  public:
    explicit JsonCalls(Writer& writer) : writer_(writer) {}

    void message(const CapturedMessage& message, const MessageDetails& details,
                 const CallRecord* call) override;
    void forgotten(const CallRecord& call, const CallBook& book) override;
    void end(const CallBook& book) override;
    bool needsCalls() const override { return true; }

  private:
    Writer& writer_;
};
