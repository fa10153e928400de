// Whole messages: data files, hex beside the dump expected.
#pragma once

#include <algorithm>

#include "Tamsel.h"
#include "TamselCore.h"
#include "support.h"

struct Message {
    std::string name;  // "alt-ras-admissionReject-unaligned"
    int(TAMSEL_CALL* dump)(const unsigned char*, unsigned short, int, const char*);
    bool aligned;
    Octets octets;
    std::string expected;
};

inline void PrintTo(const Message& message, std::ostream* out) {
    *out << message.name;
}

/// All messages of a data folder, by name. Those without a variant in their names were captured,
/// and are ALIGNED.
inline std::vector<Message> allMessages(const char* folder = TAMSEL_TEST_DATA) {
    std::vector<Message> messages;
    const auto has = [](const std::string& name, const char* part) {
        return ("-" + name + "-").find("-" + std::string(part) + "-") != std::string::npos;
    };
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        std::filesystem::path path = entry.path();
        if (path.extension() != ".hex") continue;
        const std::string name = path.stem().string();
        const auto dump = has(name, "ras")    ? H323RASASNDecode
                          : has(name, "h245") ? H323H245ASNDecode
                                              : H323UserInfoASNDecode;
        const Octets octets = hex(readFile(path));
        const std::string expected = readFile(path.replace_extension(".txt"));
        messages.push_back({name, dump, !has(name, "unaligned"), octets, expected});
    }
    std::sort(messages.begin(), messages.end(),
              [](const Message& a, const Message& b) { return a.name < b.name; });
    return messages;
}

/// Its family, for the core.
inline const TamselFamily& familyOf(const Message& message,
                                    const TamselModules& modules = kTamsel1998) {
    if (message.dump == H323RASASNDecode) return modules.ras;
    return message.dump == H323H245ASNDecode ? modules.h245 : modules.ui;
}

/// Runs the export over the octets in a block of exactly their size.
inline int runExport(const Message& message, const Octets& octets, const std::string& path) {
    const std::unique_ptr<uint8_t[]> block(new uint8_t[octets.size()]);
    std::copy(octets.begin(), octets.end(), block.get());
    return message.dump(block.get(), static_cast<unsigned short>(octets.size()),
                        message.aligned ? 1 : 0, path.c_str());
}
