// A dump in progress: the path of the value being printed, and the text not yet passed on.
//
// A path is extended step by step and cut back, never formatted anew. Lines are collected in a
// buffer, which goes to the sink when it is full and when the dump ends. Nothing is allocated, no
// path is too long, and a sink reports no failure.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string_view>

class AsnDumpStep;

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
    static constexpr size_t kBlock = 32;  // paths are copied in blocks; both buffers have slack

    /// `rootPath` begins every path; it belongs to the caller and must outlive the dump.
    AsnDump(AsnDumpSink to, const char* rootPath);
    AsnDump(FILE* stream, const char* rootPath) : AsnDump(asnStreamSink(stream), rootPath) {}
    ~AsnDump();  // passes on the rest of the text
    AsnDump(const AsnDump&) = delete;
    AsnDump& operator=(const AsnDump&) = delete;

    AsnDumpSink sink;
    size_t textLength;
    size_t pathLength;
    const AsnDumpStep* spilled;  // the innermost step that did not fit into `path`, or null
    std::string_view root;       // written first if it did not fit into `path`, else empty
    bool escaped = false;        // see print.h
    char path[kPathSize + kBlock];
    char text[kTextSize + kBlock];
};

/// What a step begins with. All eight characters are copied: that takes no call.
struct AsnStepPrefix {
    char text[8];
    uint32_t length;
};
inline constexpr AsnStepPrefix kAsnComponent{{'.'}, 1};
inline constexpr AsnStepPrefix kAsnAlternative{{'.', 'u', '@'}, 3};
inline constexpr AsnStepPrefix kAsnElement{{'.', 'e', 'l', 'e', 'm', '['}, 6};
inline constexpr AsnStepPrefix kAsnUnknown{{'.', 'e', 'x', 't', 'E', 'l', 'e', 'm'}, 8};

/// One step of the path, for as long as it lives: a prefix and a name. Steps end in the reverse of
/// the order in which they began.
class AsnDumpStep {
  public:
    AsnDumpStep(AsnDump& dump, const AsnStepPrefix& prefix, std::string_view name);
    ~AsnDumpStep() {
        dump_.pathLength = pathLength_;
        dump_.spilled = outer_;
    }
    AsnDumpStep(const AsnDumpStep&) = delete;
    AsnDumpStep& operator=(const AsnDumpStep&) = delete;

    /// Writes the spilled steps from the outermost to this one.
    void write() const;

  private:
    AsnDump& dump_;
    size_t pathLength_;         // to cut the path back to
    const AsnDumpStep* outer_;  // the spilled step to go back to
    const AsnStepPrefix& prefix_;
    std::string_view name_;
};

/// ".name" of a SEQUENCE component, ".u@name" of a CHOICE alternative.
struct AsnComponentStep : AsnDumpStep {
    AsnComponentStep(AsnDump& dump, std::string_view name)
        : AsnDumpStep(dump, kAsnComponent, name) {}
};
struct AsnAlternativeStep : AsnDumpStep {
    AsnAlternativeStep(AsnDump& dump, std::string_view name)
        : AsnDumpStep(dump, kAsnAlternative, name) {}
};

/// The text of a list index, "0]" and on.
struct AsnIndexText {
    explicit AsnIndexText(uint32_t index);
    std::string_view view() const { return {text, length}; }
    char text[12];
    size_t length;
};

/// ".elem[index]" of a list element.
struct AsnElementStep : private AsnIndexText, AsnDumpStep {
    AsnElementStep(AsnDump& dump, uint32_t index)
        : AsnIndexText(index), AsnDumpStep(dump, kAsnElement, view()) {}
};

/// Room for at least `size` octets (at most kTextSize) after the text: writes the text out if
/// they would not fit. The caller adds what it used to `textLength`.
char* asnDumpRoom(AsnDump& dump, size_t size);

/// Adds text of any length.
void asnDumpText(AsnDump& dump, std::string_view text);

/// Begins a line: adds the path, and gives room for `size` octets more.
char* asnDumpLine(AsnDump& dump, size_t size);

/// Formats a number at `at` and returns its end: up to 10 digits, and a sign.
char* asnFormatUnsigned(char* at, uint32_t value);
char* asnFormatInteger(char* at, int32_t value);
