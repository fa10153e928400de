// What describes a set of modules to the core.
#pragma once

#include "TamselCore.h"
#include "asn1per/typetable.h"

template <class Message, AsnStatus (*Decode)(AsnContext&, Message&),
          void (*Print)(AsnDump&, const Message&)>
constexpr TamselFamily tamselFamily(const char* name, const char* title, const char* root) {
    static_assert(sizeof(Message) <= kTamselValueSize);
    return {name,
            title,
            root,
            sizeof(Message),
            asnDecodeAny<Message, Decode>,
            asnPrintAny<Message, Print>};
}
