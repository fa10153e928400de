// tamsel-gen: reads ASN.1 modules and writes their decoders and printers.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

#include "emit.h"

namespace {

constexpr const char* kUsage =
    "usage: tamsel-gen [--namespace NAME] [--published] DIRECTORY MODULE.asn...\n"
    "Writes MODULE.h, MODULENames.h, MODULEDecode.h, MODULEDecode.cpp, MODULETrace.cpp,\n"
    "MODULEPrint.cpp and MODULETypes.cpp into DIRECTORY. A file that would not change is left "
    "alone.\n"
    "  --namespace NAME  what is written is in this namespace\n"
    "  --published       what is written decodes by the rules of X.691, without any deviation\n";

std::string readFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw std::runtime_error("cannot read " + path.string());
    return {std::istreambuf_iterator<char>(in), {}};
}

/// Writes a file, unless it holds the text already: what depends on it is not built again.
void writeFile(const std::filesystem::path& path, const std::string& text) {
    if (std::filesystem::exists(path) && readFile(path) == text) return;
    std::ofstream out(path, std::ios::binary);
    out << text;
    if (!out.flush()) throw std::runtime_error("cannot write " + path.string());
}

int generate(const ModuleSet& set, const std::filesystem::path& directory,
             const std::vector<std::string>& files) {
    Errors errors;
    std::vector<ModuleNotation> notations;
    notations.reserve(files.size());
    for (const std::filesystem::path path : files)
        notations.push_back(parseModule(path.filename().string(), readFile(path), errors));
    const Model model = resolve(notations, set, errors);
    if (!errors.lines.empty()) {
        for (const std::string& line : errors.lines) std::cerr << line << "\n";
        return 1;
    }
    for (const Module& module : model.modules) {
        const std::filesystem::path begin = directory / module.stem;
        const auto write = [&](const char* ending, const std::string& text) {
            writeFile(begin.string() + ending, text);
        };
        write(".h", emitHeader(module));
        write("Names.h", emitNames(module));
        write("Decode.h", emitDecoders(module));
        write("Decode.cpp", emitPlainReading(module));
        write("Trace.cpp", emitTracedReading(module));
        write("Print.cpp", emitPrinters(module));
        write("Types.cpp", emitTypes(module));
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::string> words(argv + 1, argv + argc);
    ModuleSet set;
    if (words.size() > 2 && words[0] == "--namespace") {
        set.space = words[1];
        words.erase(words.begin(), words.begin() + 2);
    }
    if (!words.empty() && words[0] == "--published") {
        set.published = true;
        words.erase(words.begin());
    }
    if (words.size() < 2 || words[0].starts_with("--")) {
        std::cerr << kUsage;
        return 2;
    }
    try {
        return generate(set, words[0], {words.begin() + 1, words.end()});
    } catch (const std::exception& error) {
        std::cerr << "tamsel-gen: " << error.what() << "\n";
        return 1;
    }
}
