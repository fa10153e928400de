// tamsel-capture: shows the H.323 calls and messages of a capture: as lists, ladder diagrams,
// dumps, JSON, files or a page.

#include <unistd.h>

#include <iostream>

#include "call_list.h"
#include "capture_input.h"
#include "capture_options.h"
#include "capture_output.h"
#include "capture_writer.h"
#include "html_report.h"
#include "json_lines.h"
#include "ladder.h"
#include "message_finder.h"
#include "message_lines.h"
#include "presenter.h"
#include "stats.h"
#include "tally.h"
#include "text_format.h"
#include "writer.h"

namespace {

enum ExitCode { kDone = 0, kNotDecoded = 1, kWrongUse = 2 };

/// Octets that are passed to the writing thread at once. A terminal and live input get each piece
/// without delay.
constexpr size_t kBatchOctets = 1 << 18;

/// Octets that all streams and fragments may hold together.
constexpr size_t kMaxHeld = 16 << 20;

/// Octets of frames that are kept for -w if the input cannot be read again.
constexpr size_t kMaxFrames = 64 << 20;

bool hasCall(const CaptureOptions& options) {
    return options.callNumber > 0 || !options.call.empty();
}

/// Writes the summary to standard error. Returns the exit status.
ExitCode summarize(const CaptureOptions& options, const Tally& tally, const Unread& unread,
                   size_t missingFrames) {
    std::istringstream lines(tally.summary());
    for (std::string line; std::getline(lines, line);) complain(line);
    for (const auto& [what, count] : unread.kinds())
        complain("not read: " + what + ": " + std::to_string(count));
    if (missingFrames > 0)
        complain("not written: " + counted(missingFrames, "frame") + " from too long before");
    const bool isMissing = hasCall(options) && tally.messages() == 0;
    if (isMissing)
        complain("no message of call " +
                 (options.call.empty() ? std::to_string(options.callNumber) : options.call));
    return tally.refused() > 0 || isMissing ? kNotDecoded : kDone;
}

/// Makes the folder for -o. It must be empty, so that it never has messages of two runs.
void makeFolder(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    if (!std::filesystem::is_empty(folder))
        throw std::runtime_error(folder.string() + ": not an empty folder");
}

/// The views that the options ask for. Files, totals and the page are in addition to at most one of
/// the others.
std::vector<std::unique_ptr<View>> viewsOf(const CaptureOptions& options,
                                           const TamselModules& modules, Writer& writer,
                                           const Screen& screen) {
    std::vector<std::unique_ptr<View>> views;
    if (!options.folder.empty()) views.push_back(std::make_unique<FileView>(writer));
    if (options.stats) views.push_back(std::make_unique<Stats>(writer));
    if (!options.page.empty()) {
        std::vector<std::string> captures = options.input.files;
        if (captures.empty()) captures.push_back(options.input.interface);
        views.push_back(std::make_unique<HtmlReport>(options.page, captures, modules));
    }
    const bool isQuiet = options.stats || !options.folder.empty() || !options.frames.empty() ||
                         !options.page.empty();
    const bool isDefault = !isQuiet && !options.list && !options.dump;
    const bool isInterface = !options.input.interface.empty();
    if (options.json && options.calls)
        views.push_back(std::make_unique<JsonCalls>(writer));
    else if (options.json)
        views.push_back(std::make_unique<JsonMessages>(writer, options.full));
    else if (options.calls || (isDefault && !hasCall(options) && !isInterface))
        views.push_back(std::make_unique<CallList>(writer, screen));
    else if (options.dump)
        views.push_back(std::make_unique<DumpView>(writer));
    else if (options.list || (isDefault && isInterface))
        views.push_back(std::make_unique<MessageLines>(writer, screen));
    else if (isDefault)
        views.push_back(std::make_unique<Ladder>(writer, screen));
    return views;
}

ExitCode run(const CaptureOptions& options) {
    const TamselModules* const modules =
        options.modules == kTamsel1998.name ? &kTamsel1998 : &kTamsel2009;
    const SelectionOptions selection = selectionOf(options);
    const auto ports = portsOf(options.ports);
    if (!options.folder.empty()) makeFolder(options.folder);

    const bool isPrinted =
        options.folder.empty() || options.list || options.dump || options.calls || options.json;
    const bool isWatched = isatty(STDOUT_FILENO) != 0 && isPrinted;
    const bool isAtOnce = isLive(options.input);
    Writer writer(options.folder, isWatched || isAtOnce ? 0 : kBatchOctets);
    const Screen screen = Screen::ofOutput();
    Tally tally;
    const auto owned = viewsOf(options, *modules, writer, screen);
    std::vector<View*> views = {&tally};
    for (const auto& view : owned) views.push_back(view.get());
    std::optional<CaptureWriter> frames;
    if (!options.frames.empty())
        views.push_back(
            &frames.emplace(options.frames, canReadAgain(options.input) ? 0 : kMaxFrames));
    Presenter presenter(
        {.modules = modules, .selection = selection, .callNumber = options.callNumber}, views);
    MemoryBudget budget(kMaxHeld);
    Unread unread;
    MessageFinder finder(presenter, budget, unread, {options.call, ports, modules});
    Network network(finder, budget, unread);
    CaptureInput input(options.input, unread, frames ? &*frames : nullptr, !isWatched);
    const bool isRead = input.read(network, [&tally] { return tally.messages(); });
    network.end();
    presenter.end();
    writer.finish();
    if (frames) frames->finish(options.input.files);
    const ExitCode result = summarize(options, tally, unread, frames ? frames->missing() : 0);
    if (!isRead) return kWrongUse;
    return result;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Finds the H.323 calls and messages in captures.", "tamsel-capture");
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
