/* Tamsel: one encoded H.323 signalling message in, a readable text dump out. */
#ifndef TAMSEL_H
#define TAMSEL_H

#if defined(_WIN32)
#define TAMSEL_API
#define TAMSEL_CALL __stdcall
#else
#define TAMSEL_API __attribute__((visibility("default")))
#define TAMSEL_CALL
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Each function decodes one message of its family and, if all of it decodes, writes its dump into a
 * file, which is created or replaced: one line per value, each with its full path from the root.
 *
 *   data        the octets of one PDU: read, not changed, not kept
 *   length      how many; octets after a complete message are ignored
 *   aligned     0: UNALIGNED variant of PER (ITU-T X.691), any other value: ALIGNED, as H.323 sends
 *   outputPath  the text file; its directory must exist
 *
 * Returns 1 if the message decoded and the file was written, else 0:
 *   - data or outputPath is null, or length is 0;
 *   - the message does not decode, or memory is exhausted: an existing file is left unchanged;
 *   - the file cannot be opened.
 * A failure while the text is written, as on a full disk, is not detected. The file is complete and
 * closed when the call returns. Nothing is kept between calls.
 *
 * On Linux the text is written directly to the file. Standard output is not touched, and any number
 * of threads may call at the same time.
 *
 * On Windows the text goes through the process's standard output, which is reopened onto the file
 * and afterwards onto the console ("CON"), or onto "NUL" if the process has no console. If the file
 * cannot be opened, standard output is closed and stays closed. So only one call may run at a time
 * in a process, and no other thread should print during a call.
 *
 * A call takes about 100 KiB of the thread's stack, and for any message less than 256 KiB. */

/* H.225.0 RAS: RasMessage (UDP ports 1718 and 1719). */
TAMSEL_API int TAMSEL_CALL H323RASASNDecode(const unsigned char* data, unsigned short length,
                                            int aligned, const char* outputPath);

/* H.225.0 call signalling: H323-UserInformation, as a Q.931 user-user element carries it after the
 * protocol discriminator. */
TAMSEL_API int TAMSEL_CALL H323UserInfoASNDecode(const unsigned char* data, unsigned short length,
                                                 int aligned, const char* outputPath);

/* H.245: MultimediaSystemControlMessage. */
TAMSEL_API int TAMSEL_CALL H323H245ASNDecode(const unsigned char* data, unsigned short length,
                                             int aligned, const char* outputPath);

#ifdef __cplusplus
}
#endif

#endif
