// Writes a capture file: pcapng if its name ends in .pcapng, else pcap.
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
    /// Creates the file, or uses standard output for "-". Throws std::runtime_error if something
    /// cannot be written, here and below.
    explicit FrameFile(std::string name);
    ~FrameFile();
    FrameFile(const FrameFile&) = delete;
    FrameFile& operator=(const FrameFile&) = delete;

    /// Writes a frame. All frames of a pcap file must have the same link type.
    void write(const Frame& frame);

    /// Flushes the file. Must be called last.
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
    std::vector<unsigned> linkTypes_;  // of the frames so far; in pcapng each has an interface
    std::unique_ptr<pcap, ClosePcap> pcap_;
    pcap_dumper* dumper_ = nullptr;  // of pcap; owns file_ if there is one
    std::vector<uint32_t> block_;    // of pcapng: the one that is written
};
