#include "capture_output.h"

#include "text_format.h"

namespace {

constexpr size_t kNumberWidth = 6;  // digits in file names
constexpr std::string_view kIndexHeader =
    "number\ttime\tsource\tdestination\ttransport\tfamily\tmessage\toctets\tdecoded\tfile\tframe\tc"
    "all\n";

/// Number, time, addresses, transport, family and name: of a heading or of a line of the index.
void appendColumns(std::string& text, size_t number, const CapturedMessage& message, char separator,
                   std::string_view arrow) {
    appendDigits(text, static_cast<int64_t>(number));
    text += separator;
    appendDate(text, message.time);
    text += separator;
    appendText(text, message.flow.source);
    text += arrow;
    appendText(text, message.flow.destination);
    text += separator;
    text += toString(message.transport);
    text += separator;
    text += nameOf(message.family);
    text += separator;
    text += message.name;
}

/// Appends the dump, or the octets in hex if the message was not decoded.
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
    appendColumns(text, number_, message, ' ', " > ");
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

/// Writes a file with the dump or the octets, and its line of the index.
void FileView::message(const CapturedMessage& message, const MessageDetails& /*details*/,
                       const CallRecord* /*call*/) {
    ++number_;
    const bool isDecoded = message.outcome == Outcome::kDecoded;
    std::string file;
    appendDigits(file, static_cast<int64_t>(number_), kNumberWidth);
    file += '-';
    appendTimeOfDay(file, message.time, "");
    file.append("-").append(nameOf(message.family)).append("-").append(message.name);
    file += isDecoded ? ".txt" : ".hex";

    std::string& index = writer_.index();
    appendColumns(index, number_, message, '\t', "\t");
    index += '\t';
    appendDigits(index, static_cast<int64_t>(message.octets.size()));
    index.append(isDecoded ? "\tyes\t" : "\tno\t").append(file).append("\t");
    appendDigits(index, message.frame());
    index += '\t';
    if (!message.call.isEmpty()) appendHex(index, message.call.shown());
    index += '\n';

    appendContent(writer_.text(), message);
    writer_.toFile(std::move(file));
}
