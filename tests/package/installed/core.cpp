// The installed core: exits with 0 if a message decodes to its value and its text.
#include <H245.h>
#include <TamselCore.h>

int main() {
    static const unsigned char octets[] = {0x01, 0x00, 0x00, 0x80, 0x92, 0x4F, 0xD5};
    static TamselDecoder decoder;
    if (decoder.decode(kTamsel1998.h245, octets, true) != kAsnOk) return 1;
    std::string_view text;
    if (decoder.dump(&text) != kAsnOk) return 2;
    if (!text.starts_with("MultimediaSystemControlMessage.t = 1\n")) return 3;
    return decoder.value<H245MultimediaSystemControlMessage>().t == 1 ? 0 : 4;
}
