/* Decodes one H.245 message; linked with the import library.
 *
 *   i686-w64-mingw32-gcc -I.. linked.c ../libTamsel.a -o linked.exe
 *   cl /MD /I.. linked.c ..\libTamsel.a /link /safeseh:no
 *
 * Tamsel.dll lies next to linked.exe when it runs. */
#include <stdio.h>

#include "Tamsel.h"

int main(void) {
    static const unsigned char message[] = {0x01, 0x00, 0x00, 0x80, 0x92, 0x4F, 0xD5};
    if (!H323H245ASNDecode(message, sizeof message, 1 /* ALIGNED */, "message.txt")) {
        fprintf(stderr, "not an H.245 message, or message.txt cannot be written\n");
        return 1;
    }
    fprintf(stderr, "message.txt is written\n");
    return 0;
}
