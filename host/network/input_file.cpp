#include "input_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "interrupt.h"

namespace {

constexpr size_t kBufferOctets = 1 << 18;

}  // namespace

InputFile::InputFile(const std::string& name) : buffer_(kBufferOctets) {
    file_ = name == "-" ? dup(STDIN_FILENO) : open(name.c_str(), O_RDONLY | O_CLOEXEC);
    if (file_ < 0)
        throw BadCapture(errno == ENOENT ? std::string("no such file") : std::strerror(errno));
    struct stat status {};
    if (fstat(file_, &status) == 0) {
        if (S_ISDIR(status.st_mode)) {
            close(file_);
            throw BadCapture("not a file");
        }
        if (S_ISREG(status.st_mode)) size_ = static_cast<double>(status.st_size);
    }
    try {
        while (rest_.size() < start_.size() && !isAtEnd_) fill();
        decompressor_ = decompressorFor(rest_);
        while (startSize_ < start_.size()) {
            const size_t got =
                readDecompressed(start_.data() + startSize_, start_.size() - startSize_);
            if (got == 0) break;
            startSize_ += got;
        }
    } catch (...) {
        close(file_);
        throw;
    }
}

InputFile::~InputFile() {
    close(file_);
}

/// Reads more octets of the file, and appends them to rest_.
void InputFile::fill() {
    if (!rest_.empty()) std::memmove(buffer_.data(), rest_.data(), rest_.size());
    const size_t kept = rest_.size();
    ssize_t got = -1;
    do {
        got = ::read(file_, buffer_.data() + kept, buffer_.size() - kept);
    } while (got < 0 && errno == EINTR && !isInterrupted());
    if (isInterrupted()) got = 0;
    if (got < 0) throw BadCapture(std::strerror(errno));
    isAtEnd_ = got == 0;
    taken_ += static_cast<size_t>(got);
    rest_ = std::span(buffer_).first(kept + static_cast<size_t>(got));
}

size_t InputFile::readDecompressed(uint8_t* to, size_t size) {
    while (true) {
        if (rest_.empty() && !isAtEnd_) fill();
        if (!decompressor_) {
            const size_t taken = std::min(size, rest_.size());
            std::copy_n(rest_.begin(), taken, to);
            rest_ = rest_.subspan(taken);
            return taken;
        }
        if (const size_t got = decompressor_->run(rest_, to, size); got > 0) return got;
        if (rest_.empty() && isAtEnd_) {
            if (!decompressor_->isComplete()) throw BadCapture("compressed data end too early");
            return 0;
        }
    }
}

size_t InputFile::read(uint8_t* to, size_t size) {
    if (startRead_ == startSize_) return readDecompressed(to, size);
    const size_t taken = std::min(size, startSize_ - startRead_);
    std::copy_n(start_.begin() + static_cast<std::ptrdiff_t>(startRead_), taken, to);
    startRead_ += taken;
    return taken;
}

size_t InputFile::readAll(uint8_t* to, size_t size) {
    size_t done = 0;
    while (done < size) {
        const size_t got = read(to + done, size - done);
        if (got == 0) break;
        done += got;
    }
    return done;
}
