// The message families of the modules of 1998.

#include "H245.h"
#include "H323.h"
#include "TamselCore.h"
#include "asn1per/typetable.h"

namespace {

template <class Message, AsnStatus (*Decode)(AsnContext&, Message&),
          void (*Print)(AsnDump&, const Message&)>
constexpr TamselFamily family(const char* name, const char* title, const char* root) {
    static_assert(sizeof(Message) <= kTamselValueSize);
    return {name,
            title,
            root,
            sizeof(Message),
            asnDecodeAny<Message, Decode>,
            asnPrintAny<Message, Print>};
}

}  // namespace

const TamselModules kTamsel1998{
    "1998",
    family<H225RasMessage, DecodeH225RasMessage, PrintH225RasMessage>("ras", "H.225.0 RAS",
                                                                      "RasMessage"),
    family<H225H323_UserInformation, DecodeH225H323_UserInformation, PrintH225H323_UserInformation>(
        "ui", "H.225.0 call signalling", "H323-UserInformation"),
    family<H245MultimediaSystemControlMessage, DecodeH245MultimediaSystemControlMessage,
           PrintH245MultimediaSystemControlMessage>("h245", "H.245",
                                                    "MultimediaSystemControlMessage"),
};
