// Whole capture files through tamsel-capture's reader, to the dumps: pcap, pcapng and compressed
// ones, with whatever link types and tunnels their frames have.

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "call_book.h"
#include "capture_file.h"
#include "message_finder.h"

namespace {

constexpr size_t kMaxHeld = 1 << 20;

/// How many octets of frames were read, reported at the end of the run.
struct FrameOctets {
    ~FrameOctets() { std::fprintf(stderr, "octets of frames: %zu\n", count); }
    size_t count = 0;
} frameOctets;

/// Prints each message, and checks what the output relies on.
struct Sink : MessageSink {
    explicit Sink(const TamselModules& set) : modules(set) {}

    void message(const CapturedMessage& message) override {
        const bool isDecoded = message.outcome == Outcome::kDecoded;
        if (message.name.empty() || isDecoded != (message.decoder != nullptr)) std::abort();
        if (message.octets.size() > 65535 || message.name.find('/') != std::string_view::npos)
            std::abort();
        const auto sent =
            message.encoding.last(std::min(message.encoding.size(), message.octets.size()));
        if (isDecoded &&
            !std::equal(sent.begin(), sent.end(), message.octets.begin(), message.octets.end()))
            std::abort();
        if (message.frames.empty() || !std::ranges::is_sorted(message.frames)) std::abort();
        std::string text;
        if (message.q931 != nullptr) message.q931->describe(text);
        if (std::any_of(text.begin(), text.end(), [](char c) { return c < ' ' || c > '~'; }))
            std::abort();
        const auto ignore = [](void*, const char*, size_t) {};
        if (isDecoded) message.decoder->print({ignore, nullptr});
        readDetails(modules, message, details);
        const CallRecord* const call =
            message.call.isEmpty() ? nullptr : book.note(message, details);
        if (call == nullptr) (void)book.noteOutsideCalls(message, details);
        for (const std::string& shown : {details.summary, call != nullptr ? call->why : ""})
            if (std::any_of(shown.begin(), shown.end(), [](char c) { return c < ' ' || c > '~'; }))
                std::abort();
    }
    void remark(const CaptureRemark& remark) override { book.note(remark); }

    const TamselModules& modules;
    MessageDetails details;
    CallBook book{8};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const int file = memfd_create("capture", 0);
    static const std::string name = "/proc/self/fd/" + std::to_string(file);
    if (ftruncate(file, 0) != 0 || pwrite(file, data, size, 0) != static_cast<ssize_t>(size))
        std::abort();
    const TamselModules& modules = size % 8 < 6 ? kTamsel2009 : kTamsel1998;
    Sink sink(modules);
    MemoryBudget budget(kMaxHeld);
    Unread unread;
    {
        MessageFinder finder(sink, budget, unread, {size % 4 == 0 ? "c0fe" : "", {}, &modules});
        Network network(finder, budget, unread);
        try {
            CaptureFile capture(name);
            for (Frame frame; capture.next(frame);) {
                network.frame(frame);
                frameOctets.count += frame.octets.size();
                if (budget.used() > 2 * kMaxHeld) std::abort();
            }
        } catch (const BadCapture&) {
        }
        network.end();
    }
    if (budget.used() != 0) std::abort();  // what was counted has been given back
    return 0;
}
