#include "capture_options.h"

#include <algorithm>
#include <charconv>
#include <filesystem>

namespace {

constexpr const char* kFooter =
    R"(Without options, the calls are listed, with the reason why each ended. With
CALL, the number of a call or the first digits of its identifier, the ladder
diagram of that call is shown. Captures are pcap or pcapng, also compressed by
gzip or zstd; - is standard input. Times are in UTC.
Exit status: 0, 1 if a message did not decode or a call was not found, 2 for
wrong use or a capture that cannot be read to its end.

Examples:
  tamsel-capture call.pcap
  tamsel-capture call.pcap 2)";

/// Digits of a call's number, at most. More digits are the beginning of an identifier.
constexpr size_t kMaxNumberDigits = 7;

/// Reduces a call identifier to its hex digits, in lower case. Returns what is wrong with it, or an
/// empty text.
std::string normalizeIdentifier(std::string& text) {
    std::erase_if(text, [](char c) { return c == '-' || c == ':' || c == ' '; });
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    const bool good = !text.empty() && text.size() <= 32 &&
                      text.find_first_not_of("0123456789abcdef") == std::string::npos;
    return good ? "" : "not 1 to 32 hex digits";
}

std::optional<Moment> momentOf(const char* option, const std::string& text) {
    const auto moment = readMoment(text);
    if (!moment && !text.empty())
        throw std::runtime_error(option + (" " + text) +
                                 ": a time is 2026-11-22T05:11:39 or 05:11:39");
    return moment;
}

bool isCallNumber(const std::string& text) {
    return text.size() <= kMaxNumberDigits && text[0] != '0' &&
           text.find_first_not_of("0123456789") == std::string::npos;
}

/// Moves the call from the arguments, which are otherwise files, to its option.
void takeCall(CaptureOptions& options) {
    bool hasCall = !options.call.empty();
    std::erase_if(options.input.files, [&](const std::string& file) {
        std::string name = file;
        if (file == "-" || std::filesystem::exists(file) || !normalizeIdentifier(name).empty())
            return false;
        if (hasCall) throw std::runtime_error(file + ": another call, or no such file");
        hasCall = true;
        if (isCallNumber(file))
            std::from_chars(file.data(), file.data() + file.size(), options.callNumber);
        else
            options.call = name;
        return true;
    });
}

/// An output must not overwrite a capture that is read.
void checkOutput(const char* option, const std::string& output, const InputOptions& input) {
    for (const std::string& file : input.files) {
        std::error_code ignored;
        if (std::filesystem::equivalent(file, output, ignored))
            throw std::runtime_error(
                std::string(option).append(" ").append(output).append(": this file is an input"));
    }
}

}  // namespace

void addCaptureOptions(CLI::App& app, CaptureOptions& options) {
    app.get_formatter()->column_width(22);
    app.add_flag("--list", options.list, "Show all messages, a line each");
    app.add_flag("--dump", options.dump, "Show the dumps of messages");
    app.add_flag("--calls", options.calls, "Show the calls, as without options");
    app.add_flag("--stats", options.stats, "Show totals: messages, response times, calls");
    auto* const json = app.add_flag("--json", options.json,
                                    "Show the messages, or with --calls the calls, as JSON");
    app.add_flag("--full", options.full, "With --json: add the dumps as paths and values")
        ->needs(json);
    app.add_option("-o", options.folder, "Write a file for each message, and index.tsv")
        ->type_name("DIR");
    app.add_option("-w", options.frames, "Write the frames of the messages to a new capture")
        ->type_name("FILE");
    app.add_option("--html", options.page, "Write a page that shows the calls in a browser")
        ->type_name("FILE");
    app.add_option("-i", options.input.interface, "Read an interface instead of files")
        ->type_name("IFACE");
    app.add_option("--filter", options.input.filter,
                   "Read only the frames that match (see pcap-filter)")
        ->type_name("BPF");
    app.add_option("--host", options.hosts, "Show only messages from or to these addresses")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->type_name("LIST");
    app.add_option("--message", options.names, "Show only these, such as setup,releaseComplete")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->type_name("LIST");
    app.add_option("--from", options.from, "Show only later ones: [2026-11-22T]05:11:39")
        ->type_name("TIME");
    app.add_option("--to", options.to, "Show only earlier ones")->type_name("TIME");
    app.add_option("--family", options.families, "Show only these families: ras,ui,h245")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->check(CLI::IsMember({"ras", "ui", "h245"}).description(""))
        ->type_name("LIST");
    app.add_option("--call", options.call, "Show one call, by the start of its identifier")
        ->transform(CLI::Validator(normalizeIdentifier, ""))
        ->type_name("ID");
    app.add_option("--port", options.ports, "Set what ports are for: 1730=ui,1731=none")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->type_name("LIST");
    app.add_option("--modules", options.modules,
                   "Decode with the modules of 2009 (default), or of 1998")
        ->check(CLI::IsMember({kTamsel2009.name, kTamsel1998.name}).description(""))
        ->type_name("SET");
    app.add_option("FILE", options.input.files, "The captures, in the order of their times")
        ->type_name("[CALL]");
    app.set_version_flag("--version", "tamsel-capture " TAMSEL_VERSION);
    app.footer(kFooter);
}

void finishCaptureOptions(CaptureOptions& options) {
    takeCall(options);
    const bool isShown =
        options.list || options.dump || options.stats || options.calls || options.json;
    if (options.frames == "-" && isShown)
        throw std::runtime_error("-w -: nothing else can be shown on standard output");
    const bool isLive = !options.input.interface.empty();
    if (options.input.files.empty() != isLive)
        throw std::runtime_error(isLive ? "-i: give an interface or files, not both"
                                        : "FILE is required");
    checkOutput("-w", options.frames, options.input);
    checkOutput("--html", options.page, options.input);
}

SelectionOptions selectionOf(const CaptureOptions& options) {
    SelectionOptions selection;
    std::erase_if(selection.families, [&](FamilyId family) {
        return std::ranges::find(options.families, nameOf(family)) == options.families.end();
    });
    for (const std::string& host : options.hosts) {
        const auto address = readAddress(host);
        if (!address) throw std::runtime_error("--host " + host + ": not an address");
        selection.hosts.insert(*address);
    }
    for (const std::string& name : options.names) selection.names.insert(lowerCase(name));
    selection.from = momentOf("--from", options.from);
    selection.to = momentOf("--to", options.to);
    return selection;
}

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
            throw std::runtime_error("--port " + text + ": a port is given as 1730=ui");
        ports[port] = purpose->second;
    }
    return ports;
}
