// tamsel-dump: messages from files or standard input, their dumps to a file or standard output.

#include <CLI/CLI.hpp>
#include <fstream>
#include <iostream>
#include <iterator>

#include "hex_text.h"
#include "message_dump.h"

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#endif

namespace {

enum ExitCode { kDone = 0, kNotDecoded = 1, kWrongUse = 2 };

constexpr const char* kFooter = R"(FAMILY is one of
  ras   H.225.0 RAS messages
  ui    H.225.0 call signalling (H323-UserInformation)
  h245  H.245 control messages

Input is octets or hex text; blanks, colons and 0x may stand between octets.
Exit status: 0, 1 if a message did not decode, 2 for wrong use.

Example:
  echo 01 00 00 80 92 4F D5 | tamsel-dump h245)";

struct WrongUse : std::runtime_error {
    using runtime_error::runtime_error;
};

struct Options {
    bool unaligned = false;
    std::string output;
    std::string family;
    std::vector<std::string> files;
};

std::string readInput(const std::string& file) {
    if (file == "-") {
#if defined(_WIN32)
        _setmode(_fileno(stdin), _O_BINARY);
#endif
        return {std::istreambuf_iterator<char>(std::cin), {}};
    }
    std::ifstream in(file, std::ios::binary);
    std::string text(std::istreambuf_iterator<char>(in), {});
    if (!in) throw WrongUse(file + ": cannot be read");
    return text;
}

Octets readMessage(const std::string& file) {
    const std::string input = readInput(file);
    const std::string name = file == "-" ? "standard input" : file;
    Octets octets(input.begin(), input.end());
    try {
        if (isText(input)) octets = parseHex(input);
    } catch (const BadHex& bad) {
        throw WrongUse(name + ": " + bad.what());
    }
    if (octets.empty()) throw WrongUse(name + ": no message");
    if (octets.size() > kMaxMessageOctets)
        throw WrongUse(name + ": " + std::to_string(octets.size()) +
                       " octets are over the limit of " + std::to_string(kMaxMessageOctets));
    return octets;
}

/// Where dumps go: opened with the first one, so that a message that does not decode leaves an
/// existing file alone.
class Output {
  public:
    explicit Output(std::string file) : file_(std::move(file)), stream_(nullptr) {
        if (file_.empty()) stream_ = standard_;
    }
    ~Output() {
        if (stream_ != nullptr && stream_ != standard_) std::fclose(stream_);
        std::fflush(standard_);
    }
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    void write(std::string_view text) {
        if (stream_ == nullptr) stream_ = std::fopen(file_.c_str(), "w");
        if (stream_ == nullptr) throw WrongUse(file_ + ": cannot be written");
        if (std::fwrite(text.data(), 1, text.size(), stream_) != text.size() ||
            std::fflush(stream_) != 0)
            throw WrongUse((file_.empty() ? "standard output" : file_) + ": writing failed");
    }

  private:
    std::string file_;
    FILE* standard_ = keepStandardOutput();
    FILE* stream_;
};

int run(const Options& options) {
    const Family& family = *findFamily(options.family);
    Output output(options.output);
    MessageDumper dumper;
    int result = kDone;
    for (const std::string& file : options.files) {
        const Octets message = readMessage(file);
        const auto text = dumper.dump(family, message, !options.unaligned);
        if (!text) {
            std::cerr << "tamsel-dump: " << file << ": no " << family.title << " message ("
                      << (options.unaligned ? "UNALIGNED" : "ALIGNED") << ")\n";
            result = kNotDecoded;
            continue;
        }
        if (options.files.size() > 1) output.write("==> " + file + " <==\n");
        output.write(*text);
    }
    return result;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Dumps encoded H.323 signalling messages as text.", "tamsel-dump");
    Options options;
    app.add_flag("--unaligned", options.unaligned, "The messages are in the UNALIGNED PER variant");
    app.add_option("-o", options.output, "Write the dumps to FILE")->type_name("FILE");
    app.add_option("FAMILY", options.family, "The family of the messages")
        ->required()
        ->check(CLI::IsMember({"ras", "ui", "h245"}))
        ->type_name("");
    app.add_option("FILE", options.files,
                   "The messages, one a file; - is standard input, the default")
        ->type_name("");
    app.set_version_flag("--version", "tamsel-dump " TAMSEL_VERSION);
    app.footer(kFooter);
    try {
        app.parse(argc, argv);
        if (options.files.empty()) options.files.push_back("-");
        return run(options);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kDone : kWrongUse;
    } catch (const std::exception& error) {
        std::cerr << "tamsel-dump: " << error.what() << "\n";
        return kWrongUse;
    }
}
