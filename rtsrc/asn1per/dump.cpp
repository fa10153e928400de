#include "dump.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr auto kDigitPairs = [] {
    struct {
        char text[200];
    } pairs{};
    for (int i = 0; i < 100; ++i) {
        pairs.text[2 * i] = static_cast<char>('0' + i / 10);
        pairs.text[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

void writeOut(AsnDump& dump) {
    dump.sink.write(dump.sink.target, dump.text, dump.textLength);
    dump.textLength = 0;
}

char* append(char* at, std::string_view text) {
    std::memcpy(at, text.data(), text.size());
    return at + text.size();
}

}  // namespace

AsnDumpSink asnStreamSink(FILE* stream) {
    return {[](void* target, const char* text, size_t size) {
                (void)std::fwrite(text, 1, size, static_cast<FILE*>(target));
            },
            stream};
}

AsnDump::AsnDump(AsnDumpSink to, const char* rootPath)
    : sink(to), textLength(0), pathLength(0), spilled(nullptr), root(rootPath) {
    if (root.size() > kPathSize / 4) return;
    pathLength = root.size();
    append(path, root);
    root = {};
}

AsnDump::~AsnDump() {
    writeOut(*this);
}

AsnDumpStep::AsnDumpStep(AsnDump& dump, const AsnStepPrefix& prefix, std::string_view name)
    : dump_(dump),
      pathLength_(dump.pathLength),
      outer_(dump.spilled),
      prefix_(prefix),
      name_(name) {
    const size_t size = prefix.length + name.size();
    if (dump.spilled != nullptr || dump.pathLength + size > AsnDump::kPathSize) {
        dump.spilled = this;
        return;
    }
    char* const at = dump.path + dump.pathLength;
    std::memcpy(at, prefix.text, sizeof prefix.text);
    append(at + prefix.length, name);
    dump.pathLength += size;
}

void AsnDumpStep::write() const {
    if (outer_ != nullptr) outer_->write();
    asnDumpText(dump_, {prefix_.text, prefix_.length});
    asnDumpText(dump_, name_);
}

AsnIndexText::AsnIndexText(uint32_t index) {
    char* const end = asnFormatInteger(text, static_cast<int32_t>(index));
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
        append(dump.text + dump.textLength, part);
        dump.textLength += part.size();
        text.remove_prefix(part.size());
    }
}

char* asnDumpLine(AsnDump& dump, size_t size) {
    if (!dump.root.empty()) asnDumpText(dump, dump.root);
    char* const at = asnDumpRoom(dump, dump.pathLength + size);
    for (size_t i = 0; i < dump.pathLength; i += AsnDump::kBlock)
        std::memcpy(at + i, dump.path + i, AsnDump::kBlock);
    dump.textLength += dump.pathLength;
    if (dump.spilled == nullptr) return at + dump.pathLength;
    dump.spilled->write();
    return asnDumpRoom(dump, size);
}

char* asnFormatUnsigned(char* at, uint32_t value) {
    if (value < 10) {
        *at = static_cast<char>('0' + value);
        return at + 1;
    }
    char digits[10];
    size_t first = sizeof digits;
    while (value >= 100) {
        first -= 2;
        std::memcpy(digits + first, kDigitPairs.text + size_t{2} * (value % 100), 2);
        value /= 100;
    }
    if (value >= 10) {
        first -= 2;
        std::memcpy(digits + first, kDigitPairs.text + size_t{2} * value, 2);
    } else {
        digits[--first] = static_cast<char>('0' + value);
    }
    return append(at, {digits + first, sizeof digits - first});
}

char* asnFormatInteger(char* at, int32_t value) {
    if (value >= 0) return asnFormatUnsigned(at, static_cast<uint32_t>(value));
    *at = '-';
    return asnFormatUnsigned(at + 1, 0U - static_cast<uint32_t>(value));
}
