// The primitive value printers.
//
// Each has two forms: with the path as text, for hosts, it prints to standard output; with a dump,
// for generated printers, it adds to that dump under its current path. Both give the same octets.
// None of them checks its input or reports anything. `separator` is between path and member name;
// every caller passes ".".
#pragma once

#include "dump.h"
#include "objid.h"
#include "opentypes.h"
#include "published.h"
#include "strings.h"

// Character strings are printed octet for octet, unless the dump is `escaped`, for a terminal: then
// what is not printable ASCII becomes \xNN, and a backslash becomes two.
void asnPrintBoolean(AsnDump& dump, uint8_t value);      // path = TRUE
void asnPrintInteger(AsnDump& dump, int32_t value);      // path = -1
void asnPrintUnsigned(AsnDump& dump, uint32_t value);    // path = 4294967295
void asnPrintCharStr(AsnDump& dump, const char* text);   // path = 'text'
void asnPrintReal(AsnDump& dump, double value);          // path = 0.500000
void asnPrintOID(AsnDump& dump, const AsnObjId& value);  // two lines: path = {, and 0 0 8 }
void asnPrintOIDValue(AsnDump& dump, const AsnObjId& value);

void asnPrintLongInteger(AsnDump& dump, int64_t value);  // path = -1

// Count line, data line, and a hex dump of the octets. A BMPString's characters are dumped as the
// machine holds them.
void asnPrintBitStr(AsnDump& dump, uint32_t numbits, const uint8_t* data, const char* separator);
void asnPrintOctStr(AsnDump& dump, uint32_t numocts, const uint8_t* data, const char* separator);
void asnPrintOpenType(AsnDump& dump, uint32_t numocts, const uint8_t* data, const char* separator);
void asnPrintBMPStr(AsnDump& dump, const AsnBMPString& value, const char* separator);

/// The additions that a SEQUENCE does not know, as open types under path.extElem1 (the first one
/// after those that are known), path.extElem2 and on: those that are present.
void asnPrintUnknownAdditions(AsnDump& dump, const AsnUnknownAdditions& additions);

/// 16 octets a line: hex column of 48, a blank, ASCII column. The last line, if partial, loses the
/// trailing blanks of its ASCII column; no octets give one line of 49 blanks.
void asnHexDump(AsnDump& dump, const uint8_t* data, uint32_t length);
void asnHexDumpFile(FILE* stream, const uint8_t* data, uint32_t length);

// The structural lines: path.m@namePresent = 1, path.t = 3, path.n = 2.
void asnPrintPresence(AsnDump& dump, std::string_view name, uint32_t present);
void asnPrintTag(AsnDump& dump, uint32_t t);
void asnPrintCount(AsnDump& dump, uint32_t n);

void asnPrintBoolean(const char* path, uint8_t value);
void asnPrintInteger(const char* path, int32_t value);
void asnPrintUnsigned(const char* path, uint32_t value);
void asnPrintCharStr(const char* path, const char* text);
void asnPrintReal(const char* path, double value);
void asnPrintOID(const char* path, const AsnObjId& value);
void asnPrintOIDValue(const AsnObjId& value);
void asnPrintBitStr(const char* path, uint32_t numbits, const uint8_t* data, const char* separator);
void asnPrintOctStr(const char* path, uint32_t numocts, const uint8_t* data, const char* separator);
void asnPrintOpenType(const char* path, uint32_t numocts, const uint8_t* data,
                      const char* separator);
void asnPrintBMPStr(const char* path, const AsnBMPString& value, const char* separator);
void asnHexDump(const uint8_t* data, uint32_t length);
