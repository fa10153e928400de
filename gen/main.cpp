// tamsel-gen: reads ASN.1 modules and writes their decoders and printers.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

#include "emit.h"

namespace {

constexpr const char* kUsage =
    "usage: tamsel-gen DIRECTORY MODULE.asn...\n"
    "Writes MODULE.h, MODULEDecode.cpp, MODULEPrint.cpp and MODULETypes.cpp into DIRECTORY.\n";

std::string readFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw std::runtime_error("cannot read " + path.string());
    return {std::istreambuf_iterator<char>(in), {}};
}

void writeFile(const std::filesystem::path& path, const std::string& text) {
    std::ofstream out(path, std::ios::binary);
    out << text;
    if (!out.flush()) throw std::runtime_error("cannot write " + path.string());
}

int generate(const std::filesystem::path& directory, const std::vector<std::string>& files) {
    Errors errors;
    std::vector<ModuleNotation> notations;
    notations.reserve(files.size());
    for (const std::filesystem::path path : files)
        notations.push_back(parseModule(path.filename().string(), readFile(path), errors));
    const Model model = resolve(notations, errors);
    if (!errors.lines.empty()) {
        for (const std::string& line : errors.lines) std::cerr << line << "\n";
        return 1;
    }
    for (const Module& module : model.modules) {
        writeFile(directory / (module.stem + ".h"), emitHeader(module));
        writeFile(directory / (module.stem + "Decode.h"), emitDecoders(module));
        writeFile(directory / (module.stem + "Decode.cpp"),
                  emitInstances(module, "AsnPlainReader"));
        writeFile(directory / (module.stem + "Trace.cpp"),
                  emitInstances(module, "AsnTracingReader"));
        writeFile(directory / (module.stem + "Print.cpp"), emitPrinters(module));
        writeFile(directory / (module.stem + "Types.cpp"), emitTypes(module));
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::cerr << kUsage;
        return 2;
    }
    try {
        return generate(argv[1], {argv + 2, argv + argc});
    } catch (const std::exception& error) {
        std::cerr << "tamsel-gen: " << error.what() << "\n";
        return 1;
    }
}
