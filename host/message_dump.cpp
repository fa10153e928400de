#include "message_dump.h"

#include <stdexcept>

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

#include <filesystem>
#include <random>
#define close _close
#define dup _dup
#define fdopen _fdopen
#define fileno _fileno
#define lseek _lseek
#define read _read
#else
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace {

/// Read at a time: most dumps are shorter.
constexpr size_t kDumpOctets = 16384;

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

MessageDumper::MessageDumper() : text_(kDumpOctets) {
    std::random_device random;
    const std::string name = "tamsel-" + std::to_string(random()) + "-" + std::to_string(random());
    path_ = (std::filesystem::temp_directory_path() / name).string();
    descriptor_ =
        _open(path_.c_str(), _O_RDONLY | _O_BINARY | _O_CREAT | _O_EXCL, _S_IREAD | _S_IWRITE);
    if (descriptor_ < 0) throw std::runtime_error(path_ + ": cannot be made");
}

MessageDumper::~MessageDumper() {
    close(descriptor_);
    std::remove(path_.c_str());
}

#else

MessageDumper::MessageDumper() : text_(kDumpOctets) {
    // On a disk each dump would wait for it: file systems write out a file that is cut and filled.
    descriptor_ = memfd_create("tamsel", MFD_CLOEXEC);
    if (descriptor_ < 0) throw std::runtime_error("no file in memory can be made");
    path_ = "/proc/self/fd/" + std::to_string(descriptor_);
}

MessageDumper::~MessageDumper() {
    close(descriptor_);
}

#endif

std::optional<std::string_view> MessageDumper::dump(const Family& family,
                                                    std::span<const unsigned char> message,
                                                    bool aligned) {
    const auto length = static_cast<unsigned short>(message.size());
    if (family.dump(message.data(), length, aligned ? 1 : 0, path_.c_str()) == 0) return {};
    lseek(descriptor_, 0, SEEK_SET);
    size_t size = 0;
    while (true) {
        const auto room = static_cast<unsigned>(text_.size() - size);
        const auto got = read(descriptor_, text_.data() + size, room);
        if (got > 0) size += static_cast<size_t>(got);
        if (size < text_.size()) break;  // less than asked for: the end
        text_.resize(text_.size() * 2);
    }
#if defined(_WIN32)
    // Not by reading in text mode, which would take a 0x1A in a character string for the end.
    size_t kept = 0;
    for (size_t i = 0; i < size; ++i)
        if (text_[i] != '\r' || i + 1 == size || text_[i + 1] != '\n') text_[kept++] = text_[i];
    size = kept;
#endif
    return std::string_view(text_.data(), size);
}
