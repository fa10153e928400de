// The octets of a file or of standard input, decompressed if the file is compressed.
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

    /// The first octets, at most 4; `read` returns them again.
    std::span<const uint8_t> start() const { return {start_.data(), startSize_}; }

    /// Reads up to `size` octets, as many as are there; 0 at the end. Throws BadCapture.
    size_t read(uint8_t* to, size_t size);

    /// Reads until `size` octets are there or the file ends. Returns how many.
    size_t readAll(uint8_t* to, size_t size);

    /// How much of the file has been read, 0 to 1; below 0 if that is unknown.
    double progress() const { return size_ > 0 ? static_cast<double>(taken_) / size_ : -1; }

  private:
    void fill();
    size_t readDecompressed(uint8_t* to, size_t size);

    int file_ = -1;
    double size_ = 0;
    size_t taken_ = 0;
    std::vector<uint8_t> buffer_;
    std::span<const uint8_t> rest_;  // of buffer_
    bool isAtEnd_ = false;
    std::unique_ptr<Decompressor> decompressor_;
    std::array<uint8_t, 4> start_{};
    size_t startSize_ = 0;
    size_t startRead_ = 0;
};
