// The generator's input, up to three modules with a NUL between them: code is written for
// them, or mistakes are reported, whatever they contain.

#include <cstdlib>
#include <sstream>

#include "../gen/emit.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Errors errors;
    std::vector<ModuleNotation> notations;
    std::istringstream modules(std::string(reinterpret_cast<const char*>(data), size));
    std::string text;
    for (const char* const file : {"Fuzz.asn", "More.asn", "Other.asn"})
        if (std::getline(modules, text, '\0')) notations.push_back(parseModule(file, text, errors));
    if (notations.empty()) return 0;
    const Model model = resolve(notations, {"fuzz", size % 2 != 0}, errors);
    if (!errors.lines.empty()) return 0;
    if (model.modules.size() != notations.size()) std::abort();
    for (const Module& module : model.modules) {
        for (const auto emit : {emitHeader, emitDecoders, emitPlainReading, emitTracedReading,
                                emitPrinters, emitTypes})
            if (emit(module).empty()) std::abort();
    }
    return 0;
}
