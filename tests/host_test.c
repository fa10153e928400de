/* A host program in C: every message of the data folder through the shipped library,
 * linked to it or, with LOAD_AT_RUN_TIME, by name. The dump files are compared octet for octet,
 * with the line ends of the system.
 *
 * usage: host_test DATA NAME...   or, for the console test:   host_test DATA --console NAME */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "Tamsel.h"

typedef int(TAMSEL_CALL* Export)(const unsigned char*, unsigned short, int, const char*);

#if defined(LOAD_AT_RUN_TIME) && defined(_WIN32)
#include <windows.h>
static Export load(const char* name) {
    static HMODULE library;
    char decorated[64];
    if (library == NULL) library = LoadLibraryA("Tamsel.dll");
    sprintf(decorated, "_%s@16", name);
    return (Export)(void*)GetProcAddress(library, decorated);
}
#elif defined(LOAD_AT_RUN_TIME)
#include <dlfcn.h>
static Export load(const char* name) {
    static void* library;
    if (library == NULL) library = dlopen("libTamsel.so.1", RTLD_NOW);
    Export function = NULL;
    *(void**)&function = library != NULL ? dlsym(library, name) : NULL;
    return function;
}
#else
static Export load(const char* name) {
    if (strcmp(name, "H323RASASNDecode") == 0) return H323RASASNDecode;
    return strcmp(name, "H323H245ASNDecode") == 0 ? H323H245ASNDecode : H323UserInfoASNDecode;
}
#endif

#if defined(_WIN32)
#define LINE_END "\r\n"
#else
#define LINE_END "\n"
#endif

static char* readAll(const char* path) {
    FILE* const file = fopen(path, "rb");
    char* const text = calloc(1, 1 << 20);
    if (file == NULL || fread(text, 1, (1 << 20) - 1, file) == 0) text[0] = 0;
    if (file != NULL) fclose(file);
    return text;
}

static int check(const char* folder, const char* name) {
    char path[1024];
    static unsigned char message[65536];
    size_t length = 0;
    unsigned octet = 0;
    sprintf(path, "%s/%s.hex", folder, name);
    char* const hex = readAll(path);
    for (char* at = hex; sscanf(at, "%2x", &octet) == 1; at += 2)
        message[length++] = (unsigned char)octet;
    const char* const function = strstr(name, "h245") != NULL  ? "H323H245ASNDecode"
                                 : strstr(name, "ras") != NULL ? "H323RASASNDecode"
                                                               : "H323UserInfoASNDecode";
    const Export decode = load(function);
    const int aligned = strstr(name, "unaligned") == NULL;
    sprintf(path, "%s/%s.txt", folder, name);
    char* const expected = readAll(path);
    int same = decode != NULL && decode(message, (unsigned short)length, aligned, "host_test.txt");
    char* const dump = readAll("host_test.txt");
    const char* at = dump;
    for (const char* line = expected; same && *line != 0;) {
        const size_t size = strcspn(line, "\n");
        same = strncmp(at, line, size) == 0 && strncmp(at + size, LINE_END, strlen(LINE_END)) == 0;
        at += size + strlen(LINE_END);
        line += size + 1;
    }
    if (!same || *at != 0) fprintf(stderr, "%s: not as expected\n", name);
    same = same && *at == 0;
    free(hex);
    free(expected);
    free(dump);
    return same ? 0 : 1;
}

int main(int argc, char** argv) {
    int wrong = argc < 3;
    int first = 2;
    if (argc > 2 && strcmp(argv[2], "--console") == 0) {
        ++first;
        printf("host before\n");
    }
    for (int i = first; i < argc; ++i) wrong += check(argv[1], argv[i]);
    if (first == 3) {
        printf("host after\n");
        fflush(stdout);
    }
    return wrong == 0 ? 0 : 1;
}
