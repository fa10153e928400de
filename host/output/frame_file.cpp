#include "frame_file.h"

#include <pcap/pcap.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "link_types.h"
#include "pcapng_blocks.h"

namespace {

constexpr uint16_t kVersion[] = {1, 0};  // of pcapng

/// Two numbers of 16 bits, as they are in a block.
uint32_t pair(uint16_t first, uint16_t second) {
    return std::bit_cast<uint32_t>(std::array{first, second});
}

}  // namespace

void FrameFile::ClosePcap::operator()(pcap* file) const {
    pcap_close(file);
}

FrameFile::FrameFile(std::string name)
    : name_(std::move(name)),
      isPcapng_(name_.ends_with(".pcapng")),
      file_(name_ == "-" ? stdout : std::fopen(name_.c_str(), "wb")) {
    if (file_ == nullptr) fail(std::strerror(errno));
    if (!isPcapng_) return;
    constexpr uint32_t kUnknown = 0xFFFFFFFF;  // the length of the section
    writeBlock(kSectionHeader,
               std::vector{kByteOrderMagic, pair(kVersion[0], kVersion[1]), kUnknown, kUnknown},
               {});
}

FrameFile::~FrameFile() {
    if (dumper_ != nullptr)
        pcap_dump_close(dumper_);
    else if (file_ != nullptr && file_ != stdout)
        std::fclose(file_);
}

void FrameFile::fail(const std::string& why) const {
    throw std::runtime_error((name_ == "-" ? "standard output" : name_) + ": " + why);
}

/// Begins a pcap file, or an interface of a pcapng file, for frames of a link type.
void FrameFile::begin(unsigned linkType) {
    if (isPcapng_) {
        const auto number = static_cast<uint16_t>(linkTypeInFile(linkType));
        writeBlock(kInterfaceDescription, std::vector{pair(number, 0), kLongestFrame}, {});
    } else if (!linkTypes_.empty()) {
        fail("a pcap file cannot hold frames of " + linkTypeName(linkTypes_[0]) + " and of " +
             linkTypeName(linkType) + "; a FILE.pcapng can");
    } else {
        pcap_.reset(pcap_open_dead(static_cast<int>(linkType), kLongestFrame));
        dumper_ = pcap_dump_fopen(pcap_.get(), file_);
        if (dumper_ == nullptr) fail(pcap_geterr(pcap_.get()));
    }
    linkTypes_.push_back(linkType);
}

void FrameFile::write(const Frame& frame) {
    auto interface = std::ranges::find(linkTypes_, frame.linkType);
    if (interface == linkTypes_.end()) {
        begin(frame.linkType);
        interface = std::prev(linkTypes_.end());
    }
    const auto octets = frame.octets.first(std::min<size_t>(frame.octets.size(), kLongestFrame));
    const auto size = static_cast<uint32_t>(octets.size());
    const auto length = static_cast<uint32_t>(frame.length);
    if (!isPcapng_) {
        pcap_pkthdr header{};
        header.ts.tv_sec = static_cast<decltype(header.ts.tv_sec)>(frame.time / 1000000);
        header.ts.tv_usec = static_cast<decltype(header.ts.tv_usec)>(frame.time % 1000000);
        header.caplen = size;
        header.len = length;
        pcap_dump(reinterpret_cast<u_char*>(dumper_), &header, octets.data());
    } else {
        const auto time = static_cast<uint64_t>(frame.time);
        writeBlock(kEnhancedPacket,
                   std::vector{static_cast<uint32_t>(interface - linkTypes_.begin()),
                               static_cast<uint32_t>(time >> 32), static_cast<uint32_t>(time), size,
                               length},
                   octets);
    }
    if (std::ferror(file_) != 0) fail("writing failed");
}

/// Writes a block of pcapng: numbers, and then octets, which are padded to 32 bits.
void FrameFile::writeBlock(uint32_t type, std::span<const uint32_t> head,
                           std::span<const uint8_t> octets) {
    const size_t words = 3 + head.size() + (octets.size() + 3) / 4;
    block_.assign(words, 0);
    block_.front() = type;
    block_[1] = block_.back() = static_cast<uint32_t>(words * sizeof(uint32_t));
    std::ranges::copy(head, block_.begin() + 2);
    if (!octets.empty()) std::memcpy(&block_[2 + head.size()], octets.data(), octets.size());
    (void)std::fwrite(block_.data(), sizeof(uint32_t), words,
                      file_);  // `write` and `finish` test this
}

void FrameFile::finish() {
    if (!isPcapng_ && linkTypes_.empty()) begin(DLT_EN10MB);
    if (std::fflush(file_) != 0 || std::ferror(file_) != 0) fail("writing failed");
}
