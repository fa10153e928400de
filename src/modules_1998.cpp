// The message families of the modules of 1998.

#include "H245.h"
#include "H323.h"
#include "modules.h"

const TamselModules kTamsel1998{
    "1998",
    tamselFamily<H225RasMessage, DecodeH225RasMessage, PrintH225RasMessage>("ras", "H.225.0 RAS",
                                                                            "RasMessage"),
    tamselFamily<H225H323_UserInformation, DecodeH225H323_UserInformation,
                 PrintH225H323_UserInformation>("ui", "H.225.0 call signalling",
                                                "H323-UserInformation"),
    tamselFamily<H245MultimediaSystemControlMessage, DecodeH245MultimediaSystemControlMessage,
                 PrintH245MultimediaSystemControlMessage>("h245", "H.245",
                                                          "MultimediaSystemControlMessage"),
};
