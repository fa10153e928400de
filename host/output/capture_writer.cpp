#include "capture_writer.h"

#include <algorithm>

#include "capture_file.h"

void CaptureWriter::read(const Frame& frame) {
    if (limit_ == 0) return;
    Kept& kept = kept_.emplace_back();
    kept.octets.assign(frame.octets.begin(), frame.octets.end());
    kept.frame = frame;
    kept.frame.octets = kept.octets;
    held_ += kept.octets.size() + sizeof(Kept);
    while (held_ > limit_ && kept_.size() > 1) release();
}

void CaptureWriter::select(std::span<const FrameId> frames) {
    for (const FrameId frame : frames) {
        if (limit_ == 0) {
            if (selected_.size() <= frame.file) selected_.resize(frame.file + size_t{1});
            auto& numbers = selected_[frame.file];
            if (numbers.size() <= frame.number) numbers.resize(frame.number + size_t{1});
            numbers[frame.number] = true;
            continue;
        }
        const auto kept = std::ranges::lower_bound(kept_, frame, {},
                                                   [](const Kept& one) { return one.frame.id; });
        if (kept != kept_.end() && kept->frame.id == frame)
            kept->isSelected = true;
        else
            ++missing_;
    }
}

void CaptureWriter::write(const Frame& frame) {
    file_.write(frame);
    ++written_;
}

/// Removes the frame that was kept longest, and writes it if it is selected.
void CaptureWriter::release() {
    const Kept& oldest = kept_.front();
    if (oldest.isSelected) write(oldest.frame);
    held_ -= oldest.octets.size() + sizeof(Kept);
    kept_.pop_front();
}

void CaptureWriter::finish(const std::vector<std::string>& files) {
    while (!kept_.empty()) release();
    for (uint32_t index = 0; index < selected_.size(); ++index) readAgain(files.at(index), index);
    file_.finish();
}

void CaptureWriter::readAgain(const std::string& name, uint32_t index) {
    const auto& numbers = selected_[index];
    if (numbers.empty()) return;
    try {
        CaptureFile file(name, index);
        for (Frame frame; file.next(frame) && frame.id.number < numbers.size();)
            if (numbers[frame.id.number]) write(frame);
    } catch (const BadCapture&) {
        // This was reported when the file was read for the first time.
    }
}
