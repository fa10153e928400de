#include "print.h"

#include <cstring>

namespace {

/// Completes the text that asnDumpRoom or asnDumpLine began; it ends at `end`.
void commit(AsnDump& dump, const char* end) {
    dump.textLength = static_cast<size_t>(end - dump.text);
}

/// path, middle, number.
template <class Number>
void numberLine(AsnDump& dump, std::string_view middle, Number value) {
    char* at = asnAppend(asnDumpLine(dump, middle.size() + kAsnNumberSize + 1), middle);
    at = asnFormatNumber(at, value);
    *at++ = '\n';
    commit(dump, at);
}

/// The three parts that all strings of octets share.
void printOctets(AsnDump& dump, std::string_view separator, std::string_view countName,
                 uint32_t count, const uint8_t* data, uint32_t octets) {
    (void)asnDumpLine(dump, 0);
    asnDumpText(dump, separator);
    char* at = asnAppend(asnDumpRoom(dump, countName.size() + kAsnNumberSize + 1), countName);
    at = asnFormatNumber(at, count);
    *at++ = '\n';
    commit(dump, at);
    (void)asnDumpLine(dump, 0);
    asnDumpText(dump, separator);
    asnDumpText(dump, "data = \n");
    asnHexDump(dump, data, octets);
}

constexpr size_t kHexColumn = 48;

/// What a dump line has for each octet: two digits and a blank, and a character. A fourth octet
/// lets an entry be copied as one word.
constexpr auto kOctetTexts = [] {
    struct {
        char hex[256][4];
        char character[256];
    } texts{};
    for (int octet = 0; octet < 256; ++octet) {
        texts.hex[octet][0] = "0123456789abcdef"[octet / 16];
        texts.hex[octet][1] = "0123456789abcdef"[octet % 16];
        texts.hex[octet][2] = texts.hex[octet][3] = ' ';
        texts.character[octet] = octet >= 0x20 && octet <= 0x7E ? static_cast<char>(octet) : '.';
    }
    return texts;
}();

/// Entry i of a line. It also writes the octet after the entry, which the next entry or the blank
/// between the columns overwrites.
void putOctet(char* line, uint32_t i, uint8_t octet) {
    std::memcpy(line + size_t{3} * i, kOctetTexts.hex[octet], 4);
    line[kHexColumn + 1 + i] = kOctetTexts.character[octet];
}

/// The text without any control character, whatever the character set of a terminal is.
void escapedText(AsnDump& dump, std::string_view text) {
    for (const char c : text) {
        char* const at = asnDumpRoom(dump, 4);
        const auto octet = static_cast<uint8_t>(c);
        if (c == '\\')
            commit(dump, asnAppend(at, "\\\\"));
        else if (octet >= 0x20 && octet <= 0x7E)
            commit(dump, asnAppend(at, {&c, 1}));
        else
            commit(dump, asnAppend(asnAppend(at, "\\x"), {kOctetTexts.hex[octet], 2}));
    }
}

}  // namespace

void asnPrintBoolean(AsnDump& dump, uint8_t value) {
    const std::string_view text = value != 0 ? " = TRUE\n" : " = FALSE\n";
    commit(dump, asnAppend(asnDumpLine(dump, text.size()), text));
}

void asnPrintInteger(AsnDump& dump, int32_t value) {
    numberLine(dump, " = ", value);
}

void asnPrintLongInteger(AsnDump& dump, int64_t value) {
    numberLine(dump, " = ", value);
}

void asnPrintUnknownAdditions(AsnDump& dump, const AsnUnknownAdditions& additions) {
    for (uint32_t i = 0; i < additions.n; ++i) {
        const AsnUnknownAddition& addition = additions.elem[i];
        char text[sizeof ".extElem" + kAsnNumberSize];
        const char* const end = asnFormatNumber(asnAppend(text, ".extElem"), addition.number);
        const AsnDumpStep step(dump, {text, static_cast<size_t>(end - text)});
        asnPrintOpenType(dump, addition.contents.numocts, addition.contents.data, ".");
    }
}

void asnPrintUnsigned(AsnDump& dump, uint32_t value) {
    numberLine(dump, " = ", value);
}

void asnPrintCharStr(AsnDump& dump, const char* text) {
    commit(dump, asnAppend(asnDumpLine(dump, 4), " = '"));
    if (text != nullptr) dump.escaped ? escapedText(dump, text) : asnDumpText(dump, text);
    asnDumpText(dump, "'\n");
}

void asnPrintReal(AsnDump& dump, double value) {
    char text[512];  // 309 digits before the point
    std::snprintf(text, sizeof text, " = %f\n", value);
    (void)asnDumpLine(dump, 0);
    asnDumpText(dump, text);
}

void asnPrintOID(AsnDump& dump, const AsnObjId& value) {
    commit(dump, asnAppend(asnDumpLine(dump, 3), " = "));
    asnPrintOIDValue(dump, value);
}

void asnPrintOIDValue(AsnDump& dump, const AsnObjId& value) {
    char* at = asnAppend(asnDumpRoom(dump, 3), "{ \n");
    commit(dump, at);
    at = asnDumpRoom(dump, sizeof value.subid / sizeof *value.subid * (kAsnNumberSize + 1) + 2);
    for (int32_t i = 0; i < value.numids; ++i) {
        at = asnFormatNumber(at, static_cast<int32_t>(value.subid[i]));
        *at++ = ' ';
    }
    commit(dump, asnAppend(at, "}\n"));
}

void asnPrintBitStr(AsnDump& dump, uint32_t numbits, const uint8_t* data, const char* separator) {
    const uint32_t octets = numbits / 8 + (numbits % 8 != 0 ? 1 : 0);
    printOctets(dump, separator, "numbits = ", numbits, data, octets);
}

void asnPrintOctStr(AsnDump& dump, uint32_t numocts, const uint8_t* data, const char* separator) {
    printOctets(dump, separator, "numocts = ", numocts, data, numocts);
}

void asnPrintOpenType(AsnDump& dump, uint32_t numocts, const uint8_t* data, const char* separator) {
    printOctets(dump, separator, "numocts = ", numocts, data, numocts);
}

void asnPrintBMPStr(AsnDump& dump, const AsnBMPString& value, const char* separator) {
    printOctets(dump, separator, "nchars = ", value.nchars,
                reinterpret_cast<const uint8_t*>(value.data), value.nchars * 2);
}

void asnHexDump(AsnDump& dump, const uint8_t* data, uint32_t length) {
    uint32_t done = 0;
    for (; length - done >= 16; done += 16) {
        char* const line = asnDumpRoom(dump, kHexColumn + 18);
        for (uint32_t i = 0; i < 16; ++i) putOctet(line, i, data[done + i]);
        line[kHexColumn + 17] = '\n';
        commit(dump, line + kHexColumn + 18);
    }
    const uint32_t rest = length - done;
    if (rest == 0 && length != 0) return;
    char* const line = asnDumpRoom(dump, kHexColumn + 18);
    std::memset(line, ' ', kHexColumn + 1);
    for (uint32_t i = 0; i < rest; ++i) putOctet(line, i, data[done + i]);
    char* end = line + kHexColumn + 1 + rest;
    while (end != line + kHexColumn + 1 && end[-1] == ' ') --end;
    *end++ = '\n';
    commit(dump, end);
}

void asnHexDumpFile(FILE* stream, const uint8_t* data, uint32_t length) {
    AsnDump dump(stream, "");
    asnHexDump(dump, data, length);
}

void asnPrintPresence(AsnDump& dump, std::string_view name, uint32_t present) {
    constexpr std::string_view kBefore = ".m@";
    constexpr std::string_view kAfter = "Present = 0\n";
    char* at = asnDumpLine(dump, kBefore.size() + name.size() + kAfter.size());
    at = asnAppend(asnAppend(asnAppend(at, kBefore), name), kAfter);
    at[-2] = static_cast<char>('0' + present);
    commit(dump, at);
}

void asnPrintTag(AsnDump& dump, uint32_t t) {
    numberLine(dump, ".t = ", static_cast<int32_t>(t));
}

void asnPrintCount(AsnDump& dump, uint32_t n) {
    numberLine(dump, ".n = ", static_cast<int32_t>(n));
}

void asnPrintBoolean(const char* path, uint8_t value) {
    AsnDump dump(stdout, path);
    asnPrintBoolean(dump, value);
}

void asnPrintInteger(const char* path, int32_t value) {
    AsnDump dump(stdout, path);
    asnPrintInteger(dump, value);
}

void asnPrintUnsigned(const char* path, uint32_t value) {
    AsnDump dump(stdout, path);
    asnPrintUnsigned(dump, value);
}

void asnPrintCharStr(const char* path, const char* text) {
    AsnDump dump(stdout, path);
    asnPrintCharStr(dump, text);
}

void asnPrintReal(const char* path, double value) {
    AsnDump dump(stdout, path);
    asnPrintReal(dump, value);
}

void asnPrintOID(const char* path, const AsnObjId& value) {
    AsnDump dump(stdout, path);
    asnPrintOID(dump, value);
}

void asnPrintOIDValue(const AsnObjId& value) {
    AsnDump dump(stdout, "");
    asnPrintOIDValue(dump, value);
}

void asnPrintBitStr(const char* path, uint32_t numbits, const uint8_t* data,
                    const char* separator) {
    AsnDump dump(stdout, path);
    asnPrintBitStr(dump, numbits, data, separator);
}

void asnPrintOctStr(const char* path, uint32_t numocts, const uint8_t* data,
                    const char* separator) {
    AsnDump dump(stdout, path);
    asnPrintOctStr(dump, numocts, data, separator);
}

void asnPrintOpenType(const char* path, uint32_t numocts, const uint8_t* data,
                      const char* separator) {
    AsnDump dump(stdout, path);
    asnPrintOpenType(dump, numocts, data, separator);
}

void asnPrintBMPStr(const char* path, const AsnBMPString& value, const char* separator) {
    AsnDump dump(stdout, path);
    asnPrintBMPStr(dump, value, separator);
}

void asnHexDump(const uint8_t* data, uint32_t length) {
    asnHexDumpFile(stdout, data, length);
}
