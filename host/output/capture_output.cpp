#include "capture_output.h"

#include <algorithm>

#include "text_format.h"

namespace {

constexpr size_t kMaxPairs = 16384;
constexpr size_t kHexLines = 4;  // of a message in the ladder
constexpr size_t kEndpointWidth = 21;
constexpr size_t kNumberWidth = 6;  // in file names
constexpr std::string_view kIndexHeader =
    "number\ttime\tsource\tdestination\ttransport\tfamily\tmessage\toctets\tdecoded\tfile\tframe\tc"
    "all\n";

/// What happened, for the ladder and in sum.
std::string describe(Remark what, size_t octets) {
    switch (what) {
        case Remark::kOctetsMissing:
            return counted(octets, "octet") + " missing in the capture";
        case Remark::kOctetsPassedOver:
            return counted(octets, "octet") + " passed over: no whole TPKT";
        case Remark::kOctetsAfter:
            return counted(octets, "octet") + " after a message, and no message";
        default:
            return "began before the capture";
    }
}

void appendPadded(std::string& text, std::string_view what, size_t width, bool right) {
    const size_t missing = what.size() < width ? width - what.size() : 0;
    if (right) text.append(missing, ' ');
    text += what;
    if (!right) text.append(missing, ' ');
}

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

CaptureOutput::CaptureOutput(Writer& writer, OutputOptions options)
    : writer_(writer), options_(std::move(options)), left_(kMaxPairs) {
    if (options_.files) writer_.index() += kIndexHeader;
}

void CaptureOutput::message(const CapturedMessage& message) {
    if (!options_.families.contains(message.family)) return;
    ++number_;
    ++shown_.at(static_cast<size_t>(message.family));
    proposals_ += message.transport == Transport::kFastStart;
    refused_ += message.outcome == Outcome::kRefused;
    bare_ += message.outcome == Outcome::kBare;
    if (options_.files) writeFile(message);
    if (options_.ladder)
        writeStep(message);
    else if (!options_.files)
        writeDump(message);
}

void CaptureOutput::remark(const CaptureRemark& remark) {
    Remarks& sum = remarks_.at(static_cast<size_t>(remark.what));
    ++sum.count;
    sum.octets += remark.octets;
    if (!options_.ladder) return;
    beginStep(remark.time, remark.flow);
    writer_.text() += "(" + describe(remark.what, remark.octets) + ")\n";
    writer_.toOutput();
}

/// One line of the ladder, and hex if there is nothing better.
void CaptureOutput::writeStep(const CapturedMessage& message) {
    beginStep(message.time, message.flow);
    std::string& text = writer_.text();
    appendPadded(text, nameOf(message.family), 6, false);
    text += message.name;
    if (message.transport == Transport::kTunnel) text += ", tunnelled";
    if (message.transport == Transport::kFastStart) text += ", proposed in fastStart";
    if (message.outcome == Outcome::kBare) text += ", without a user-user element";
    const bool hasCall = !message.call.isEmpty();
    if (hasCall) {
        text += "  (call ";
        appendHex(text, std::span(message.call.shown()).first(4));
    }
    if (message.q931 != nullptr) {
        text += hasCall ? ", " : "  (";
        message.q931->describe(text);
    }
    if (hasCall || message.q931 != nullptr) text += ')';
    if (message.outcome == Outcome::kRefused) text.append(": refused: ").append(message.reason);
    text += '\n';
    if (message.outcome == Outcome::kRefused || message.outcome == Outcome::kBare)
        appendHexLines(text, message.octets, "    ", kHexLines);
    writer_.toOutput();
}

/// The dump under a heading; octets in hex if there is none.
void CaptureOutput::writeDump(const CapturedMessage& message) {
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

/// A file with the dump, or with the octets in hex, and its line in the index.
void CaptureOutput::writeFile(const CapturedMessage& message) {
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

/// The time and the hosts of a line of the ladder.
void CaptureOutput::beginStep(Time time, const Flow& flow) {
    const auto pair = std::minmax(flow.source.address, flow.destination.address);
    const Address* left = left_.find(pair);
    if (left == nullptr) left_.put(pair, flow.source.address);
    const bool fromLeft = left == nullptr || *left == flow.source.address;
    std::string& text = writer_.text();
    appendTimeOfDay(text, time);
    text += "  ";
    appendPadded(text, toString(fromLeft ? flow.source : flow.destination), kEndpointWidth, true);
    text += fromLeft ? " ---> " : " <--- ";
    appendPadded(text, toString(fromLeft ? flow.destination : flow.source), kEndpointWidth, false);
    text += "  ";
}

std::string CaptureOutput::summary() const {
    std::string text = counted(messages(), "message") + ": " + std::to_string(shown_[0]) +
                       " ras, " + std::to_string(shown_[1]) + " ui, " + std::to_string(shown_[2]) +
                       " h245";
    if (proposals_ > 0) text += " (" + std::to_string(proposals_) + " in fastStart)";
    text += "; " + std::to_string(refused_) + " refused";
    if (bare_ > 0) text += "; " + std::to_string(bare_) + " without a user-user element";
    text += "\n";
    for (size_t i = 0; i < kRemarks; ++i) {
        const Remarks& sum = remarks_.at(i);
        if (sum.count == 0) continue;
        if (sum.octets == 0) text += counted(sum.count, "time") + ": ";
        text += describe(static_cast<Remark>(i), sum.octets) + "\n";
    }
    return text;
}
