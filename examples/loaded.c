/* Decodes one H.245 message; finds the DLL when it runs, and needs no import library.
 *
 *   i686-w64-mingw32-gcc loaded.c -o loaded.exe
 *   cl /MD loaded.c */
#include <stdio.h>
#include <windows.h>

typedef int(__stdcall* Decode)(const unsigned char* data, unsigned short length, int aligned,
                               const char* outputPath);

int main(void) {
    static const unsigned char message[] = {0x01, 0x00, 0x00, 0x80, 0x92, 0x4F, 0xD5};
    const HMODULE library = LoadLibraryA("Tamsel.dll");
    if (library == NULL) {
        fprintf(stderr, "Tamsel.dll cannot be loaded: error %lu\n", GetLastError());
        return 1;
    }
    const Decode decode = (Decode)(void*)GetProcAddress(library, "_H323H245ASNDecode@16");
    if (decode == NULL || !decode(message, sizeof message, 1, "message.txt")) {
        fprintf(stderr, "not an H.245 message, or message.txt cannot be written\n");
        return 1;
    }
    fprintf(stderr, "message.txt is written\n");
    return 0;
}
