#include "decompress.h"

#include <zlib.h>

#include <algorithm>
#include <array>

#if TAMSEL_ZSTD
#include <zstd.h>
#endif

namespace {

constexpr std::array<uint8_t, 2> kGzip{0x1F, 0x8B};
constexpr std::array<uint8_t, 4> kZstd{0x28, 0xB5, 0x2F, 0xFD};

/// gzip, of one or several members.
class Gzip : public Decompressor {
  public:
    Gzip() {
        if (inflateInit2(&stream_, MAX_WBITS + 16) != Z_OK) throw std::bad_alloc();
    }
    ~Gzip() override { inflateEnd(&stream_); }

    size_t run(std::span<const uint8_t>& in, uint8_t* out, size_t size) override {
        if (isComplete_ && !in.empty()) {
            inflateReset(&stream_);
            isComplete_ = false;
        }
        if (isComplete_) return 0;
        stream_.next_in = const_cast<uint8_t*>(in.data());  // zlib does not write there
        stream_.avail_in = static_cast<uInt>(in.size());
        stream_.next_out = out;
        stream_.avail_out = static_cast<uInt>(std::min<size_t>(size, UINT32_MAX));
        const uInt room = stream_.avail_out;
        const int result = inflate(&stream_, Z_NO_FLUSH);
        if (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR)
            throw BadCapture("damaged gzip data");
        isComplete_ = result == Z_STREAM_END;
        in = in.last(stream_.avail_in);
        return room - stream_.avail_out;
    }

    bool isComplete() const override { return isComplete_; }

  private:
    z_stream stream_{};
    bool isComplete_ = false;
};

#if TAMSEL_ZSTD
class Zstd : public Decompressor {
  public:
    size_t run(std::span<const uint8_t>& in, uint8_t* out, size_t size) override {
        ZSTD_inBuffer from{in.data(), in.size(), 0};
        ZSTD_outBuffer to{out, size, 0};
        const size_t result = ZSTD_decompressStream(stream_.get(), &to, &from);
        if (ZSTD_isError(result) != 0) throw BadCapture("damaged zstd data");
        if (from.pos > 0 || to.pos > 0) isComplete_ = result == 0;
        in = in.subspan(from.pos);
        return to.pos;
    }

    bool isComplete() const override { return isComplete_; }

  private:
    struct Free {
        void operator()(ZSTD_DStream* stream) const { ZSTD_freeDStream(stream); }
    };
    std::unique_ptr<ZSTD_DStream, Free> stream_{ZSTD_createDStream()};
    bool isComplete_ = false;
};
#endif

bool startsWith(std::span<const uint8_t> octets, std::span<const uint8_t> with) {
    return octets.size() >= with.size() && std::equal(with.begin(), with.end(), octets.begin());
}

}  // namespace

std::unique_ptr<Decompressor> decompressorFor(std::span<const uint8_t> start) {
    if (startsWith(start, kGzip)) return std::make_unique<Gzip>();
    if (!startsWith(start, kZstd)) return nullptr;
#if TAMSEL_ZSTD
    return std::make_unique<Zstd>();
#else
    throw BadCapture("compressed by zstd, which this build does not read");
#endif
}
