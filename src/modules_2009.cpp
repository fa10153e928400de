// The message families of the modules of 2009.

#include "2009/H245.h"
#include "2009/H323.h"
#include "modules.h"

const TamselModules kTamsel2009{
    "2009",
    tamselFamily<asn2009::H225RasMessage, asn2009::DecodeH225RasMessage,
                 asn2009::PrintH225RasMessage>("ras", "H.225.0 RAS", "RasMessage"),
    tamselFamily<asn2009::H225H323_UserInformation, asn2009::DecodeH225H323_UserInformation,
                 asn2009::PrintH225H323_UserInformation>("ui", "H.225.0 call signalling",
                                                         "H323-UserInformation"),
    tamselFamily<asn2009::H245MultimediaSystemControlMessage,
                 asn2009::DecodeH245MultimediaSystemControlMessage,
                 asn2009::PrintH245MultimediaSystemControlMessage>(
        "h245", "H.245", "MultimediaSystemControlMessage"),
};
