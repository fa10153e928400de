/* Includes only the public header, as C, and calls the shared library. */
#include "Tamsel.h"

int main(void) {
    static const unsigned char message[] = {0x01, 0x00, 0x00, 0x80, 0x92, 0x4F, 0xD5};
    const char* const path = "header_test.txt";
    if (H323H245ASNDecode(message, sizeof message, 1, path) != 1) return 1;
    if (H323RASASNDecode(message, 1, 1, path) != 0) return 2;
    if (H323UserInfoASNDecode(message, 1, 1, path) != 0) return 3;
    return 0;
}
