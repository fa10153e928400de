#include "capture_input.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <iostream>
#include <memory>
#include <optional>

#include "capture_file.h"
#include "interrupt.h"
#include "link_types.h"
#include "live_capture.h"

bool isLive(const InputOptions& options) {
    const auto isRegular = [](const std::string& name) {
        struct stat status {};
        const int result = name == "-" ? fstat(STDIN_FILENO, &status) : stat(name.c_str(), &status);
        return result != 0 || S_ISREG(status.st_mode);
    };
    return !options.interface.empty() || !std::ranges::all_of(options.files, isRegular);
}

bool canReadAgain(const InputOptions& options) {
    return !isLive(options) && std::ranges::find(options.files, "-") == options.files.end();
}

void complain(const std::string& text) {
    std::cerr << "tamsel-capture: " << text << "\n";
}

/// A progress bar on standard error, which appears after a second.
class CaptureInput::Progress {
  public:
    Progress(bool isWanted, const std::function<size_t()>& messages)
        : isWanted_(isWanted), messages_(messages) {}
    ~Progress() { clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void show(const FrameSource& source) {
        if (!isWanted_ || ++frames_ % kFramesPerLook != 0) return;
        const auto now = Clock::now();
        if (now < next_) return;
        next_ = now + std::chrono::milliseconds(200);
        const double part = source.progress();
        std::string bar(part >= 0 ? static_cast<size_t>(part * kWidth) : 0, '#');
        bar.resize(kWidth, '.');
        std::cerr << "\r[" << bar << "] " << messages_() << " messages" << std::flush;
        isShown_ = true;
    }
    void clear() {
        if (isShown_) std::cerr << "\r\x1B[K" << std::flush;
        isShown_ = false;
    }

  private:
    using Clock = std::chrono::steady_clock;
    static constexpr size_t kFramesPerLook = 1024;  // between two looks at the clock
    static constexpr size_t kWidth = 40;            // characters

    bool isWanted_;
    const std::function<size_t()>& messages_;
    bool isShown_ = false;
    size_t frames_ = 0;
    Clock::time_point next_ = Clock::now() + std::chrono::seconds(1);
};

CaptureInput::CaptureInput(const InputOptions& options, Unread& unread, CaptureWriter* writer,
                           bool hasProgress)
    : options_(options),
      unread_(unread),
      writer_(writer),
      hasProgress_(hasProgress && isatty(STDERR_FILENO) != 0),
      filter_(options.interface.empty() ? options.filter : "", unread) {
    if (isLive(options)) catchInterrupt();
}

bool CaptureInput::read(Network& network, const std::function<size_t()>& messages) {
    Progress progress(hasProgress_, messages);
    if (!options_.interface.empty()) return readOne(options_.interface, 0, network, progress);
    bool isGood = true;
    uint32_t index = 0;
    for (const std::string& name : options_.files)
        isGood &= readOne(name, index++, network, progress);
    return isGood;
}

bool CaptureInput::readOne(const std::string& name, uint32_t index, Network& network,
                           Progress& progress) {
    try {
        std::unique_ptr<FrameSource> source;
        if (!options_.interface.empty())
            source = std::make_unique<LiveCapture>(name, options_.filter, unread_);
        else
            source = std::make_unique<CaptureFile>(name, index);
        std::optional<unsigned> unknown;
        bool isKnown = false;
        for (Frame frame; source->next(frame);) {
            if (PacketReader::knows(frame.linkType))
                isKnown = true;
            else
                unknown = frame.linkType;
            if (!filter_.has(frame)) continue;
            if (writer_ != nullptr) writer_->read(frame);
            network.frame(frame);
            progress.show(*source);
        }
        if (unknown && !isKnown)
            throw BadCapture("link type " + linkTypeName(*unknown) + " is not supported");
        return true;
    } catch (const BadCapture& bad) {
        if (isInterrupted()) return true;  // the signal ended the input within a frame
        progress.clear();
        complain(name + ": " + bad.what());
        return false;
    }
}
