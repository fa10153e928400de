// The exported functions: the core and a file.

#include "Tamsel.h"
#include "TamselCore.h"
#include "dump_file.h"

namespace {

int decodeAndDump(const TamselFamily& family, const unsigned char* data, unsigned short length,
                  int aligned, const char* outputPath) {
    if (data == nullptr || length == 0 || outputPath == nullptr) return 0;
    TamselDecoder decoder;
    if (decoder.decode(family, {data, length}, aligned != 0) != kAsnOk) return 0;
    DumpFile file;
    if (!file.open(outputPath)) return 0;
    decoder.print(file.sink());
    file.close();
    return 1;
}

}  // namespace

int TAMSEL_CALL H323RASASNDecode(const unsigned char* data, unsigned short length, int aligned,
                                 const char* outputPath) {
    return decodeAndDump(kTamsel1998.ras, data, length, aligned, outputPath);
}

int TAMSEL_CALL H323UserInfoASNDecode(const unsigned char* data, unsigned short length, int aligned,
                                      const char* outputPath) {
    return decodeAndDump(kTamsel1998.ui, data, length, aligned, outputPath);
}

int TAMSEL_CALL H323H245ASNDecode(const unsigned char* data, unsigned short length, int aligned,
                                  const char* outputPath) {
    return decodeAndDump(kTamsel1998.h245, data, length, aligned, outputPath);
}
