#include "capture_output.h"

#include "text_format.h"

namespace {

constexpr size_t kNumberWidth = 6;  // in file names
constexpr std::string_view kIndexHeader =
    "number\ttime\tsource\tdestination\ttransport\tfamily\tmessage\toctets\tdecoded\tfile\tframe\tc"
    "all\n";

/// How a dump gets into a text.
AsnDumpSink sinkOf(std::string& text) {
    return {[](void* target, const char* piece, size_t size) {
                static_cast<std::string*>(target)->append(piece, size);
            },
            &text};
}

/// The dump, or the octets in hex if there is none.
void appendContent(std::string& text, const CapturedMessage& message) {
    if (message.outcome == Outcome::kDecoded) {
        message.decoder->print(sinkOf(text));
        return;
    }
    appendHex(text, message.octets);
    text += '\n';
}

}  // namespace

void DumpView::message(const CapturedMessage& message, const MessageDetails& /*details*/,
                       const CallRecord* /*call*/) {
    ++number_;
    std::string& text = writer_.text();
    text += "==> ";
    appendDigits(text, static_cast<int64_t>(number_));
    text += ' ';
    appendDate(text, message.time);
    text += ' ';
    appendText(text, message.flow.source);
    text += " > ";
    appendText(text, message.flow.destination);
    text += ' ';
    text += toString(message.transport);
    text += ' ';
    text += nameOf(message.family);
    text += ' ';
    text += message.name;
    text += ", " + counted(message.octets.size(), "octet");
    if (message.q931 != nullptr) {
        text += ", ";
        message.q931->describe(text);
    }
    if (message.outcome == Outcome::kRefused) text.append(", refused: ").append(message.reason);
    text += " <==\n";
    appendContent(text, message);
    writer_.toOutput();
}

FileView::FileView(Writer& writer) : writer_(writer) {
    writer_.index() += kIndexHeader;
}

/// A file with the dump, or with the octets in hex, and its line in the index.
void FileView::message(const CapturedMessage& message, const MessageDetails& /*details*/,
                       const CallRecord* /*call*/) {
    ++number_;
    const bool isDecoded = message.outcome == Outcome::kDecoded;
    const std::string_view family = nameOf(message.family);
    std::string file;
    appendDigits(file, static_cast<int64_t>(number_), kNumberWidth);
    file += '-';
    appendTimeOfDay(file, message.time, "");
    file.append("-").append(family).append("-").append(message.name);
    file += isDecoded ? ".txt" : ".hex";

    std::string& index = writer_.index();
    appendDigits(index, static_cast<int64_t>(number_));
    index += '\t';
    appendDate(index, message.time);
    index += '\t';
    appendText(index, message.flow.source);
    index += '\t';
    appendText(index, message.flow.destination);
    index += '\t';
    index.append(toString(message.transport)).append("\t").append(family).append("\t");
    index.append(message.name).append("\t");
    appendDigits(index, static_cast<int64_t>(message.octets.size()));
    index.append(isDecoded ? "\tyes\t" : "\tno\t").append(file).append("\t");
    appendDigits(index, message.frame());
    index += '\t';
    if (!message.call.isEmpty()) appendHex(index, message.call.shown());
    index += '\n';

    appendContent(writer_.text(), message);
    writer_.toFile(std::move(file));
}
