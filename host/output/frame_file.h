// A capture file that is written: pcap, or pcapng if it is named so.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "frame.h"

struct pcap;
struct pcap_dumper;

class FrameFile {
  public:
    /// Makes the file, or takes standard output for "-". What cannot be done is thrown as
    /// std::runtime_error, here and below.
    explicit FrameFile(std::string name);
    ~FrameFile();
    FrameFile(const FrameFile&) = delete;
    FrameFile& operator=(const FrameFile&) = delete;

    /// A pcap file has frames of one link type.
    void write(const Frame& frame);

    /// To be called last: nothing is left to be written.
    void finish();

  private:
    struct ClosePcap {
        void operator()(pcap* file) const;
    };

    void begin(unsigned linkType);
    void writeBlock(uint32_t type, std::span<const uint32_t> head, std::span<const uint8_t> octets);
    [[noreturn]] void fail(const std::string& why) const;

    std::string name_;
    bool isPcapng_ = false;
    std::FILE* file_ = nullptr;
    std::vector<unsigned> linkTypes_;  // so far: of pcapng each an interface
    std::unique_ptr<pcap, ClosePcap> pcap_;
    pcap_dumper* dumper_ = nullptr;
    std::vector<uint32_t> block_;
};
