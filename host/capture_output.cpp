#include "capture_output.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>

#include "hex_text.h"

namespace {

constexpr size_t kMaxPairs = 65536;
constexpr size_t kOutputBuffer = 1 << 16;
constexpr std::string_view kIndexHeader =
    "number\ttime\tsource\tdestination\ttransport\tfamily\tmessage\toctets\tdecoded\tfile\n";

/// Decimal digits, zeros in front.
std::string digits(int64_t value, size_t width) {
    std::string text(width, '0');
    for (size_t i = width; i-- > 0; value /= 10) text[i] = static_cast<char>('0' + value % 10);
    return text;
}

/// "12:00:00.000000", UTC; another mark than the colon, or none, between.
std::string timeOfDay(Time time, std::string_view mark = ":") {
    const int64_t seconds = time / 1000000;
    std::string text = digits(seconds / 3600 % 24, 2);
    for (const int64_t part : {seconds / 60 % 60, seconds % 60})
        text.append(mark) += digits(part, 2);
    return text + "." + digits(time % 1000000, 6);
}

std::string dateOf(Time time) {
    using std::chrono::floor, std::chrono::days;
    const std::chrono::sys_time<std::chrono::microseconds> at{std::chrono::microseconds(time)};
    const std::chrono::year_month_day date(floor<days>(at));
    return digits(int{date.year()}, 4) + "-" + digits(unsigned{date.month()}, 2) + "-" +
           digits(unsigned{date.day()}, 2) + "T" + timeOfDay(time) + "Z";
}

std::string padded(std::string text, size_t width, bool right = false) {
    if (text.size() < width) text.insert(right ? 0 : text.size(), width - text.size(), ' ');
    return text;
}

std::string counted(size_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string_view nameOf(const CapturedMessage& message) {
    return message.isRefused() ? "refused" : message.name;
}

/// What happened, for the ladder and in sum.
std::string describe(Remark what, size_t octets) {
    switch (what) {
        case Remark::kOctetsMissing:
            return counted(octets, "octet") + " missing in the capture";
        case Remark::kOctetsPassedOver:
            return counted(octets, "octet") + " passed over: no whole TPKT";
        case Remark::kStartsMidway:
            return "began before the capture";
        default:
            return "Q.931 without a user-user element";
    }
}

}  // namespace

CaptureOutput::CaptureOutput(OutputOptions options)
    : options_(std::move(options)), left_(kMaxPairs) {
    if (isatty(fileno(out_)) == 0) std::setvbuf(out_, nullptr, _IOFBF, kOutputBuffer);
    if (options_.folder.empty()) return;
    index_.open(options_.folder / "index.tsv", std::ios::binary);
    index_ << kIndexHeader;
}

CaptureOutput::~CaptureOutput() {
    if (out_ != stderr) std::fclose(out_);
}

void CaptureOutput::message(const CapturedMessage& message) {
    if (!options_.families.contains(message.family)) return;
    ++number_;
    if (message.transport == Transport::kFastStart)
        ++proposals_;
    else
        ++shown_.at(message.family == &kRas ? 0 : message.family == &kUi ? 1 : 2);
    if (message.isRefused()) ++refused_;

    if (!options_.folder.empty()) writeFile(message);
    if (options_.ladder) {
        std::string what(message.family->name);
        what = padded(what, 6) + std::string(nameOf(message));
        if (message.transport == Transport::kTunnel) what += ", tunnelled";
        if (message.transport == Transport::kFastStart)
            what += ", proposed in fastStart, " + counted(message.octets.size(), "octet");
        if (!message.call.empty() && message.dump)
            what += "  (call " + std::string(message.call.substr(0, 8)) + ")";
        if (message.isRefused()) what += ": " + formatHex(message.octets);
        writeStep(message.time, message.flow, what);
    } else if (options_.folder.empty()) {
        writeDump(message);
    }
}

void CaptureOutput::remark(const CaptureRemark& remark) {
    Remarks& sum = remarks_.at(static_cast<size_t>(remark.what));
    ++sum.count;
    sum.octets += remark.octets;
    if (options_.ladder)
        writeStep(remark.time, remark.flow, "(" + describe(remark.what, remark.octets) + ")");
}

/// The dump under a heading; octets in hex where there is none.
void CaptureOutput::writeDump(const CapturedMessage& message) {
    std::string heading = "==> " + std::to_string(number_) + " " + dateOf(message.time) + " " +
                          toString(message.flow.source) + " > " +
                          toString(message.flow.destination) + " ";
    heading += toString(message.transport);
    heading += " " + std::string(message.family->name) + " " + std::string(nameOf(message)) + ", ";
    write(heading + counted(message.octets.size(), "octet") + " <==\n");
    write(message.dump ? *message.dump : formatHex(message.octets) + "\n");
}

/// A file with the dump, or with the octets in hex, and its line in the index.
void CaptureOutput::writeFile(const CapturedMessage& message) {
    const std::string name(nameOf(message));
    std::string file = padded(std::to_string(number_), 6, true);
    std::replace(file.begin(), file.end(), ' ', '0');
    file += "-" + timeOfDay(message.time, "") + "-" + std::string(message.family->name) + "-" +
            name + (message.dump ? ".txt" : ".hex");
    FILE* const out = std::fopen((options_.folder / file).c_str(), "wb");
    if (out == nullptr) throw std::runtime_error(file + ": cannot be written");
    std::setvbuf(out, nullptr, _IONBF, 0);
    const std::string hex = message.dump ? "" : formatHex(message.octets) + "\n";
    const std::string_view text = message.dump ? *message.dump : hex;
    const bool written = std::fwrite(text.data(), 1, text.size(), out) == text.size();
    if (std::fclose(out) != 0 || !written) throw std::runtime_error(file + ": writing failed");
    index_ << number_ << '\t' << dateOf(message.time) << '\t' << toString(message.flow.source)
           << '\t' << toString(message.flow.destination) << '\t' << toString(message.transport)
           << '\t' << message.family->name << '\t' << name << '\t' << message.octets.size() << '\t'
           << (message.dump ? "yes" : "no") << '\t' << file << '\n';
    if (!index_) throw std::runtime_error("index.tsv: cannot be written");
}

/// One line of the ladder.
void CaptureOutput::writeStep(Time time, const Flow& flow, const std::string& what) {
    const auto host = [](Endpoint endpoint) {
        endpoint.port = 0;
        return endpoint;
    };
    const Endpoint source = host(flow.source);
    const Endpoint destination = host(flow.destination);
    const auto pair = std::minmax(source, destination);
    if (left_.find(pair) == nullptr) left_.put(pair, source);
    const bool fromLeft = *left_.find(pair) == source;
    write(timeOfDay(time) + "  " +
          padded(toString(fromLeft ? flow.source : flow.destination), 21, true) +
          (fromLeft ? " ---> " : " <--- ") +
          padded(toString(fromLeft ? flow.destination : flow.source), 21) + "  " + what + "\n");
}

void CaptureOutput::write(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), out_) != text.size())
        throw std::runtime_error("standard output: writing failed");
}

void CaptureOutput::finish() {
    if (std::fflush(out_) != 0) throw std::runtime_error("standard output: writing failed");
    index_.flush();
    if (!index_) throw std::runtime_error("index.tsv: cannot be written");
}

std::string CaptureOutput::summary() const {
    std::string text = counted(messages(), "message") + ": " + std::to_string(shown_[0]) +
                       " ras, " + std::to_string(shown_[1]) + " ui, " + std::to_string(shown_[2]) +
                       " h245; " + std::to_string(refused_) + " refused";
    if (proposals_ > 0) text += "; " + counted(proposals_, "fastStart proposal");
    text += "\n";
    for (size_t i = 0; i < kRemarks; ++i) {
        const Remarks& sum = remarks_.at(i);
        if (sum.count == 0) continue;
        if (sum.octets == 0) text += counted(sum.count, "time") + ": ";
        text += describe(static_cast<Remark>(i), sum.octets) + "\n";
    }
    return text;
}
