// The generator's input: a module is emitted or refused with messages, whatever it holds.

#include <cstdlib>

#include "../gen/emit.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Errors errors;
    std::vector<ModuleNotation> notations;
    const std::string text(reinterpret_cast<const char*>(data), size);
    notations.push_back(parseModule("Fuzz.asn", text, errors));
    const Model model = resolve(notations, errors);
    if (!errors.lines.empty()) return 0;
    if (model.modules.size() != 1) std::abort();
    for (const Module& module : model.modules) {
        const size_t written = emitHeader(module).size() + emitDecoders(module).size() +
                               emitPrinters(module).size() + emitTypes(module).size();
        if (written == 0) std::abort();
    }
    return 0;
}
