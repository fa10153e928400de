/* Hosts on Windows, by what they did with their standard output before the call. Each runs in a
 * process of its own, started by this program and without a console.
 *
 * usage: host_process KIND [PROGRAM]   starts PROGRAM (itself if not given) as that kind of host
 *        host_process KIND --host      is that host: exits with 0, or the line of a failed check */
#include <fcntl.h>
#include <io.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <windows.h>

#include "Tamsel.h"

#define CHECK(condition) \
    if (!(condition)) return __LINE__

static const char* const kDump = "host_process.txt";
static const char* const kOwn = "host_process_own.txt";

static int decode(const char* path) {
    static const unsigned char message[] = {0x01, 0x00, 0x00, 0x80, 0x92, 0x4F, 0xD5};
    return H323H245ASNDecode(message, sizeof message, 1, path);
}

/* Whether a file has the expected octets. */
static int holds(const char* path, const char* expected) {
    char text[4096] = "";
    FILE* const file = fopen(path, "rb");
    if (file == NULL) return 0;
    const size_t size = fread(text, 1, sizeof text - 1, file);
    fclose(file);
    return size == strlen(expected) && strcmp(text, expected) == 0;
}

static int dumpIsThere(void) {
#define ROOT "MultimediaSystemControlMessage"
#define MESSAGE ROOT ".u@request.u@masterSlaveDetermination"
    char expected[1024];
    snprintf(expected, sizeof expected,
             ROOT ".t = 1\r\n" ROOT ".u@request.t = 2\r\n" MESSAGE ".terminalType = 0\r\n" MESSAGE
                  ".statusDeterminationNumber = 9588693\r\n" MESSAGE
                  ".extElem1.numocts = 0\r\n" MESSAGE ".extElem1.data = \r\n%49s\r\n",
             "");
    const int there = holds(kDump, expected);
    remove(kDump);
    return there;
}

/* A file that a host opens after a call does not receive the text that is printed. */
static int ownFileIsSafe(void) {
    FILE* const own = fopen(kOwn, "wb");
    CHECK(own != NULL);
    CHECK(_fileno(own) != _fileno(stdout) && _fileno(own) != 1);
    CHECK(printf("printed\n") == 8 && fflush(stdout) == 0);
    CHECK(fputs("own\n", own) >= 0 && fclose(own) == 0);
    CHECK(holds(kOwn, "own\n"));
    return 0;
}

static int callRepeatedly(void) {
    for (int i = 0; i < 3; ++i) {
        CHECK(decode(kDump) == 1);
        CHECK(dumpIsThere());
        const int line = ownFileIsSafe();
        if (line != 0) return line;
    }
    CHECK(decode("no such folder/dump.txt") == 0);
    CHECK(decode(kDump) == 1 && dumpIsThere());
    return 0;
}

/* Hosts that keep their standard output, as docs/hosts.md describes. */
static int keepDescriptor(void) {
    FILE* const own = fopen(kOwn, "wb");
    CHECK(own != NULL && _dup2(_fileno(own), 1) == 0 && fclose(own) == 0);
    CHECK(printf("before ") == 7);
    fflush(stdout);
    const int kept = _dup(1);
    CHECK(decode(kDump) == 1);
    fflush(stdout);
    CHECK(_dup2(kept, _fileno(stdout)) == 0 && _close(kept) == 0);
    CHECK(printf("after") == 5 && fflush(stdout) == 0);
    CHECK(dumpIsThere() && holds(kOwn, "before after"));
    return 0;
}

static int keepHandle(void) {
    DWORD written = 0;
    FILE* const own = fopen(kOwn, "wb");
    CHECK(own != NULL && _dup2(_fileno(own), 1) == 0 && fclose(own) == 0);
    const HANDLE out = (HANDLE)_get_osfhandle(1);
    CHECK(
        SetHandleInformation(out, HANDLE_FLAG_PROTECT_FROM_CLOSE, HANDLE_FLAG_PROTECT_FROM_CLOSE));
    CHECK(decode(kDump) == 1 && decode(kDump) == 1);
    CHECK(WriteFile(out, "own", 3, &written, NULL) && written == 3);
    CHECK(dumpIsThere() && holds(kOwn, "own"));
    return 0;
}

static int host(const char* kind) {
    if (strcmp(kind, "detached") == 0) CHECK(_fileno(stdout) < 0);
    if (strcmp(kind, "closed-stream") == 0) fclose(stdout);
    if (strcmp(kind, "closed-descriptor") == 0) _close(1);
    if (strcmp(kind, "binary-files") == 0) _fmode = _O_BINARY;
    if (strcmp(kind, "keeps-descriptor") == 0) return keepDescriptor();
    if (strcmp(kind, "keeps-handle") == 0) return keepHandle();
    return callRepeatedly();
}

static int start(const char* kind, const char* program) {
    char command[1024];
    STARTUPINFOA startup = {.cb = sizeof startup};
    PROCESS_INFORMATION process;
    DWORD result = 0;
    DWORD flags = 0;
    snprintf(command, sizeof command, "\"%s\" %s --host", program, kind);
    if (strcmp(kind, "detached") == 0) flags = DETACHED_PROCESS;
    if (!CreateProcessA(NULL, command, NULL, NULL, flags == 0, flags, NULL, NULL, &startup,
                        &process)) {
        fprintf(stderr, "%s: cannot be started\n", program);
        return 1;
    }
    WaitForSingleObject(process.hProcess, INFINITE);
    GetExitCodeProcess(process.hProcess, &result);
    if (result != 0) fprintf(stderr, "%s: failed at line %lu\n", kind, result);
    return result != 0;
}

int main(int argc, char** argv) {
    if (argc < 2) return 2;
    if (argc > 2 && strcmp(argv[2], "--host") == 0) return host(argv[1]);
    return start(argv[1], argc > 2 ? argv[2] : argv[0]);
}
