// tamsel-capture: every H.323 message of a capture, as dumps, as files or as the ladder of the
// call.

#include <pcap/pcap.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <charconv>
#include <chrono>
#include <iostream>

#include "capture_file.h"
#include "capture_output.h"
#include "message_finder.h"
#include "writer.h"

namespace {

enum ExitCode { kDone = 0, kNotDecoded = 1, kWrongUse = 2 };

constexpr const char* kFooter =
    R"(Captures are pcap or pcapng, perhaps compressed by gzip or zstd; - is standard input. Found are
  RAS              UDP ports 1718 and 1719, and addresses that messages announce; elsewhere what
                   decodes exactly, and names its protocol or is answered
  call signalling  TCP port 1720, announced addresses, and streams that begin with TPKTs of Q.931
  H.245            announced addresses, streams between hosts of a call that begin with H.245, and
                   what call signalling tunnels or proposes in fastStart
Messages are read as ALIGNED, which is what H.323 sends. What does not decode is shown with its
name, the reason and its octets. Times are UTC.
Exit status: 0, 1 if a message did not decode or --call found nothing, 2 for wrong use or a capture
that cannot be read to its end.

Example:
  tamsel-capture --list call.pcap)";

/// Passed to the writing thread at a time, if nobody watches.
constexpr size_t kBatchOctets = 1 << 18;

/// What streams and fragments may hold together.
constexpr size_t kMaxHeld = 16 << 20;

struct Options {
    std::string folder;
    std::vector<std::string> families = {"ras", "ui", "h245"};
    std::string call;
    std::vector<std::string> ports;
    std::string modules = kTamsel2009.name;
    bool list = false;
    std::vector<std::string> files;
};

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
bool readCapture(const std::string& name, uint32_t index, Network& network,
                 const CaptureOutput& output, Progress& progress) {
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
            progress.show(file, output.messages());
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

void report(const CaptureOutput& output, const Unread& unread) {
    std::istringstream lines(output.summary());
    for (std::string line; std::getline(lines, line);) complain(line);
    for (const auto& [what, count] : unread.kinds())
        complain("not read: " + what + ": " + std::to_string(count));
}

/// The ports of --port, each as NUMBER=PURPOSE.
std::map<uint16_t, Purpose> portsOf(const std::vector<std::string>& texts) {
    const std::map<std::string, Purpose> kPurposes = {{"ras", Purpose::kRas},
                                                      {"ui", Purpose::kSignalling},
                                                      {"h245", Purpose::kH245},
                                                      {"none", Purpose::kNone}};
    std::map<uint16_t, Purpose> ports;
    for (const std::string& text : texts) {
        const size_t equals = std::min(text.find('='), text.size());
        uint16_t port = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + equals, port);
        const auto purpose = kPurposes.find(text.substr(std::min(equals + 1, text.size())));
        if (error != std::errc() || end != text.data() + equals || purpose == kPurposes.end())
            throw std::runtime_error("--port " + text + ": not as in 1730=ui");
        ports[port] = purpose->second;
    }
    return ports;
}

/// Makes the folder for -o. It has to be empty, so that it never holds messages of two captures.
void makeFolder(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    if (!std::filesystem::is_empty(folder))
        throw std::runtime_error(folder.string() + ": not an empty folder");
}

int run(const Options& options) {
    OutputOptions outputOptions{.files = !options.folder.empty(), .ladder = options.list};
    for (const FamilyId family : kFamilies)
        for (const std::string& name : options.families)
            if (name == nameOf(family)) outputOptions.families.insert(family);
    const FinderOptions finderOptions{
        options.call, portsOf(options.ports),
        options.modules == kTamsel1998.name ? &kTamsel1998 : &kTamsel2009};
    if (!options.folder.empty()) makeFolder(options.folder);

    const bool isWatched = isatty(STDOUT_FILENO) != 0 && (options.folder.empty() || options.list);
    Writer writer(options.folder, isWatched ? 0 : kBatchOctets);
    CaptureOutput output(writer, outputOptions);
    MemoryBudget budget(kMaxHeld);
    Unread unread;
    MessageFinder finder(output, budget, unread, finderOptions);
    Network network(finder, budget, unread);
    Progress progress(isWatched);
    int result = kDone;
    uint32_t index = 0;
    for (const std::string& file : options.files)
        if (!readCapture(file, index++, network, output, progress)) result = kWrongUse;
    network.end();
    writer.finish();
    progress.clear();
    report(output, unread);
    const bool isMissing = !options.call.empty() && output.messages() == 0;
    if (isMissing) complain("no message of call " + options.call);
    return result == kDone && (output.refused() > 0 || isMissing) ? kNotDecoded : result;
}

/// Takes a call identifier as people write it, and leaves its hex digits in lower case. Says what
/// is wrong with it, if anything is.
std::string asCallIdentifier(std::string& text) {
    std::erase_if(text, [](char c) { return c == '-' || c == ':' || c == ' '; });
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    const bool good = !text.empty() && text.size() <= 32 &&
                      text.find_first_not_of("0123456789abcdef") == std::string::npos;
    return good ? "" : "not 1 to 32 hex digits";
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Finds the H.323 messages in captures and dumps them as text.", "tamsel-capture");
    Options options;
    app.add_option("-o", options.folder, "Write a file a message, and index.tsv, into DIR")
        ->type_name("DIR");
    app.add_option("--family", options.families, "Show these families only: ras,ui,h245")
        ->delimiter(',')
        ->check(CLI::IsMember({"ras", "ui", "h245"}))
        ->type_name("LIST");
    app.add_option("--call", options.call,
                   "Show one call only, by the first digits of its callIdentifier or conferenceID")
        ->transform(CLI::Validator(asCallIdentifier, ""))
        ->type_name("ID");
    app.add_option("--port", options.ports,
                   "Tell what a port is for, as in 1730=ui: ras, ui, h245 or none")
        ->delimiter(',')
        ->type_name("LIST");
    app.add_option("--modules", options.modules,
                   "Decode with the modules of 2009 (default), or as Tamsel.dll does: 1998")
        ->check(CLI::IsMember({kTamsel2009.name, kTamsel1998.name}))
        ->type_name("SET");
    app.add_flag("--list", options.list, "Show the ladder of the call, a line a message");
    app.add_option("FILE", options.files, "The captures, in order of time")
        ->required()
        ->type_name("");
    app.set_version_flag("--version", "tamsel-capture " TAMSEL_VERSION);
    app.footer(kFooter);
    try {
        app.parse(argc, argv);
        return run(options);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kDone : kWrongUse;
    } catch (const std::exception& error) {
        complain(error.what());
        return kWrongUse;
    }
}
