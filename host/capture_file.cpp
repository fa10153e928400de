#include "capture_file.h"

#include <pcap/pcap.h>

#include <array>
#include <filesystem>

void CaptureFile::Close::operator()(pcap* file) const {
    pcap_close(file);
}

CaptureFile::CaptureFile(const std::string& name) {
    std::array<char, PCAP_ERRBUF_SIZE> error{};
    // libpcap's own text repeats the name: for a file that is not there, and for no other.
    if (name != "-" && !std::filesystem::is_regular_file(name) && !std::filesystem::is_fifo(name))
        throw BadCapture(std::filesystem::exists(name) ? "not a file" : "no such file");
    file_.reset(pcap_open_offline(name.c_str(), error.data()));
    if (!file_) throw BadCapture(error.data());
    std::error_code none;
    const auto size = std::filesystem::file_size(name, none);
    if (!none) size_ = static_cast<double>(size);
}

bool CaptureFile::next(Frame& frame) {
    pcap_pkthdr* header = nullptr;
    const u_char* octets = nullptr;
    const int result = pcap_next_ex(file_.get(), &header, &octets);
    if (result == PCAP_ERROR_BREAK) return false;
    if (result != 1) throw BadCapture(pcap_geterr(file_.get()));
    frame.time = static_cast<Time>(header->ts.tv_sec) * 1000000 + header->ts.tv_usec;
    frame.octets = {octets, header->caplen};
    frame.length = header->len;
    return true;
}

int CaptureFile::linkType() const {
    return pcap_datalink(file_.get());
}

double CaptureFile::progress() const {
    const long at = std::ftell(pcap_file(file_.get()));
    return size_ > 0 && at >= 0 ? static_cast<double>(at) / size_ : -1;
}
