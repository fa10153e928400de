#include "live_capture.h"

#include <pcap/pcap.h>
#include <poll.h>

#include <array>

#include "input_file.h"
#include "interrupt.h"

namespace {

constexpr int kTimeout = 100;  // milliseconds, until a signal is noticed

}  // namespace

void LiveCapture::Close::operator()(pcap* capture) const {
    pcap_close(capture);
}

LiveCapture::LiveCapture(const std::string& interface, const std::string& filter, Unread& unread)
    : unread_(unread) {
    std::array<char, PCAP_ERRBUF_SIZE> error{};
    pcap_.reset(pcap_create(interface.c_str(), error.data()));
    if (!pcap_) throw BadCapture(error.data());
    pcap_set_snaplen(pcap_.get(), kLongestFrame);
    pcap_set_promisc(pcap_.get(), 1);
    pcap_set_timeout(pcap_.get(), kTimeout);
    pcap_set_immediate_mode(pcap_.get(), 1);
    if (const int status = pcap_activate(pcap_.get()); status < 0) {
        const std::string what = pcap_geterr(pcap_.get());
        throw BadCapture(what.empty() ? pcap_statustostr(status) : what);
    }
    // libpcap restarts a read after a signal. Therefore reads do not block, and `next` waits.
    if (pcap_setnonblock(pcap_.get(), 1, error.data()) != 0) throw BadCapture(error.data());
    if (filter.empty()) return;
    bpf_program program{};
    const bool isSet =
        pcap_compile(pcap_.get(), &program, filter.c_str(), 1, PCAP_NETMASK_UNKNOWN) == 0 &&
        pcap_setfilter(pcap_.get(), &program) == 0;
    pcap_freecode(&program);
    if (!isSet) throw BadCapture("--filter " + filter + ": " + pcap_geterr(pcap_.get()));
}

LiveCapture::~LiveCapture() {
    pcap_stat counts{};
    if (pcap_stats(pcap_.get(), &counts) == 0 && counts.ps_drop > 0)
        unread_.count("frames that the system dropped", counts.ps_drop);
}

bool LiveCapture::next(Frame& frame) {
    while (!isInterrupted()) {
        pcap_pkthdr* header = nullptr;
        const u_char* octets = nullptr;
        const int result = pcap_next_ex(pcap_.get(), &header, &octets);
        if (result == 0) {
            pollfd waiting{
                .fd = pcap_get_selectable_fd(pcap_.get()), .events = POLLIN, .revents = 0};
            (void)poll(&waiting, 1, kTimeout);
            continue;
        }
        if (result != 1) throw BadCapture(pcap_geterr(pcap_.get()));
        ++id_.number;
        frame = {.id = id_,
                 .time = Time{header->ts.tv_sec} * 1000000 + header->ts.tv_usec,
                 .linkType = static_cast<unsigned>(pcap_datalink(pcap_.get())),
                 .octets = {octets, header->caplen},
                 .length = header->len};
        return true;
    }
    return false;
}
