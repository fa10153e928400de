// Reads pcapng files. libpcap does not read a file whose interfaces differ in link type or snapshot
// length, and captures on several interfaces often have such interfaces.
#pragma once

#include <array>
#include <vector>

#include "frame.h"
#include "input_file.h"

class PcapngReader {
  public:
    /// Whether a file with these first octets is pcapng.
    static bool recognises(std::span<const uint8_t> start);

    /// input: must outlive the reader.
    explicit PcapngReader(InputFile& input) : input_(input) {}

    /// Reads the next frame, without its file number. Returns false at the end. Unknown blocks are
    /// skipped. Throws BadCapture.
    bool next(Frame& frame);

    /// The number of the last frame. As in Wireshark, some blocks that are not frames are counted
    /// as well: journal entries, system calls and custom blocks.
    uint32_t number() const { return number_; }

  private:
    /// From an Interface Description Block.
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
    Time lastTime_ = 0;          // of the last frame that had a time
    uint32_t number_ = 0;
};
