// tamsel-capture: every H.323 message of a capture, as dumps, as files or as the ladder of the
// call.

#include <pcap/pcap.h>
#include <unistd.h>

#include <chrono>
#include <iostream>

#include "call_list.h"
#include "capture_file.h"
#include "capture_options.h"
#include "capture_output.h"
#include "ladder.h"
#include "message_finder.h"
#include "message_lines.h"
#include "presenter.h"
#include "tally.h"
#include "writer.h"

namespace {

enum ExitCode { kDone = 0, kNotDecoded = 1, kWrongUse = 2 };

/// Passed to the writing thread at a time, if nobody watches.
constexpr size_t kBatchOctets = 1 << 18;

/// What streams and fragments may hold together.
constexpr size_t kMaxHeld = 16 << 20;

std::string linkTypeName(unsigned linkType) {
    return pcap_datalink_val_to_description_or_dlt(static_cast<int>(linkType));
}

void complain(const std::string& text) {
    std::cerr << "tamsel-capture: " << text << "\n";
}

/// A bar on the terminal, once reading has taken a second, unless the output goes there too.
class Progress {
  public:
    explicit Progress(bool isOutputThere)
        : isWanted_(!isOutputThere && isatty(STDERR_FILENO) != 0) {}

    void show(const CaptureFile& file, size_t messages) {
        if (!isWanted_ || ++calls_ % kCallsPerLook != 0) return;
        const auto now = Clock::now();
        if (now < next_) return;
        next_ = now + std::chrono::milliseconds(200);
        const double part = file.progress();
        std::string bar(part >= 0 ? static_cast<size_t>(part * kWidth) : 0, '#');
        bar.resize(kWidth, '.');
        std::cerr << "\r[" << bar << "] " << messages << " messages" << std::flush;
        isShown_ = true;
    }
    void clear() {
        if (isShown_) std::cerr << "\r\x1B[K" << std::flush;
    }

  private:
    using Clock = std::chrono::steady_clock;
    static constexpr size_t kCallsPerLook = 1024;
    static constexpr size_t kWidth = 40;

    bool isWanted_;
    bool isShown_ = false;
    size_t calls_ = 0;
    Clock::time_point next_ = Clock::now() + std::chrono::seconds(1);
};

/// Reads one capture as far as it goes. Returns false if it is damaged, or nothing in it can be
/// read, and says so.
bool readCapture(const std::string& name, uint32_t index, Network& network, const Tally& tally,
                 Progress& progress) {
    try {
        CaptureFile file(name, index);
        std::optional<unsigned> unknown;
        bool isKnown = false;
        for (Frame frame; file.next(frame);) {
            if (PacketReader::knows(frame.linkType))
                isKnown = true;
            else
                unknown = frame.linkType;
            network.frame(frame);
            progress.show(file, tally.messages());
        }
        if (unknown && !isKnown)
            throw BadCapture("link type " + linkTypeName(*unknown) + " is not supported");
        return true;
    } catch (const BadCapture& bad) {
        progress.clear();
        complain(name + ": " + bad.what());
        return false;
    }
}

void report(const std::string& summary, const Unread& unread) {
    std::istringstream lines(summary);
    for (std::string line; std::getline(lines, line);) complain(line);
    for (const auto& [what, count] : unread.kinds())
        complain("not read: " + what + ": " + std::to_string(count));
}

/// Makes the folder for -o. It has to be empty, so that it never holds messages of two captures.
void makeFolder(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    if (!std::filesystem::is_empty(folder))
        throw std::runtime_error(folder.string() + ": not an empty folder");
}

/// The views that were asked for: files; and dumps, lines, a diagram or the list of calls.
std::vector<std::unique_ptr<View>> viewsOf(const CaptureOptions& options, Writer& writer,
                                           const Screen& screen) {
    std::vector<std::unique_ptr<View>> views;
    const bool hasCall = options.callNumber > 0 || !options.call.empty();
    if (!options.folder.empty()) views.push_back(std::make_unique<FileView>(writer));
    if (options.dump)
        views.push_back(std::make_unique<DumpView>(writer));
    else if (options.list)
        views.push_back(std::make_unique<MessageLines>(writer, screen));
    else if (options.folder.empty() && hasCall)
        views.push_back(std::make_unique<Ladder>(writer, screen));
    else if (options.folder.empty())
        views.push_back(std::make_unique<CallList>(writer, screen));
    return views;
}

int run(const CaptureOptions& options) {
    const TamselModules* const modules =
        options.modules == kTamsel1998.name ? &kTamsel1998 : &kTamsel2009;
    if (!options.folder.empty()) makeFolder(options.folder);

    const bool isWritten = options.folder.empty() || options.list || options.dump;
    const bool isWatched = isatty(STDOUT_FILENO) != 0 && isWritten;
    Writer writer(options.folder, isWatched ? 0 : kBatchOctets);
    const Screen screen = Screen::ofOutput();
    Tally tally;
    const auto owned = viewsOf(options, writer, screen);
    std::vector<View*> views = {&tally};
    for (const auto& view : owned) views.push_back(view.get());
    Presenter presenter({.modules = modules,
                         .families = familiesOf(options.families),
                         .callNumber = options.callNumber},
                        views);
    MemoryBudget budget(kMaxHeld);
    Unread unread;
    MessageFinder finder(presenter, budget, unread,
                         {options.call, portsOf(options.ports), modules});
    Network network(finder, budget, unread);
    Progress progress(isWatched);
    int result = kDone;
    uint32_t index = 0;
    for (const std::string& file : options.files)
        if (!readCapture(file, index++, network, tally, progress)) result = kWrongUse;
    network.end();
    presenter.end();
    writer.finish();
    progress.clear();
    report(tally.summary(), unread);
    const bool hasCall = options.callNumber > 0 || !options.call.empty();
    const bool isMissing = hasCall && tally.messages() == 0;
    if (isMissing)
        complain("no message of call " +
                 (options.call.empty() ? std::to_string(options.callNumber) : options.call));
    return result == kDone && (tally.refused() > 0 || isMissing) ? kNotDecoded : result;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Finds the H.323 messages in captures and dumps them as text.", "tamsel-capture");
    CaptureOptions options;
    addCaptureOptions(app, options);
    try {
        app.parse(argc, argv);
        finishCaptureOptions(options);
        return run(options);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kDone : kWrongUse;
    } catch (const std::exception& error) {
        complain(error.what());
        return kWrongUse;
    }
}
