// What tamsel-capture writes: dumps under headings, a file for each message, or the ladder of the
// call.
#pragma once

#include <array>
#include <set>

#include "message.h"
#include "recent.h"
#include "writer.h"

struct OutputOptions {
    bool files = false;                // a file for each message, and index.tsv
    bool ladder = false;               // --list
    std::set<FamilyId> families = {};  // to show
};

/// Throws std::runtime_error if something cannot be written.
class CaptureOutput : public MessageSink {
  public:
    CaptureOutput(Writer& writer, OutputOptions options);

    void message(const CapturedMessage& message) override;
    void remark(const CaptureRemark& remark) override;

    /// What was shown, in words; one line and, for remarks, some more.
    std::string summary() const;
    size_t messages() const { return number_; }
    size_t refused() const { return refused_; }

  private:
    void writeStep(const CapturedMessage& message);
    void beginStep(Time time, const Flow& flow);
    void writeDump(const CapturedMessage& message);
    void writeFile(const CapturedMessage& message);

    Writer& writer_;
    OutputOptions options_;
    /// Who is on the left of the ladder: of two hosts the one that spoke first.
    Recent<std::pair<Address, Address>, Address> left_;
    size_t number_ = 0;
    size_t refused_ = 0;
    size_t bare_ = 0;
    size_t proposals_ = 0;
    std::array<size_t, 3> shown_{};  // by family
    struct Remarks {
        size_t count = 0;
        size_t octets = 0;
    };
    std::array<Remarks, kRemarks> remarks_{};
};
