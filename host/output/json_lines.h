// Messages and calls as JSON, a line each. docs/json.md says what a line holds.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "view.h"
#include "writer.h"

/// Adds the members of a message to an object: all but its dump (json_dump.h). Text in it may be
/// no UTF-8: only appendJson (json_text.h) can write the object.
void appendMessage(nlohmann::ordered_json& object, const CapturedMessage& message,
                   const MessageDetails& details);

/// Adds the members of a call to an object.
void appendCall(nlohmann::ordered_json& object, const CallRecord& call);

/// --json: messages as they come.
class JsonMessages : public View {
  public:
    /// isFull: with their dumps, as paths and values
    JsonMessages(Writer& writer, bool isFull) : writer_(writer), isFull_(isFull) {}

    void message(const CapturedMessage& message, const MessageDetails& details,
                 const CallRecord* call) override;

  private:
    Writer& writer_;
    bool isFull_;
};

/// --calls --json: the calls that have a message which is shown, when all are complete.
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
