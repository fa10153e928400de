// Writes the frames of messages to a capture file: each once, in their order.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "frame_file.h"
#include "view.h"

/// A message is complete after its frames have passed. Files are read again for them; frames that
/// cannot be read again are kept for a while.
class CaptureWriter : public View {
  public:
    /// kept: how many octets of frames are kept; 0 if they can be read again.
    CaptureWriter(const std::string& name, size_t kept) : file_(name), limit_(kept) {}

    /// Takes each frame as it is read, before its messages.
    void read(const Frame& frame);

    /// Takes the frames of a message that is to be written.
    void select(std::span<const FrameId> frames);

    // View
    void message(const CapturedMessage& message, const MessageDetails& /*details*/,
                 const CallRecord* /*call*/) override {
        select(message.frames);
    }
    bool needsDetails() const override { return false; }

    /// Writes the frames that are still kept, and those of files that are read again.
    void finish(const std::vector<std::string>& files);

    size_t written() const { return written_; }
    /// Frames that were not kept until their message was complete.
    size_t missing() const { return missing_; }

  private:
    struct Kept {
        Frame frame;  // its octets are those below
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
    std::vector<std::vector<bool>> selected_;  // by file and number: to be read again
    std::deque<Kept> kept_;
    size_t held_ = 0;  // octets in kept_, and what they cost
};
