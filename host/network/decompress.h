// Compressed files: gzip by zlib, zstd by libzstd if the build machine has it.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <stdexcept>

/// What is wrong with a capture file.
struct BadCapture : std::runtime_error {
    using runtime_error::runtime_error;
};

/// Undoes a compression, piece by piece.
class Decompressor {
  public:
    Decompressor() = default;
    virtual ~Decompressor() = default;
    Decompressor(const Decompressor&) = delete;
    Decompressor& operator=(const Decompressor&) = delete;

    /// Takes octets from the front of `in` and writes at most `size` octets to `out`. Returns how
    /// many it wrote; 0 means that it needs more input. Throws BadCapture.
    virtual size_t run(std::span<const uint8_t>& in, uint8_t* out, size_t size) = 0;

    /// Whether the input may end here.
    virtual bool isComplete() const = 0;
};

/// What decompresses a file that starts like this; null if the file is not compressed. Throws
/// BadCapture if this build cannot decompress it.
std::unique_ptr<Decompressor> decompressorFor(std::span<const uint8_t> start);
