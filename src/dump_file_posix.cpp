#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "dump_file.h"

bool DumpFile::open(const char* path) {
    constexpr mode_t kModeOfFiles = 0666;
    descriptor_ = ::open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kModeOfFiles);
    return descriptor_ >= 0;
}

AsnDumpSink DumpFile::sink() {
    return {[](void* target, const char* text, size_t size) {
                const int descriptor = *static_cast<const int*>(target);
                while (size > 0) {
                    const ssize_t written = ::write(descriptor, text, size);
                    if (written < 0 && errno == EINTR) continue;
                    if (written <= 0) return;
                    text += written;
                    size -= static_cast<size_t>(written);
                }
            },
            &descriptor_};
}

void DumpFile::close() {
    ::close(descriptor_);
}
