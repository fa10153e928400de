#include "frame_filter.h"

#include <pcap/pcap.h>

#include <stdexcept>

#include "link_types.h"

void FrameFilter::Free::operator()(bpf_program* program) const {
    pcap_freecode(program);
    delete program;
}

FrameFilter::FrameFilter(std::string expression, Unread& unread)
    : expression_(std::move(expression)), unread_(unread) {
}

FrameFilter::~FrameFilter() = default;

FrameFilter::Program FrameFilter::compile(unsigned linkType) {
    const std::unique_ptr<pcap_t, decltype(&pcap_close)> pcap(
        pcap_open_dead(static_cast<int>(linkType), kLongestFrame), pcap_close);
    Program program(new bpf_program{});
    if (pcap_compile(pcap.get(), program.get(), expression_.c_str(), 1, PCAP_NETMASK_UNKNOWN) == 0)
        return program;
    if (linkType == DLT_EN10MB)
        throw std::runtime_error("--filter " + expression_ + ": " + pcap_geterr(pcap.get()));
    (void)compile(DLT_EN10MB);  // throws if the expression itself is wrong
    return {};
}

bool FrameFilter::has(const Frame& frame) {
    if (expression_.empty()) return true;
    auto known = programs_.find(frame.linkType);
    if (known == programs_.end())
        known = programs_.emplace(frame.linkType, compile(frame.linkType)).first;
    const Program& program = known->second;
    if (!program) {
        unread_.count("frames of link type " + linkTypeName(frame.linkType) +
                      ", which --filter cannot judge");
        return false;
    }
    pcap_pkthdr header{};
    header.caplen = static_cast<bpf_u_int32>(frame.octets.size());
    header.len = static_cast<bpf_u_int32>(frame.length);
    return pcap_offline_filter(program.get(), &header, frame.octets.data()) != 0;
}
