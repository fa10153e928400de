#include "message_dump.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

#include <filesystem>
#include <random>
#define dup _dup
#define fdopen _fdopen
#define fileno _fileno
#else
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>
#endif

namespace {

/// Read at a time, and room of the pipe.
constexpr int kReadOctets = 1 << 20;
/// So many octets in the pipe, and the library may be waiting; a smaller pipe holds no fewer.
constexpr int kFullOctets = 1 << 15;

}  // namespace

const Family kRas{"ras", "H.225.0 RAS", H323RASASNDecode};
const Family kUi{"ui", "H.225.0 call signalling", H323UserInfoASNDecode};
const Family kH245{"h245", "H.245", H323H245ASNDecode};

const Family* findFamily(std::string_view name) {
    for (const Family* family : {&kRas, &kUi, &kH245})
        if (family->name == name) return family;
    return nullptr;
}

FILE* keepStandardOutput() {
    const int copy = dup(fileno(stdout));
    FILE* const stream = copy >= 0 ? fdopen(copy, "w") : nullptr;
    return stream != nullptr ? stream : stderr;
}

#if defined(_WIN32)

MessageDumper::MessageDumper() : text_(kReadOctets) {
    std::random_device random;
    const std::string name = "tamsel-" + std::to_string(random()) + "-" + std::to_string(random());
    path_ = (std::filesystem::temp_directory_path() / name).string();
    reading_ =
        _open(path_.c_str(), _O_RDONLY | _O_BINARY | _O_CREAT | _O_EXCL, _S_IREAD | _S_IWRITE);
    if (reading_ < 0) throw std::runtime_error(path_ + ": cannot be made");
}

MessageDumper::~MessageDumper() {
    _close(reading_);
    std::remove(path_.c_str());
}

void MessageDumper::take() {
    _lseek(reading_, 0, SEEK_SET);
    for (int got = kReadOctets; got == kReadOctets;) {
        text_.resize(size_ + kReadOctets);
        got = std::max(_read(reading_, text_.data() + size_, kReadOctets), 0);
        size_ += static_cast<size_t>(got);
    }
    // Not by reading in text mode, which would take a 0x1A in a character string for the end.
    size_t kept = 0;
    for (size_t i = 0; i < size_; ++i)
        if (text_[i] != '\r' || i + 1 == size_ || text_[i + 1] != '\n') text_[kept++] = text_[i];
    size_ = kept;
}

#else

MessageDumper::MessageDumper() : text_(kReadOctets) {
    int ends[2] = {};
    if (pipe2(ends, O_NONBLOCK | O_CLOEXEC) != 0) throw std::runtime_error("no pipe can be made");
    reading_ = ends[0];
    writing_ = ends[1];
    fcntl(writing_, F_SETPIPE_SZ, kReadOctets);
    path_ = "/dev/fd/" + std::to_string(writing_);
    if (access(path_.c_str(), W_OK) != 0) throw std::runtime_error(path_ + ": is not there");
    // The library opens the pipe anew, and waits where it is full. Few dumps are so large: a look
    // now and then costs less than a thread woken for each.
    relief_ = std::jthread([this](const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            const std::lock_guard lock(mutex_);
            int waiting = 0;
            if (isWriting_ && ioctl(reading_, FIONREAD, &waiting) == 0 && waiting >= kFullOctets)
                take();
        }
    });
}

MessageDumper::~MessageDumper() {
    relief_.request_stop();
    relief_.join();
    close(reading_);
    close(writing_);
}

/// Takes what the pipe holds.
void MessageDumper::take() {
    text_.resize(std::max(text_.size(), size_ + kReadOctets));
    const ssize_t got = read(reading_, text_.data() + size_, kReadOctets);
    if (got > 0) size_ += static_cast<size_t>(got);
}

#endif

std::optional<std::string_view> MessageDumper::dump(const Family& family,
                                                    std::span<const unsigned char> message,
                                                    bool aligned) {
    if (message.size() > kMaxMessageOctets) return {};
    {
        const std::lock_guard lock(mutex_);
        size_ = 0;
        isWriting_ = true;
    }
    const auto length = static_cast<unsigned short>(message.size());
    const bool decoded = family.dump(message.data(), length, aligned ? 1 : 0, path_.c_str()) != 0;
    const std::lock_guard lock(mutex_);
    isWriting_ = false;
    if (!decoded) return {};
    take();
    return std::string_view(text_.data(), size_);
}
