#include "frame_filter.h"

#include <pcap/pcap.h>

#include <stdexcept>

namespace {

constexpr int kSnapLength = 262144;

}  // namespace

void FrameFilter::Free::operator()(bpf_program* program) const {
    pcap_freecode(program);
    delete program;
}

FrameFilter::FrameFilter(std::string expression) : expression_(std::move(expression)) {
}

FrameFilter::~FrameFilter() = default;

FrameFilter::Program FrameFilter::compile(unsigned linkType) const {
    const std::unique_ptr<pcap_t, decltype(&pcap_close)> pcap(
        pcap_open_dead(static_cast<int>(linkType), kSnapLength), pcap_close);
    Program program(new bpf_program{});
    if (pcap_compile(pcap.get(), program.get(), expression_.c_str(), 1, PCAP_NETMASK_UNKNOWN) != 0)
        throw std::runtime_error("--filter " + expression_ + ": " + pcap_geterr(pcap.get()));
    return program;
}

bool FrameFilter::has(const Frame& frame) {
    if (expression_.empty()) return true;
    Program& program = programs_[frame.linkType];
    if (!program) program = compile(frame.linkType);
    pcap_pkthdr header{};
    header.caplen = static_cast<bpf_u_int32>(frame.octets.size());
    header.len = static_cast<bpf_u_int32>(frame.length);
    return pcap_offline_filter(program.get(), &header, frame.octets.data()) != 0;
}
