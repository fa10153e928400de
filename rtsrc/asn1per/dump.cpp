#include "dump.h"

#include <algorithm>
#include <charconv>

namespace {

void writeOut(AsnDump& dump) {
    dump.sink.write(dump.sink.target, dump.text, dump.textLength);
    dump.textLength = 0;
}

}  // namespace

AsnDumpSink asnStreamSink(FILE* stream) {
    return {[](void* target, const char* text, size_t size) {
                (void)std::fwrite(text, 1, size, static_cast<FILE*>(target));
            },
            stream};
}

AsnDump::AsnDump(AsnDumpSink to, const char* rootPath)
    : sink(to), textLength(0), pathLength(0), innermost(nullptr), root(rootPath) {
    if (root.size() > kPathSize / 4) return;
    pathLength = root.size();
    asnAppend(path, root);
    root = {};
}

AsnDump::~AsnDump() {
    writeOut(*this);
}

AsnDumpStep::AsnDumpStep(AsnDump& dump, std::string_view text) : dump_(dump), text_(text) {
    // The step around it is written to the path now, unless that is full.
    const AsnDumpStep* const around = dump.innermost;
    if (around != nullptr && around->outer_ == nullptr &&
        dump.pathLength + around->text_.size() <= AsnDump::kPathSize) {
        asnAppend(dump.path + dump.pathLength, around->text_);
        dump.pathLength += around->text_.size();
        dump.innermost = nullptr;
    }
    pathLength_ = dump.pathLength;
    outer_ = dump.innermost;
    dump.innermost = this;
}

AsnIndexText::AsnIndexText(uint32_t index) {
    char* end = asnAppend(text, ".elem[");
    end = asnFormatNumber(end, static_cast<int32_t>(index));
    *end = ']';
    length = static_cast<size_t>(end + 1 - text);
}

char* asnDumpRoom(AsnDump& dump, size_t size) {
    if (dump.textLength + size > AsnDump::kTextSize) writeOut(dump);
    return dump.text + dump.textLength;
}

void asnDumpText(AsnDump& dump, std::string_view text) {
    while (!text.empty()) {
        if (dump.textLength == AsnDump::kTextSize) writeOut(dump);
        const size_t size = std::min(text.size(), AsnDump::kTextSize - dump.textLength);
        const std::string_view part(text.data(), size);
        asnAppend(dump.text + dump.textLength, part);
        dump.textLength += part.size();
        text.remove_prefix(part.size());
    }
}

namespace {

void writeSteps(AsnDump& dump, const AsnDumpStep* innermost) {
    if (innermost == nullptr) return;
    writeSteps(dump, innermost->outer());
    asnDumpText(dump, innermost->text());
}

/// A line whose path does not fit into the buffers: piece by piece.
[[gnu::noinline]] char* longLine(AsnDump& dump, size_t size) {
    asnDumpText(dump, dump.root);
    asnDumpText(dump, {dump.path, dump.pathLength});
    writeSteps(dump, dump.innermost);
    return asnDumpRoom(dump, size);
}

}  // namespace

char* asnDumpLine(AsnDump& dump, size_t size) {
    const AsnDumpStep* const step = dump.innermost;
    const std::string_view last = step != nullptr ? step->text() : std::string_view();
    const size_t length = dump.pathLength;
    const bool isLong = dump.textLength + length + last.size() + size > AsnDump::kTextSize ||
                        !dump.root.empty() || (step != nullptr && step->outer() != nullptr);
    if (isLong) return longLine(dump, size);
    char* const at = dump.text + dump.textLength;
    for (size_t i = 0; i < length; i += AsnDump::kBlock)
        std::memcpy(at + i, dump.path + i, AsnDump::kBlock);
    dump.textLength += length + last.size();
    return asnAppend(at + length, last);
}

char* asnFormatNumber(char* at, uint32_t value) {
    return std::to_chars(at, at + kAsnNumberSize, value).ptr;
}

char* asnFormatNumber(char* at, int32_t value) {
    return std::to_chars(at, at + kAsnNumberSize, value).ptr;
}

char* asnFormatNumber(char* at, int64_t value) {
    return std::to_chars(at, at + kAsnNumberSize, value).ptr;
}
