// Writes the dumps of messages: under headings to standard output, or a file for each message.
#pragma once

#include "view.h"
#include "writer.h"

/// --dump: the dump of each message under a heading.
class DumpView : public View {
  public:
    explicit DumpView(Writer& writer) : writer_(writer) {}

    void message(const CapturedMessage& message, const MessageDetails& details,
                 const CallRecord* call) override;
    bool needsDetails() const override { return false; }

  private:
    Writer& writer_;
    size_t number_ = 0;
};

/// -o: a file for each message, and index.tsv. Throws std::runtime_error if something cannot be
/// written.
class FileView : public View {
  public:
    explicit FileView(Writer& writer);

    void message(const CapturedMessage& message, const MessageDetails& details,
                 const CallRecord* call) override;
    bool needsDetails() const override { return false; }

  private:
    Writer& writer_;
    size_t number_ = 0;
};
