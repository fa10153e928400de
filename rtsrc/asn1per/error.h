// Status codes and the error trail of one decoding run.
#pragma once

#include <cstdint>

/// What every decoding function returns: 0 for success, a negative code for a failure, or
/// `kAsnFragment` from the length reader. The failures are -1 to -24; `asnErrorText` has a text for
/// each, also for those that only an encoder or a BER run-time can meet.
using AsnStatus = int32_t;

constexpr AsnStatus kAsnOk = 0;
constexpr AsnStatus kAsnFragment = 2;          // a length of a multiple of 16384, more follows
constexpr AsnStatus kAsnEndOfData = -2;        // fewer bits left than wanted
constexpr AsnStatus kAsnInvalidObjectId = -4;  // more than 128 arcs
constexpr AsnStatus kAsnInvalidLength = -5;    // contents that end within a value; a wrong length
constexpr AsnStatus kAsnInvalidChoice = -11;   // index that names no known alternative
constexpr AsnStatus kAsnNoMemory = -12;        // memory could not be allocated
constexpr AsnStatus kAsnInvalidReal = -16;     // contents that X.690 8.5 does not allow
constexpr AsnStatus kAsnTooLong = -17;         // string longer than its fixed buffer
constexpr AsnStatus kAsnTooDeep = -22;         // nesting beyond the limit
constexpr AsnStatus kAsnConstraint = -23;      // a size, character or item that is not allowed
constexpr AsnStatus kAsnRange = -24;           // lower bound above upper; more than 64 bits

struct AsnTrailEntry {
    const char* module;  // constant text: "rtsrc/asn1per", or the generated module
    int32_t line;
};

/// The first failure of a run and the sites that it passed on its way out. Empty in a new context.
/// Recording never fails: what does not fit is dropped.
struct AsnErrorInfo {
    AsnTrailEntry trail[8];  // entry 0 is the innermost site
    int32_t trailCount;      // 0 .. 8
    AsnStatus status;        // the first failure recorded, 0 while none
    int32_t parmCount;       // 0 .. 5
    char* parms[5];          // owned, from malloc; fill the "%s" of the message texts in order
};

/// Records a failure (the first one sets `status`) and the site that saw it, if the trail has room.
/// Returns `status` unchanged, so that a caller logs and returns in one step.
[[gnu::cold]] AsnStatus asnLogError(AsnErrorInfo& errInfo, AsnStatus status, const char* module,
                                    int32_t line);

/// Stores a private copy of the text as the next message parameter. Returns 1, or 0 if the list
/// is full or memory is exhausted.
int asnAddErrorText(AsnErrorInfo& errInfo, const char* text);
int asnAddErrorInt(AsnErrorInfo& errInfo, int32_t value);
int asnAddErrorUnsigned(AsnErrorInfo& errInfo, uint32_t value);
int asnAddErrorHex(AsnErrorInfo& errInfo, uint16_t value);

/// Frees the parameters and sets `parmCount` and `status` to 0. The trail stays.
void asnClearErrorParams(AsnErrorInfo& errInfo);

/// Formats the message of `status` into `buffer` and returns it: `size` octets with the NUL, longer
/// text is truncated. A "%s" without a parameter becomes "?".
char* asnErrorText(const AsnErrorInfo& errInfo, char* buffer, uint32_t size);

/// Prints status, message and trail (outermost site first) to standard output, then empties the
/// trail and clears the parameters.
void asnPrintError(AsnErrorInfo& errInfo);

/// Passes the same report to a callback: status and message without a line break, then each site of
/// the trail with its line break. Then clears the parameters; the trail stays.
void asnLogErrorCb(AsnErrorInfo& errInfo, void (*callback)(const char* text, void* argument),
                   void* argument);
