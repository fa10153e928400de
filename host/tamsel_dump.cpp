// tamsel-dump: reads messages from files or standard input, and writes their dumps to a file or to
// standard output.

#include <CLI/CLI.hpp>
#include <iostream>

#include "TamselCore.h"
#include "dump_output.h"
#include "message_input.h"

namespace {

enum ExitCode { kDone = 0, kNotDecoded = 1, kWrongUse = 2 };

constexpr const char* kFooter =
    R"(FAMILY: ras (H.225.0 RAS), ui (H.225.0 call signalling) or h245 (H.245)
Input: octets, or hex text: pairs of digits, one message a line; a hex dump of
Wireshark or xxd; C arrays; escaped strings.
Exit status: 0, 1 if a message did not decode, 2 for wrong use or bad input.
Example: echo 01 00 00 80 92 4F D5 | tamsel-dump h245)";

struct Options {
    bool unaligned = false;
    bool fields = false;
    bool check = false;
    InputOptions input;
    std::string output;
    std::string modules = kTamsel2009.name;
    std::string family;
    std::vector<std::string> files;
};

/// The family that the options name, in the set of modules that they name.
const TamselFamily& findFamily(const Options& options) {
    const TamselModules& modules = options.modules == kTamsel1998.name ? kTamsel1998 : kTamsel2009;
    if (options.family == modules.ras.name) return modules.ras;
    return options.family == modules.ui.name ? modules.ui : modules.h245;
}

void complain(const std::string& text) {
    std::cerr << "tamsel-dump: " << text << "\n";
}

std::string count(size_t octets) {
    return std::to_string(octets) + (octets == 1 ? " octet" : " octets");
}

class Dumper {
  public:
    explicit Dumper(const Options& options)
        : options_(options), family_(findFamily(options)), output_(options.output) {}

    ExitCode run() {
        for (const std::string& file : options_.files) {
            try {
                const std::vector<InputMessage> messages = readMessages(file, options_.input);
                const bool several = messages.size() > 1 || options_.files.size() > 1;
                for (const InputMessage& message : messages) take(message, several);
            } catch (const BadInput& bad) {
                complain(bad.what());
                result_ = kWrongUse;
            }
        }
        return result_;
    }

  private:
    void take(const InputMessage& message, bool underHeading) {
        const bool decodes = decode(message.octets);
        if (!decodes) result_ = std::max(result_, kNotDecoded);
        if (options_.check) {
            output_.line(message.name + ": " +
                         (decodes ? "decodes, " + size(message) : failure(message)));
        } else {
            if (decodes || options_.fields) print(message, underHeading);
            if (!decodes)
                complain(message.name + ": " + failure(message));
            else if (decoder_.octets() < message.octets.size())
                complain(message.name + ": the message takes " + size(message));
        }
        const bool isWhole = decodes && decoder_.octets() == message.octets.size();
        if (!isWhole && !options_.input.strips &&
            looksWrapped(message.octets, options_.input.hasQ931))
            complain("hint: these octets begin like " +
                     std::string(message.octets[0] == 3 ? "TPKT" : "Q.931") +
                     "; --strip removes it");
    }

    bool decode(const Octets& octets) {
        const bool aligned = !options_.unaligned;
        if (!options_.fields && decoder_.decode(family_, octets, aligned) == kAsnOk) return true;
        return decoder_.decodeTraced(family_, octets, aligned) == kAsnOk;
    }

    void print(const InputMessage& message, bool underHeading) {
        if (underHeading) output_.line("==> " + message.name + " <==");
        const AsnDumpSink sink = output_.sink();
        if (options_.fields)
            decoder_.printFields(sink);
        else
            decoder_.print(sink, output_.isTerminal());
        output_.flush();
    }

    /// The number of octets that the message takes: "7 octets", "7 of 9 octets".
    std::string size(const InputMessage& message) const {
        const size_t all = message.octets.size();
        const size_t taken = decoder_.octets();
        return (taken < all ? std::to_string(taken) + " of " : "") + count(all);
    }

    /// Why the message does not decode, on one line.
    std::string failure(const InputMessage& message) const {
        char text[200];
        const AsnBitFieldLink* const last = decoder_.fields().tail;
        return std::string("no ") + family_.title + " message" +
               (options_.unaligned ? " (UNALIGNED)" : "") + ": " +
               asnErrorText(decoder_.errors(), text, sizeof text) + " (status " +
               std::to_string(decoder_.status()) + ") at bit " +
               std::to_string(decoder_.bitPosition()) + ", " +
               count(message.octets.size() - decoder_.octets()) + " left" +
               (last == nullptr              ? ""
                : last->field->bitCount == 0 ? ", in "
                                             : ", after ") +
               (last == nullptr ? "" : last->field->name);
    }

    const Options& options_;
    const TamselFamily& family_;
    DumpOutput output_;
    TamselDecoder decoder_;
    ExitCode result_ = kDone;
};

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Dumps encoded H.323 signalling messages as text.", "tamsel-dump");
    Options options;
    app.add_flag("--unaligned", options.unaligned, "The messages are in the UNALIGNED PER variant");
    app.add_option("--modules", options.modules, "2009 (default), or 1998, which Tamsel.dll uses")
        ->check(CLI::IsMember({kTamsel2009.name, kTamsel1998.name}))
        ->type_name("SET");
    app.add_flag("--check", options.check, "Print only whether each message decodes");
    app.add_flag("--fields", options.fields, "Print the bit fields instead of the values")
        ->excludes("--check");
    app.add_flag("--join", options.input.joined, "All lines of a hex text are one message");
    app.add_flag("--strip", options.input.strips, "Remove TPKT and Q.931 around the messages");
    app.add_option("-o", options.output, "Write to FILE")->type_name("FILE");
    app.add_option("FAMILY", options.family, "The family of the messages")
        ->required()
        ->check(CLI::IsMember({"ras", "ui", "h245"}))
        ->type_name("");
    app.add_option("FILE", options.files, "The messages; - is standard input, the default")
        ->type_name("");
    app.set_version_flag("--version", "tamsel-dump " TAMSEL_VERSION);
    app.footer(kFooter);
    try {
        app.parse(argc, argv);
        if (options.files.empty()) options.files.push_back("-");
        options.input.hasQ931 = options.family == "ui";
        return Dumper(options).run();
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kDone : kWrongUse;
    } catch (const std::exception& error) {
        complain(error.what());
        return kWrongUse;
    }
}
