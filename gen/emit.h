// Writes one resolved module as C++. Each function fills templates; the model and the table of
// kinds decide what is filled in.
#pragma once

#include <string>

#include "model.h"

std::string emitHeader(const Module& module);         // H245.h: structures and prototypes
std::string emitNames(const Module& module);          // H245Names.h: of alternatives
std::string emitDecoders(const Module& module);       // H245Decode.h: constants and decoders
std::string emitPlainReading(const Module& module);   // H245Decode.cpp: the decoders instantiated
std::string emitTracedReading(const Module& module);  // H245Trace.cpp: the same, traced
std::string emitPrinters(const Module& module);       // H245Print.cpp
std::string emitTypes(const Module& module);          // H245Types.cpp: the table of all types

// --- of one type with functions of its own: for the table of kinds ---

std::string aliasStructure(const Type& type);
std::string octetsStructure(const Type& type);
std::string bitsStructure(const Type& type);
std::string sequenceStructure(const Type& type);
std::string choiceStructure(const Type& type);
std::string listStructure(const Type& type);

std::string decodeSimple(const Type& type);
std::string decodeOtherName(const Type& type);
std::string decodeSequence(const Type& type);
std::string decodeChoice(const Type& type);
std::string decodeList(const Type& type);

std::string dumpSimple(const Type& type);
std::string dumpOtherName(const Type& type);
std::string dumpSequence(const Type& type);
std::string dumpChoice(const Type& type);
std::string dumpList(const Type& type);

// --- shared by the emitters ---

/// Where a value is: an expression, its address, what selects a member of it, and the reader that
/// knows its path.
struct Where {
    std::string value;
    std::string address;
    std::string record;
    std::string reader = "in";
};
Where valueIn(const std::string& name);     // "value.a"
Where valueAt(const std::string& pointer);  // "value.u.a" of an alternative that is pointed to
Where valueOf(const Member& alternative);   // in the union, or pointed to by it

std::string readCall(const Type& type, const Where& where);
std::string printCall(const Type& type, const Where& where);
/// The size constraint to register before a read call, or nothing.
std::string sizeToSet(const Type& type);
/// The same, but always the call of the kind, even if the type has a decoder: for that decoder.
std::string kindReadCall(const Type& type, const Where& where);
std::string kindSizeToSet(const Type& type);
/// "{8, 7}": an AsnElementBits.
std::string bitsText(LeastBits bits);

/// "// MultiplexElement ::= SEQUENCE (H245.asn:1400)"
std::string typeComment(const Type& type);
/// The first line of a generated file.
std::string heading(const Module& module, const std::string& purpose);
/// The lines that open and close the namespace of a set, if it has one.
std::string namespaceBegin(const Module& module);
std::string namespaceEnd(const Module& module);
/// Text as a C++ literal.
std::string literal(const std::string& text);
