// pcapng files, block by block. libpcap refuses a file if its interfaces differ in link type or
// snap length, which is what a capture on several interfaces looks like. So the blocks are read
// here.
#pragma once

#include <array>
#include <vector>

#include "frame.h"
#include "input_file.h"

class PcapngReader {
  public:
    /// Whether a file that starts like this is pcapng.
    static bool recognises(std::span<const uint8_t> start);

    explicit PcapngReader(InputFile& input) : input_(input) {}

    /// The next frame; false at the end. Blocks that are not known are skipped. Throws BadCapture.
    bool next(Frame& frame);

    /// The number of the frame that `next` returned last. Wireshark also counts blocks that are no
    /// frames but events: of a journal, of system calls, and custom ones.
    uint32_t number() const { return number_; }

  private:
    /// What an Interface Description Block says of its frames.
    struct Interface {
        unsigned linkType = 0;
        uint32_t snapLength = 0;  // 0: no limit
        uint8_t resolution = 6;   // if_tsresol: a power of 10, or of 2 with the top bit set
        int64_t offset = 0;       // if_tsoffset, in seconds
    };

    bool readBlock();
    void readInterface();
    void readFrame(Frame& frame, size_t interfaceOctets);
    void readSimple(Frame& frame);
    const Interface& interfaceAt(size_t index) const;
    uint64_t integer(size_t at, size_t octets) const;
    void skip(size_t octets);

    InputFile& input_;
    bool isBigEndian_ = false;  // of the section
    std::vector<Interface> interfaces_;
    uint32_t type_ = 0;
    std::vector<uint8_t> body_;  // of the block, without its type and lengths
    Time lastTime_ = 0;
    uint32_t number_ = 0;
};
