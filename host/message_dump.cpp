#include "message_dump.h"

#include <array>
#include <fstream>
#include <iterator>
#include <random>

#if defined(_WIN32)
#include <io.h>
#define dup _dup
#define fdopen _fdopen
#define fileno _fileno
#else
#include <unistd.h>
#endif

const Family kRas{"ras", "H.225.0 RAS", H323RASASNDecode};
const Family kUi{"ui", "H.225.0 call signalling", H323UserInfoASNDecode};
const Family kH245{"h245", "H.245", H323H245ASNDecode};

const Family* findFamily(std::string_view name) {
    for (const Family* family : {&kRas, &kUi, &kH245})
        if (family->name == name) return family;
    return nullptr;
}

FILE* keepStandardOutput() {
    const int copy = dup(fileno(stdout));
    FILE* const stream = copy >= 0 ? fdopen(copy, "w") : nullptr;
    return stream != nullptr ? stream : stderr;
}

MessageDumper::MessageDumper() {
    std::random_device random;
    const std::string name = "tamsel-" + std::to_string(random()) + "-" + std::to_string(random());
    file_ = std::filesystem::temp_directory_path() / name;
}

MessageDumper::~MessageDumper() {
    std::error_code ignored;
    std::filesystem::remove(file_, ignored);
}

std::optional<std::string> MessageDumper::dump(const Family& family, const Octets& message,
                                               bool aligned) {
    const auto length = static_cast<unsigned short>(message.size());
    const std::string path = file_.string();
    if (family.dump(message.data(), length, aligned ? 1 : 0, path.c_str()) == 0) return {};
    std::ifstream in(path, std::ios::binary);
    std::string text(std::istreambuf_iterator<char>(in), {});
#if defined(_WIN32)
    // Not by reading in text mode, which would take a 0x1A in a character string for the end.
    size_t kept = 0;
    for (size_t i = 0; i < text.size(); ++i)
        if (text[i] != '\r' || i + 1 == text.size() || text[i + 1] != '\n') text[kept++] = text[i];
    text.resize(kept);
#endif
    return text;
}
