#include "pcapng.h"

#include <algorithm>

#include "link_types.h"
#include "pcapng_blocks.h"

namespace {

/// Blocks that are counted as frames are: journal entries, custom blocks, system calls.
constexpr uint32_t kEvents[] = {9, 0x0BAD, 0x40000BAD, 0x204, 0x216, 0x221};

constexpr size_t kBlockFrame = 12;          // octets: type, and the length twice
constexpr size_t kMaxBlock = 16 << 20;      // octets of a block that is read
constexpr size_t kMaxInterfaces = 1 << 16;  // in a section

constexpr unsigned kOptionResolution = 9;
constexpr unsigned kOptionOffset = 14;

size_t padded(size_t size) {
    return (size + 3) / 4 * 4;
}

/// Converts ticks of an interface's clock to microseconds.
Time microseconds(uint64_t ticks, uint8_t resolution) {
    unsigned power = resolution & 0x7FU;
    if ((resolution & 0x80) != 0) {
        if (power > 63) return 0;
        const uint64_t seconds = ticks >> power;
        uint64_t fraction = ticks - (seconds << power);
        for (; power > 32; --power) fraction >>= 1;  // so that the product fits
        return static_cast<Time>(seconds * 1000000 + (fraction * 1000000 >> power));
    }
    for (; power > 6; --power) ticks /= 10;
    for (; power < 6; ++power) ticks *= 10;
    return static_cast<Time>(ticks);
}

}  // namespace

bool PcapngReader::recognises(std::span<const uint8_t> start) {
    return start.size() == 4 && start[0] == 0x0A && start[1] == 0x0D && start[2] == 0x0D &&
           start[3] == 0x0A;
}

/// A number in the body of the block. Throws BadCapture if the body is too short.
uint64_t PcapngReader::integer(size_t at, size_t octets) const {
    if (at + octets > body_.size()) throw BadCapture("a pcapng block is too short");
    uint64_t value = 0;
    for (size_t i = 0; i < octets; ++i)
        value = value << 8 | body_[isBigEndian_ ? at + i : at + octets - 1 - i];
    return value;
}

void PcapngReader::skip(size_t octets) {
    std::array<uint8_t, 4096> ignored;
    while (octets > 0) {
        const size_t got = input_.read(ignored.data(), std::min(octets, ignored.size()));
        if (got == 0) throw BadCapture("the file ends within a block");
        octets -= got;
    }
}

/// Reads the next block; false at the end of the file.
bool PcapngReader::readBlock() {
    body_.resize(12);  // type, length and, of a section header, the byte order
    const size_t got = input_.readAll(body_.data(), 8);
    if (got == 0) return false;
    if (got < 8) throw BadCapture("the file ends within a block");
    type_ = static_cast<uint32_t>(integer(0, 4));
    size_t done = 8;  // octets of the block that were read
    if (type_ == kSectionHeader) {
        if (input_.readAll(body_.data() + 8, 4) < 4)
            throw BadCapture("the file ends within a block");
        done = 12;
        isBigEndian_ = body_[8] == 0x1A;
        if (integer(8, 4) != kByteOrderMagic)
            throw BadCapture("a pcapng section without its byte-order magic");
    }
    const auto length = static_cast<size_t>(integer(4, 4));
    if (length < done + 4 || length % 4 != 0)
        throw BadCapture("a pcapng block with an invalid length");
    const bool isKnown = type_ == kInterfaceDescription || type_ == kPacket ||
                         type_ == kSimplePacket || type_ == kEnhancedPacket;
    if (!isKnown) {
        skip(length - done);
        body_.clear();
        return true;
    }
    if (length > kMaxBlock)
        throw BadCapture("a pcapng block of " + std::to_string(length) + " octets");
    body_.resize(length - kBlockFrame);
    if (input_.readAll(body_.data(), body_.size()) < body_.size())
        throw BadCapture("the file ends within a block");
    skip(4);
    return true;
}

void PcapngReader::readInterface() {
    if (interfaces_.size() == kMaxInterfaces) throw BadCapture("too many interfaces");
    Interface interface {
        .linkType = linkTypeFromFile(static_cast<unsigned>(integer(0, 2))),
        .snapLength = static_cast<uint32_t>(integer(4, 4))
    };
    for (size_t at = 8; at + 4 <= body_.size();) {
        const auto code = static_cast<unsigned>(integer(at, 2));
        const auto length = static_cast<size_t>(integer(at + 2, 2));
        if (code == 0) break;
        if (code == kOptionResolution && length == 1)
            interface.resolution = static_cast<uint8_t>(integer(at + 4, 1));
        if (code == kOptionOffset && length == 8)
            interface.offset = static_cast<int64_t>(integer(at + 4, 8));
        at += 4 + padded(length);
    }
    interfaces_.push_back(interface);
}

const PcapngReader::Interface& PcapngReader::interfaceAt(size_t index) const {
    if (index >= interfaces_.size())
        throw BadCapture("a frame of an interface that is not described");
    return interfaces_[index];
}

/// An Enhanced Packet Block, or the obsolete Packet Block.
void PcapngReader::readFrame(Frame& frame, size_t interfaceOctets) {
    const Interface& interface = interfaceAt(static_cast<size_t>(integer(0, interfaceOctets)));
    const uint64_t ticks = integer(4, 4) << 32 | integer(8, 4);
    const auto size = static_cast<size_t>(integer(12, 4));
    if (20 + size > body_.size()) throw BadCapture("a frame longer than its block");
    const uint64_t offset = static_cast<uint64_t>(interface.offset) * 1000000;
    lastTime_ = static_cast<Time>(static_cast<uint64_t>(microseconds(ticks, interface.resolution)) +
                                  offset);
    frame = {.time = lastTime_,
             .linkType = interface.linkType,
             .octets = std::span(body_).subspan(20, size),
             .length = static_cast<size_t>(integer(16, 4))};
}

/// A Simple Packet Block. It belongs to the first interface and has no time, so that it gets the
/// time of the frame before it.
void PcapngReader::readSimple(Frame& frame) {
    const Interface& interface = interfaceAt(0);
    const auto length = static_cast<size_t>(integer(0, 4));
    size_t size = std::min(length, body_.size() - 4);
    if (interface.snapLength > 0) size = std::min<size_t>(size, interface.snapLength);
    frame = {.time = lastTime_,
             .linkType = interface.linkType,
             .octets = std::span(body_).subspan(4, size),
             .length = length};
}

bool PcapngReader::next(Frame& frame) {
    while (readBlock()) {
        switch (type_) {
            case kSectionHeader:
                interfaces_.clear();
                break;
            case kInterfaceDescription:
                readInterface();
                break;
            case kPacket:
                ++number_;
                readFrame(frame, 2);
                return true;
            case kEnhancedPacket:
                ++number_;
                readFrame(frame, 4);
                return true;
            case kSimplePacket:
                ++number_;
                readSimple(frame);
                return true;
            default:
                number_ += std::ranges::find(kEvents, type_) != std::end(kEvents);
        }
    }
    return false;
}
