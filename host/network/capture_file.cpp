#include "capture_file.h"

#include <pcap/pcap.h>

#include <algorithm>
#include <array>

namespace {

/// The last microsecond of the year 9999. A later year has more than four digits.
constexpr Time kLatest = 253'402'300'799'999'999;

}  // namespace

void CaptureFile::Close::operator()(pcap* file) const {
    pcap_close(file);
}

/// Reads for libpcap. No exception may pass through libpcap, because it is written in C.
ssize_t CaptureFile::readForPcap(void* file, char* to, size_t size) {
    auto& capture = *static_cast<CaptureFile*>(file);
    try {
        return static_cast<ssize_t>(capture.input_.read(reinterpret_cast<uint8_t*>(to), size));
    } catch (const std::exception& error) {
        capture.error_ = error.what();
        return -1;
    }
}

CaptureFile::CaptureFile(const std::string& name, uint32_t index)
    : input_(name), id_{.file = index} {
    if (PcapngReader::recognises(input_.start())) {
        pcapng_ = std::make_unique<PcapngReader>(input_);
        return;
    }
    FILE* const stream =
        fopencookie(this, "r", {.read = readForPcap, .write = {}, .seek = {}, .close = {}});
    if (stream == nullptr) throw BadCapture("cannot be opened");
    std::array<char, PCAP_ERRBUF_SIZE> error{};
    pcap_.reset(pcap_fopen_offline(stream, error.data()));
    if (pcap_) return;
    std::fclose(stream);
    throw BadCapture(error_.empty() ? error.data() : error_);
}

bool CaptureFile::next(Frame& frame) {
    if (!(pcapng_ ? pcapng_->next(frame) : nextOfPcap(frame))) return false;
    id_.number = pcapng_ ? pcapng_->number() : id_.number + 1;
    frame.id = id_;
    frame.time = std::clamp(frame.time, Time{0}, kLatest);
    return true;
}

bool CaptureFile::nextOfPcap(Frame& frame) {
    pcap_pkthdr* header = nullptr;
    const u_char* octets = nullptr;
    const int result = pcap_next_ex(pcap_.get(), &header, &octets);
    if (result == PCAP_ERROR_BREAK) return false;
    if (result != 1) throw BadCapture(error_.empty() ? pcap_geterr(pcap_.get()) : error_);
    frame.time = Time{header->ts.tv_sec} * 1000000 + header->ts.tv_usec;
    frame.linkType = static_cast<unsigned>(pcap_datalink(pcap_.get()));
    frame.octets = {octets, header->caplen};
    frame.length = header->len;
    return true;
}
