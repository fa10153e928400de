#include "dump_output.h"

DumpOutput::~DumpOutput() {
    if (stream_ != nullptr && stream_ != stdout) std::fclose(stream_);
}

AsnDumpSink DumpOutput::sink() {
    if (stream_ == nullptr) {
        stream_ = file_.empty() ? stdout : std::fopen(file_.c_str(), "w");
        if (stream_ == nullptr) throw OutputFailed(file_ + ": cannot be written");
        // Without a buffer Windows writes to a console one character at a time.
        (void)std::setvbuf(stream_, nullptr, _IOFBF, 1 << 16);
    }
    return {[](void* target, const char* text, size_t size) {
                (void)std::fwrite(text, 1, size, static_cast<FILE*>(target));  // `flush` tests this
            },
            stream_};
}

void DumpOutput::flush() {
    if (std::fflush(stream_) != 0 || std::ferror(stream_) != 0)
        throw OutputFailed((file_.empty() ? "standard output" : file_) + ": writing failed");
}

void DumpOutput::line(const std::string& text) {
    const AsnDumpSink to = sink();
    to.write(to.target, (text + "\n").data(), text.size() + 1);
    flush();
}
