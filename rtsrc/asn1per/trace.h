// The bit-field trace: where in the message each primitive field began and how many bits it took.
// Only the tracing reader calls it (reader.h). Every function tests ctxFieldTrace itself.
#pragma once

#include <span>

#include "context.h"
#include "dump.h"

/// One step of the path of the value that is being read, from the innermost outwards.
struct AsnPathStep {
    const AsnPathStep* outer;  // null: the root
    const char* prefix;        // ".", ".u@" or ".elem["
    const char* name;          // null for an element
    uint32_t index;            // of the element
};

/// Opens a field at the cursor, named after the name stack and the label, which may be null.
/// Returns null if the trace is off or memory is exhausted: the trace never makes a decode fail,
/// and closing a field that was not allocated changes no other.
AsnBitField* pu_newField(AsnContext& ctx, const char* label);

/// The same, named after its path and the label if the context asks for paths.
AsnBitField* asnNewField(AsnContext& ctx, const AsnPathStep* path, const char* label);

/// Moves the start of the current field to the cursor: padding is no part of a field.
void pu_setFldBitOffset(AsnContext& ctx);

/// Closes the current field at the cursor.
void pu_setFldBitCount(AsnContext& ctx);

/// The names that qualify field names, while the trace is on. The text stays the caller's.
/// pu_pushName returns 0, or -22 with 32 names on the stack; pu_popName null if it is empty.
[[nodiscard]] AsnStatus pu_pushName(AsnContext& ctx, const char* name);
const char* pu_popName(AsnContext& ctx);

/// Prints the table of fields (bits, octets, characters) to standard output, the prefix before the
/// name of each field.
void pu_printBitFieldList(const AsnContext& ctx, const char* prefix);

/// The same for the fields of any message, to a sink.
void asnPrintFields(AsnDumpSink sink, const AsnBitFieldList& fields,
                    std::span<const uint8_t> message, const char* prefix);

/// Prints the octets consumed so far to standard output.
void pu_hexDump(const AsnContext& ctx);
