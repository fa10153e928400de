// The printers of a module.

#include "emit.h"

namespace {

class PrinterEmitter {
  public:
    explicit PrinterEmitter(const Module& module) : module_(module), out_(module, "printers") {}

    std::string emit() {
        out_(0, "#include \"" + module_.stem + ".h\"");
        for (const Type* type : module_.ordered) printer(*type);
        return out_.text();
    }

  private:
    static std::string printCall(const Type& type, const std::string& value) {
        if (type.hasFunctions) return "Print" + type.cppName + "(dump, " + value + ");";
        return builtinCall(type, value);
    }

    static std::string builtinCall(const Type& type, const std::string& value) {
        const auto octets = [&](const std::string& name, const std::string& count) {
            const std::string record = value[0] == '*' ? value.substr(1) + "->" : value + ".";
            return name + "(dump, " + record + count + ", " + record + "data, \".\");";
        };
        switch (type.kind) {
            case Kind::boolean:
                return "asnPrintBoolean(dump, " + value + ");";
            case Kind::integer:
                return (type.range && type.range->upper > INT32_MAX ? "asnPrintUnsigned(dump, "
                                                                    : "asnPrintInteger(dump, ") +
                       value + ");";
            case Kind::octetString:
                return octets("asnPrintOctStr", "numocts");
            case Kind::bitString:
                return octets("asnPrintBitStr", "numbits");
            case Kind::openType:
                return octets("asnPrintOpenType", "numocts");
            case Kind::objectIdentifier:
                return "asnPrintOID(dump, " + value + ");";
            case Kind::bmpString:
                return "asnPrintBMPStr(dump, " + value + ", \".\");";
            default:
                return "asnPrintCharStr(dump, " + value + ");";
        }
    }

    void printer(const Type& type) {
        out_.blank();
        out_(0, typeComment(module_, type));
        out_(0,
             "void Print" + type.cppName + "(AsnDump& dump, const " + type.cppName + "& value) {");
        switch (type.kind) {
            case Kind::sequence:
                sequence(type);
                break;
            case Kind::choice:
                choice(type);
                break;
            case Kind::sequenceOf:
                list(type);
                break;
            case Kind::reference:
                out_(1, printCall(*type.target, "value"));
                break;
            default:
                out_(1, builtinCall(type, "value"));
                break;
        }
        out_(0, "}");
    }

    /// Presence lines first, all of them; then the components that are there.
    void sequence(const Type& type) {
        for (const auto* members : {&type.root, &type.additions})
            for (const Member& member : *members)
                if (member.optional)
                    out_(1, "asnPrintPresence(dump, \"" + member.dumpName + "\", value.m." +
                                member.cppName + "Present);");
        for (const auto* members : {&type.root, &type.additions})
            for (const Member& member : *members) component(member);
        if (!type.extensible || !type.additions.empty()) return;
        out_(1, "const AsnComponentStep step(dump, \"extElem1\");");
        out_(1, "asnPrintOpenType(dump, value.extElem1.numocts, value.extElem1.data, \".\");");
    }

    void component(const Member& member) {
        if (!hasMember(*member.type)) return;
        out_(1, member.optional ? "if (value.m." + member.cppName + "Present != 0) {" : "{");
        out_(2, "const AsnComponentStep step(dump, \"" + member.dumpName + "\");");
        out_(2, printCall(*member.type, "value." + member.cppName));
        out_(1, "}");
    }

    void choice(const Type& type) {
        out_(1, "asnPrintTag(dump, value.t);");
        const bool keepsUnknown = type.extensible && type.additions.empty();
        bool open = false;
        size_t tag = 0;
        for (const auto* members : {&type.root, &type.additions})
            for (const Member& member : *members) {
                ++tag;
                if (!hasMember(*member.type)) continue;
                if (!open) out_(1, "switch (value.t) {");
                open = true;
                const std::string slot = "value.u." + member.cppName;
                alternative(tag, member.dumpName,
                            printCall(*member.type, heldInline(*member.type) ? slot : "*" + slot));
            }
        if (keepsUnknown) {
            if (!open) out_(1, "switch (value.t) {");
            open = true;
            alternative(tag + 1, "extElem1",
                        "asnPrintOpenType(dump, value.u.extElem1->numocts, "
                        "value.u.extElem1->data, \".\");");
        }
        if (!open) return;
        out_(2, "default:");
        out_(3, "break;  // the tag line is all");
        out_(1, "}");
    }

    void alternative(size_t tag, const std::string& name, const std::string& call) {
        out_(2, "case " + std::to_string(tag) + ": {");
        out_(3, "const AsnAlternativeStep step(dump, \"" + name + "\");");
        out_(3, call);
        out_(3, "break;");
        out_(2, "}");
    }

    void list(const Type& type) {
        out_(1, "asnPrintCount(dump, value.n);");
        out_(1, "for (uint32_t i = 0; i < value.n; ++i) {");
        out_(2, "const AsnElementStep step(dump, i);");
        out_(2, printCall(*type.element, "value.elem[i]"));
        out_(1, "}");
    }

    const Module& module_;
    Lines out_;
};

}  // namespace

std::string emitPrinters(const Module& module) {
    return PrinterEmitter(module).emit();
}
