// Decoders and printers of any type under one signature, and the generated tables of all types of a
// module. The library does not contain the tables: tests and fuzzers walk all types by them.
#pragma once

#include "asn1per.h"

struct AsnTypeInfo {
    const char* name;      // of the structure
    size_t size;           // octets of a value
    AsnElementBits least;  // what its encoding takes at least, padding not counted
    size_t elementSize;    // of a list: octets of an element, else 0
    AsnElementBits elementLeast;
    AsnStatus (*decode)(AsnContext& ctx, void* value);
    void (*print)(AsnDump& dump, const void* value);
};

template <class T, AsnStatus (*Decode)(AsnContext&, T&)>
AsnStatus asnDecodeAny(AsnContext& ctx, void* value) {
    return Decode(ctx, *static_cast<T*>(value));
}

template <class T, void (*Print)(AsnDump&, const T&)>
void asnPrintAny(AsnDump& dump, const void* value) {
    Print(dump, *static_cast<const T*>(value));
}
