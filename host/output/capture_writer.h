// -w: writes the frames of messages to a capture file, each once, in their order.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "frame_file.h"
#include "view.h"

/// The frames of a message have passed when the message is complete. Therefore files are read again
/// for them. Frames that cannot be read again are kept, up to a limit.
class CaptureWriter : public View {
  public:
    /// Throws std::runtime_error if the file cannot be written, here and below.
    ///   name  of the file; "-" is standard output
    ///   kept  the number of octets of frames that are kept; 0 if frames can be read again
    CaptureWriter(const std::string& name, size_t kept) : file_(name), limit_(kept) {}

    /// Must be called with each frame, before its messages are passed on.
    void read(const Frame& frame);

    /// Selects the frames of a message.
    void select(std::span<const FrameId> frames);

    // View
    void message(const CapturedMessage& message, const MessageDetails& /*details*/,
                 const CallRecord* /*call*/) override {
        select(message.frames);
    }
    bool needsDetails() const override { return false; }

    /// Writes the selected frames that are not written yet. Must be called last.
    ///   files  the input files, which are read again
    void finish(const std::vector<std::string>& files);

    /// The number of frames that were written.
    size_t written() const { return written_; }
    /// The number of selected frames that were no longer kept.
    size_t missing() const { return missing_; }

  private:
    struct Kept {
        Frame frame;  // refers to the octets below
        std::vector<uint8_t> octets;
        bool isSelected = false;
    };

    void write(const Frame& frame);
    void release();
    void readAgain(const std::string& name, uint32_t index);

    FrameFile file_;
    size_t limit_;
    size_t written_ = 0;
    size_t missing_ = 0;
    std::vector<std::vector<bool>> selected_;  // of each file, by frame number
    std::deque<Kept> kept_;
    size_t held_ = 0;  // octets that kept_ costs
};
