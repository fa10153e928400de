// The bit-field trace: where in the message each primitive field began and how many bits it took.
#pragma once

#include "bits.h"

inline bool pu_traceOn(const AsnContext& ctx) {
    return (ctx.flags & ctxFieldTrace) != 0;
}

/// Opens a field at the cursor, named after the name stack and the label. Null where the trace is
/// off or memory is exhausted: the trace never makes a decode fail.
[[gnu::cold]] AsnBitField* pu_openField(AsnContext& ctx, const char* label);
inline AsnBitField* pu_newField(AsnContext& ctx, const char* label) {
    return pu_traceOn(ctx) ? pu_openField(ctx, label) : nullptr;
}

/// Moves the start of the current field to the cursor.
void pu_setFldBitOffset(AsnContext& ctx);

/// Closes the current field at the cursor.
[[gnu::cold]] void pu_closeField(AsnContext& ctx);
inline void pu_setFldBitCount(AsnContext& ctx) {
    if (pu_traceOn(ctx)) pu_closeField(ctx);
}

/// The names that qualify field names; only while the trace is on. The text stays the caller's.
/// pu_pushName returns 0, or -22 with 32 names on the stack; pu_popName null where it is empty.
[[nodiscard]] AsnStatus pu_pushName(AsnContext& ctx, const char* name);
const char* pu_popName(AsnContext& ctx);

/// Prints the table of fields - bits, octets, characters - to standard output, each field's name
/// behind the prefix.
void pu_printBitFieldList(const AsnContext& ctx, const char* prefix);

/// Prints the octets consumed so far to standard output.
void pu_hexDump(const AsnContext& ctx);
