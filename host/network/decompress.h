// Decompresses files: gzip by zlib, and zstd by libzstd if the build machine has it.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <stdexcept>

/// Why a capture cannot be read.
struct BadCapture : std::runtime_error {
    using runtime_error::runtime_error;
};

/// Decompresses data piece by piece.
class Decompressor {
  public:
    Decompressor() = default;
    virtual ~Decompressor() = default;
    Decompressor(const Decompressor&) = delete;
    Decompressor& operator=(const Decompressor&) = delete;

    /// Removes octets from the front of `in`, and writes at most `size` octets to `out`. Returns
    /// how many it wrote; 0 means that it needs more input. Throws BadCapture if the data is
    /// damaged.
    virtual size_t run(std::span<const uint8_t>& in, uint8_t* out, size_t size) = 0;

    /// Whether the compressed data is complete, so that the input may end here.
    virtual bool isComplete() const = 0;
};

/// The decompressor for a file with these first octets; null if the file is not compressed. Throws
/// BadCapture if this build cannot decompress it.
std::unique_ptr<Decompressor> decompressorFor(std::span<const uint8_t> start);
