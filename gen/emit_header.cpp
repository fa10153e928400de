// The structures of a module, and the prototypes of its decoders and printers.

#include <algorithm>

#include "emit.h"

namespace {

class HeaderEmitter {
  public:
    explicit HeaderEmitter(const Module& module)
        : module_(module), out_(module, "value structures, decoders and printers") {}

    std::string emit() {
        out_(0, "#pragma once");
        out_.blank();
        for (const std::string& stem : module_.includes) out_(0, "#include \"" + stem + ".h\"");
        out_(0, "#include \"asn1per/asn1per.h\"");
        for (const Type* type : module_.forward) {
            out_.blank();
            out_(0, "struct " + type->cppName + ";");
        }
        for (const Type* type : module_.ordered) {
            out_.blank();
            out_(0, typeComment(module_, *type));
            structure(*type);
            functions(*type);
        }
        return out_.text();
    }

  private:
    void structure(const Type& type) {
        const uint64_t capacity = inlineCapacity(type);
        if (type.kind == Kind::sequence) {
            sequence(type);
        } else if (type.kind == Kind::choice) {
            choice(type);
        } else if (type.kind == Kind::sequenceOf) {
            out_(0, "struct " + type.cppName + " {");
            out_(1, "uint32_t n;");
            out_(1, type.element->cppName + "* elem;");
            out_(0, "};");
        } else if (capacity != 0) {
            out_(0, "struct " + type.cppName + " {");
            out_(1, type.kind == Kind::bitString ? "uint32_t numbits;" : "uint32_t numocts;");
            out_(1, "uint8_t data[" + std::to_string(capacity) + "];");
            out_(0, "};");
        } else {
            const std::string& value =
                type.target != nullptr ? type.target->cppName : type.valueType;
            out_(0, "using " + type.cppName + " = " + value + ";");
        }
        uncleared(type);
    }

    void member(int indent, const Member& member, const std::string& star) {
        if (!hasMember(*member.type)) return;
        const std::string& type = member.type->cppName;
        const std::string text = type + star + " " + member.cppName + ";";
        out_(indent, member.type->hasFunctions ? text : text + "  // " + member.type->notation);
    }

    void sequence(const Type& type) {
        out_(0, "struct " + type.cppName + " {");
        std::vector<const Member*> flags;
        for (const Member& member : type.root)
            if (member.optional) flags.push_back(&member);
        for (const Member& member : type.additions) flags.push_back(&member);
        if (!flags.empty()) {
            out_(1, "struct {");
            for (const Member* flag : flags) out_(2, "uint32_t " + flag->cppName + "Present : 1;");
            out_(1, "} m;");
        }
        for (const Member& component : type.root) member(1, component, "");
        if (!type.additions.empty()) out_(1, "// extension additions");
        for (const Member& addition : type.additions) member(1, addition, "");
        if (type.extensible && type.additions.empty()) out_(1, "AsnOpenType extElem1;");
        out_(0, "};");
    }

    void choice(const Type& type) {
        out_(0, "struct " + type.cppName + " {");
        int tag = 0;
        std::string tags;
        std::vector<const Member*> valued;
        for (const auto* members : {&type.root, &type.additions})
            for (const Member& member : *members) {
                tags = std::to_string(++tag) + " " + member.notationName;
                if (tag == 1)
                    out_(1, "uint32_t t;  // " + tags);
                else
                    out_(1, "             // " + tags);
                if (hasMember(*member.type)) valued.push_back(&member);
            }
        const bool keepsUnknown = type.extensible && type.additions.empty();
        if (!valued.empty() || keepsUnknown) {
            out_(1, "union {");
            for (const Member* alternative : valued)
                member(2, *alternative, heldInline(*alternative->type) ? "" : "*");
            if (keepsUnknown) out_(2, "AsnOpenType* extElem1;");
            out_(1, "} u;");
        }
        out_(0, "};");
    }

    void uncleared(const Type& type) {
        const bool isOwnRecord = type.target == nullptr && type.kind != Kind::objectIdentifier;
        if (type.uncleared.empty() || !isOwnRecord) return;
        out_(0, "template <>");
        out_(0, "inline constexpr std::array<AsnSpan, " + std::to_string(type.uncleared.size()) +
                    "> asnUncleared<" + type.cppName + ">{{");
        for (const InlineOctets& span : type.uncleared)
            out_(1, "{offsetof(" + type.cppName + ", " + span.member + "), " +
                        std::to_string(span.size) + "},");
        out_(0, "}};");
    }

    void functions(const Type& type) {
        const std::string& name = type.cppName;
        out_(0, "template <bool Tracing>");
        out_(0, "[[nodiscard]] AsnStatus Decode" + name + "(AsnReader<Tracing> in, " + name +
                    "& value);");
        out_(0, "[[nodiscard]] inline AsnStatus Decode" + name + "(AsnContext& ctx, " + name +
                    "& value) {");
        out_(1, "return asnRead(ctx, [&](auto in) { return Decode" + name + "(in, value); });");
        out_(0, "}");
        out_(0, "void Print" + name + "(AsnDump& dump, const " + name + "& value);");
        out_(0, "inline void Print" + name + "(const char* path, const " + name + "& value) {");
        out_(1, "AsnDump dump(stdout, path);");
        out_(1, "Print" + name + "(dump, value);");
        out_(0, "}");
    }

    const Module& module_;
    Lines out_;
};

}  // namespace

std::string emitHeader(const Module& module) {
    return HeaderEmitter(module).emit();
}
