// The exported functions, and the one procedure that they share.

#include "H245.h"
#include "H323.h"
#include "Tamsel.h"
#include "standard_output.h"

namespace {

template <class Message>
int decodeAndDump(const unsigned char* data, unsigned short length, int aligned,
                  const char* outputPath, const char* rootName,
                  AsnStatus (*decode)(AsnContext&, Message&),
                  void (*print)(const char*, const Message&)) {
    if (data == nullptr || length == 0 || outputPath == nullptr) return 0;
    AsnContext ctx;
    if (asnInitContext(ctx, data, length) != kAsnOk) return 0;
    ctx.aligned = aligned != 0 ? 1 : 0;
    AsnMemFirstBlock first;  // on the stack: most messages are decoded without an allocation
    asnMemLend(ctx.memHeap, first);
    Message message{};
    int done = 0;
    StandardOutput output;
    if (decode(ctx, message) == kAsnOk && output.redirect(outputPath)) {
        print(rootName, message);
        output.restore();
        done = 1;
    }
    asnFreeContext(ctx);
    return done;
}

}  // namespace

int TAMSEL_CALL H323RASASNDecode(const unsigned char* data, unsigned short length, int aligned,
                                 const char* outputPath) {
    return decodeAndDump<H225RasMessage>(data, length, aligned, outputPath, "RasMessage",
                                         DecodeH225RasMessage, PrintH225RasMessage);
}

int TAMSEL_CALL H323UserInfoASNDecode(const unsigned char* data, unsigned short length, int aligned,
                                      const char* outputPath) {
    return decodeAndDump<H225H323_UserInformation>(
        data, length, aligned, outputPath, "H323-UserInformation", DecodeH225H323_UserInformation,
        PrintH225H323_UserInformation);
}

int TAMSEL_CALL H323H245ASNDecode(const unsigned char* data, unsigned short length, int aligned,
                                  const char* outputPath) {
    return decodeAndDump<H245MultimediaSystemControlMessage>(
        data, length, aligned, outputPath, "MultimediaSystemControlMessage",
        DecodeH245MultimediaSystemControlMessage, PrintH245MultimediaSystemControlMessage);
}
