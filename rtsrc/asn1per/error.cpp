#include "error.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr const char* kTexts[] = {
    "Encode buffer overflow",
    "Unexpected end of buffer on decode",
    "Unexpected tag encountered: expected = %s, parsed = %s",
    "Invalid object identifier",
    "Invalid field length detected",
    "Enumerated value %s not in defined set",
    "Duplicate element in SET",
    "Missing required element in SET",
    "Element with tag %s not part of SET",
    "Max elements defined for SEQUENCE OF field exceeded",
    "Element with tag %s is an invalid option in choice",
    "No dynamic memory available",
    "Invalid string type",
    "Invalid hex string",
    "Invalid binary string",
    "Invalid real value",
    "Max items in sized BIT or OCTET STRING field exceeded",
    "Invalid value specification",
    "No definition found for referenced defined value",
    "No definition found for referenced defined type",
    "Invalid tag value",
    "Nesting level too deep",
    "Value constraint violation: field %s, value %s",
    "Value range error: lower bound is greater than upper",
};
static_assert(sizeof kTexts / sizeof *kTexts == 24);

const char* messageOf(AsnStatus status) {
    if (status >= 0) return "normal completion status";
    if (status < -24) return "unrecognized completion status";
    return kTexts[-status - 1];
}

constexpr const char* kTrailFormat = "  Module: %s, Line %d\n";

/// Calls put(character) for the message of `status` with its parameters.
template <class Put>
void eachCharacter(const AsnErrorInfo& errInfo, Put put) {
    int32_t parm = 0;
    for (const char* at = messageOf(errInfo.status); *at != 0; ++at) {
        if (at[0] != '%' || at[1] != 's') {
            put(*at);
            continue;
        }
        const char* value = parm < errInfo.parmCount ? errInfo.parms[parm++] : "?";
        while (*value != 0) put(*value++);
        ++at;
    }
}

/// Passes on the whole message, however long its parameters are. Only if there is no memory for a
/// long message is it truncated.
void reportMessage(const AsnErrorInfo& errInfo, void (*callback)(const char* text, void* argument),
                   void* argument) {
    uint32_t size = 1;
    eachCharacter(errInfo, [&](char) { ++size; });
    char local[200];
    auto* const text = static_cast<char*>(size > sizeof local ? std::malloc(size) : nullptr);
    if (text == nullptr)
        callback(asnErrorText(errInfo, local, sizeof local), argument);
    else
        callback(asnErrorText(errInfo, text, size), argument);
    std::free(text);
}

}  // namespace

AsnStatus asnLogError(AsnErrorInfo& errInfo, AsnStatus status, const char* module, int32_t line) {
    if (errInfo.status == 0) errInfo.status = status;
    if (errInfo.trailCount < 8) errInfo.trail[errInfo.trailCount++] = {module, line};
    return status;
}

int asnAddErrorText(AsnErrorInfo& errInfo, const char* text) {
    if (errInfo.parmCount >= 5) return 0;
    const size_t size = std::strlen(text) + 1;
    auto* copy = static_cast<char*>(std::malloc(size));
    if (copy == nullptr) return 0;
    std::memcpy(copy, text, size);
    errInfo.parms[errInfo.parmCount++] = copy;
    return 1;
}

int asnAddErrorInt(AsnErrorInfo& errInfo, int32_t value) {
    char text[16];
    std::snprintf(text, sizeof text, "%d", static_cast<int>(value));
    return asnAddErrorText(errInfo, text);
}

int asnAddErrorUnsigned(AsnErrorInfo& errInfo, uint32_t value) {
    char text[16];
    std::snprintf(text, sizeof text, "%u", static_cast<unsigned>(value));
    return asnAddErrorText(errInfo, text);
}

int asnAddErrorHex(AsnErrorInfo& errInfo, uint16_t value) {
    char text[8];
    std::snprintf(text, sizeof text, "%04x", static_cast<unsigned>(value));
    return asnAddErrorText(errInfo, text);
}

void asnClearErrorParams(AsnErrorInfo& errInfo) {
    for (int32_t i = 0; i < errInfo.parmCount; ++i) std::free(errInfo.parms[i]);
    errInfo.parmCount = 0;
    errInfo.status = 0;
}

char* asnErrorText(const AsnErrorInfo& errInfo, char* buffer, uint32_t size) {
    if (size == 0) return buffer;
    uint32_t used = 0;
    eachCharacter(errInfo, [&](char c) {
        if (used + 1 < size) buffer[used++] = c;
    });
    buffer[used] = 0;
    return buffer;
}

void asnPrintError(AsnErrorInfo& errInfo) {
    std::printf("ASN.1 ERROR: Status %d\n", static_cast<int>(errInfo.status));
    eachCharacter(errInfo, [](char c) { std::putchar(c); });
    std::printf("\nStack trace:");
    while (errInfo.trailCount > 0) {
        const AsnTrailEntry& entry = errInfo.trail[--errInfo.trailCount];
        std::printf(kTrailFormat, entry.module, static_cast<int>(entry.line));
    }
    asnClearErrorParams(errInfo);
}

void asnLogErrorCb(AsnErrorInfo& errInfo, void (*callback)(const char* text, void* argument),
                   void* argument) {
    char line[200];
    std::snprintf(line, sizeof line, "ASN.1 ERROR: Status %d", static_cast<int>(errInfo.status));
    callback(line, argument);
    reportMessage(errInfo, callback, argument);
    for (int32_t i = errInfo.trailCount; i > 0; --i) {
        const AsnTrailEntry& entry = errInfo.trail[i - 1];
        std::snprintf(line, sizeof line, kTrailFormat, entry.module, static_cast<int>(entry.line));
        callback(line, argument);
    }
    asnClearErrorParams(errInfo);
}
