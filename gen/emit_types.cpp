// The table of a module's types, for tests and fuzzers that walk all of them.

#include "emit.h"

std::string emitTypes(const Module& module) {
    Lines out(module, "the table of its types");
    out(0, "#include \"" + module.stem + ".h\"");
    out(0, "#include \"asn1per/typetable.h\"");
    out.blank();
    out(0, "extern const AsnTypeInfo k" + module.stem + "Types[] = {");
    for (const Type* type : module.ordered) {
        const bool isList = type->kind == Kind::sequenceOf;
        const std::string element = isList ? "sizeof(" + type->element->cppName + "), " +
                                                 std::to_string(type->element->minBits)
                                           : "0, 0";
        out(1, "{\"" + type->cppName + "\", sizeof(" + type->cppName + "), " +
                   std::to_string(type->minBits) + ", " + element + ", asnDecodeAny<" +
                   type->cppName + ", Decode" + type->cppName + ">, asnPrintAny<" + type->cppName +
                   ", Print" + type->cppName + ">},");
    }
    out(0, "};");
    out(0, "extern const size_t k" + module.stem +
               "TypeCount = " + std::to_string(module.ordered.size()) + ";");
    return out.text();
}
