// What tamsel-capture writes: dumps under headings, a file a message, or the ladder of the call.
#pragma once

#include <array>
#include <filesystem>
#include <fstream>
#include <set>

#include "call_follower.h"

struct OutputOptions {
    std::filesystem::path folder;           // for a file a message and index.tsv; empty for none
    bool ladder = false;                    // --list
    std::set<const Family*> families = {};  // to show
};

/// Throws std::runtime_error where something cannot be written.
class CaptureOutput : public MessageSink {
  public:
    explicit CaptureOutput(OutputOptions options);
    ~CaptureOutput() override;
    CaptureOutput(const CaptureOutput&) = delete;
    CaptureOutput& operator=(const CaptureOutput&) = delete;

    void message(const CapturedMessage& message) override;
    void remark(const CaptureRemark& remark) override;

    /// Writes out what is held back.
    void finish();

    /// What was shown, in words; one line and, for remarks, some more.
    std::string summary() const;
    size_t messages() const { return number_ - proposals_; }
    size_t refused() const { return refused_; }

  private:
    void writeDump(const CapturedMessage& message);
    void writeFile(const CapturedMessage& message);
    void writeStep(Time time, const Flow& flow, const std::string& what);
    void write(std::string_view text);

    OutputOptions options_;
    FILE* out_ = keepStandardOutput();
    std::ofstream index_;
    /// Who stands on the left of the ladder: of two hosts the one that spoke first.
    Recent<std::pair<Endpoint, Endpoint>, Endpoint> left_;
    size_t number_ = 0;
    size_t refused_ = 0;
    size_t proposals_ = 0;
    std::array<size_t, 3> shown_{};  // by family
    struct Remarks {
        size_t count = 0;
        size_t octets = 0;
    };
    std::array<Remarks, kRemarks> remarks_{};
};
