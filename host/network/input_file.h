// Reads the octets of a file or of standard input, and decompresses them if necessary.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "decompress.h"

class InputFile {
  public:
    /// Opens a file, or standard input for "-". Throws BadCapture.
    explicit InputFile(const std::string& name);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    /// The first octets, at most 4, decompressed. `read` returns them again.
    std::span<const uint8_t> start() const { return {start_.data(), startSize_}; }

    /// Reads at most `size` octets, as soon as there are any. Returns how many; 0 at the end.
    /// Throws BadCapture.
    size_t read(uint8_t* to, size_t size);

    /// Reads until it has `size` octets or the file ends. Returns how many. Throws BadCapture.
    size_t readAll(uint8_t* to, size_t size);

    /// The part of the file that has been read, 0 to 1; below 0 if it is unknown.
    double progress() const { return size_ > 0 ? static_cast<double>(taken_) / size_ : -1; }

  private:
    void fill();
    size_t readDecompressed(uint8_t* to, size_t size);

    int file_ = -1;
    double size_ = 0;   // octets of the file; 0 if it is not a regular file
    size_t taken_ = 0;  // octets that were read from the file
    std::vector<uint8_t> buffer_;
    std::span<const uint8_t> rest_;  // the octets of buffer_ that are not used yet
    bool isAtEnd_ = false;
    std::unique_ptr<Decompressor> decompressor_;  // null if the file is not compressed
    std::array<uint8_t, 4> start_{};
    size_t startSize_ = 0;
    size_t startRead_ = 0;  // octets of start_ that `read` has returned
};
