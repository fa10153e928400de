// A dump in progress: the path of the value being printed, and the text not yet passed on.
//
// A path is extended step by step and cut back, never formatted anew. The innermost step is written
// to the path when a step within it begins: before that, its lines take its name from the step, and
// most steps have a line or two. Lines are collected in a buffer, which goes to the sink when it is
// full and when the dump ends. Nothing is allocated, no path is too long, and a sink reports no
// failure.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <type_traits>

class AsnDumpStep;

constexpr size_t kAsnNumberSize = 20;  // "-9223372036854775808"

/// Receives the text of a dump, piece by piece. The text is valid during the call only.
struct AsnDumpSink {
    void (*write)(void* target, const char* text, size_t size);
    void* target;
};

/// Writes to a stream. The C library keeps the order of this text and the host's own.
AsnDumpSink asnStreamSink(FILE* stream);

struct AsnDump {
    static constexpr size_t kTextSize = 16384;
    static constexpr size_t kPathSize = 4096;  // above the longest path of any legal message
    static constexpr size_t kBlock = 64;  // paths are copied in blocks; both buffers have slack

    /// `rootPath` begins every path; it belongs to the caller and must outlive the dump.
    AsnDump(AsnDumpSink to, const char* rootPath);
    AsnDump(FILE* stream, const char* rootPath) : AsnDump(asnStreamSink(stream), rootPath) {}
    ~AsnDump();  // passes on the rest of the text
    AsnDump(const AsnDump&) = delete;
    AsnDump& operator=(const AsnDump&) = delete;

    AsnDumpSink sink;
    size_t textLength;
    size_t pathLength;
    const AsnDumpStep* innermost;  // the innermost of the steps that are not in `path`, or null
    std::string_view root;         // written first if it did not fit into `path`, else empty
    bool escaped = false;          // see print.h
    alignas(kBlock) char path[kPathSize + kBlock];
    alignas(kBlock) char text[kTextSize + kBlock];
};

/// One step of the path, for as long as it lives: ".name" of a SEQUENCE component, ".u@name" of a
/// CHOICE alternative. Steps end in the reverse of the order in which they began.
class AsnDumpStep {
  public:
    /// `text` belongs to the caller and must outlive the step.
    AsnDumpStep(AsnDump& dump, std::string_view text);
    ~AsnDumpStep() {
        dump_.pathLength = pathLength_;
        dump_.innermost = outer_;
    }
    AsnDumpStep(const AsnDumpStep&) = delete;
    AsnDumpStep& operator=(const AsnDumpStep&) = delete;

    std::string_view text() const { return text_; }

    /// The step around this one, if that is not in the path either; or null.
    const AsnDumpStep* outer() const { return outer_; }

  private:
    AsnDump& dump_;
    size_t pathLength_;  // to cut the path back to
    const AsnDumpStep* outer_;
    std::string_view text_;
};

/// The text of a list index, ".elem[0]" and on.
struct AsnIndexText {
    explicit AsnIndexText(uint32_t index);
    std::string_view view() const { return {text, length}; }
    char text[sizeof ".elem[]" + kAsnNumberSize];
    size_t length;
};

/// ".elem[index]" of a list element.
struct AsnElementStep : private AsnIndexText, AsnDumpStep {
    AsnElementStep(AsnDump& dump, uint32_t index)
        : AsnIndexText(index), AsnDumpStep(dump, view()) {}
};

/// Copies the text, most often a name, to `at`, and returns the end. It takes no call.
inline char* asnAppend(char* at, std::string_view text) {
    const char* const from = text.data();
    const size_t size = text.size();
    // Two copies of a fixed size, which overlap, serve every size from one to two of them.
    const auto copyBothEnds = [=](auto fixed) {
        std::memcpy(at, from, fixed);
        std::memcpy(at + size - fixed, from + size - fixed, fixed);
    };
    if (size >= 16) {
        for (size_t i = 16; i < size - 16; i += 16) std::memcpy(at + i, from + i, 16);
        copyBothEnds(std::integral_constant<size_t, 16>());
    } else if (size >= 8) {
        copyBothEnds(std::integral_constant<size_t, 8>());
    } else if (size >= 4) {
        copyBothEnds(std::integral_constant<size_t, 4>());
    } else {
        for (size_t i = 0; i < size; ++i) at[i] = from[i];
    }
    return at + size;
}

/// Room for at least `size` octets (at most kTextSize) after the text: writes the text out if
/// they would not fit. The caller adds what it used to `textLength`.
char* asnDumpRoom(AsnDump& dump, size_t size);

/// Adds text of any length.
void asnDumpText(AsnDump& dump, std::string_view text);

/// Begins a line: adds the path, and gives room for `size` octets more.
char* asnDumpLine(AsnDump& dump, size_t size);

/// Formats a number at `at`, which has room for kAsnNumberSize octets, and returns its end.
char* asnFormatNumber(char* at, uint32_t value);
char* asnFormatNumber(char* at, int32_t value);
char* asnFormatNumber(char* at, int64_t value);
