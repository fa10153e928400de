// The decoders of a module.

#include <algorithm>

#include "emit.h"

namespace {

class DecoderEmitter {
  public:
    explicit DecoderEmitter(const Module& module) : module_(module), out_(module, "decoders") {}

    std::string emit() {
        out_(0, "#pragma once");
        out_.blank();
        out_(0, "#include \"" + module_.stem + ".h\"");
        out_.blank();
        for (const Bounds& size : module_.sizes)
            out_(0, "inline constexpr AsnSizeConstraint " + sizeName(size) + "{0, " +
                        std::to_string(size.lower) + ", " + std::to_string(size.upper) +
                        ", nullptr};");
        for (const CharacterSet& set : module_.characterSets)
            out_(0, "inline constexpr AsnCharSet k" + module_.stem + set.name.substr(1) +
                        " = asnCharSet(kAsn" + set.alphabet + ", \"" + set.permitted + "\");");
        for (const Type* type : module_.ordered) decoder(*type);
        return out_.text();
    }

  private:
    std::string sizeName(const Bounds& size) const {
        return "k" + module_.stem + "Size" + std::to_string(size.lower) +
               (size.upper != size.lower ? "To" + std::to_string(size.upper) : "");
    }

    /// What reads a value of the type into `to`; the size constraint is registered before.
    std::string readCall(const Type& type, const std::string& to) const {
        if (type.hasFunctions) return "Decode" + type.cppName + "(in, " + to + ")";
        return builtinCall(type, to);
    }

    std::string builtinCall(const Type& type, const std::string& to) const {
        if (!type.characterSet.empty())
            return "pd_IA5String(in, &" + to + ", k" + module_.stem + type.characterSet.substr(1) +
                   ")";
        const auto text = [&](const std::string& name) {
            return "pd_" + name + "(in, &" + to + ")";
        };
        switch (type.kind) {
            case Kind::boolean:
                return "pd_bit(in, &" + to + ")";
            case Kind::integer:
                return integerCall(type, to);
            case Kind::octetString:
                return "pd_DynOctetString(in, " + to + ")";
            case Kind::bitString:
                return "pd_DynBitString(in, " + to + ")";
            case Kind::objectIdentifier:
                return "pd_ObjectId(in, " + to + ")";
            case Kind::openType:
                return "pd_OpenType(in, &" + to + ".data, &" + to + ".numocts)";
            case Kind::numericString:
                return text("NumericString");
            case Kind::printableString:
                return text("PrintableString");
            case Kind::visibleString:
                return text("VisibleString");
            case Kind::ia5String:
                return text("IA5String");
            case Kind::generalString:
                return text("GeneralString");
            case Kind::bmpString:
                return "pd_BMPString(in, " + to + ", nullptr)";
            default:
                return "kAsnOk";  // NULL
        }
    }

    std::string integerCall(const Type& type, const std::string& to) const {
        if (!type.range) return "pd_UnconsInteger(in, &" + to + ")";
        const bool isUnsigned = type.range->upper > INT32_MAX;
        const std::string name = type.range->extensible ? "pd_ExtInteger"
                                 : isUnsigned           ? "pd_ConsUnsigned"
                                                        : "pd_ConsInteger";
        const std::string suffix = isUnsigned ? "U" : "";
        return name + "(in, &" + to + ", " + std::to_string(type.range->lower) + suffix + ", " +
               std::to_string(type.range->upper) + suffix + ")";
    }

    /// Registers the size of a string or list, at the last moment: the next length consumes it.
    void registerSize(int indent, const Type& type) {
        if (type.size) out_(indent, "asnSetSize(in, " + sizeName(*type.size) + ");");
    }

    void registerInnerSize(int indent, const Type& type) {
        if (!type.hasFunctions) registerSize(indent, type);
    }

    /// Reads and returns what failed. `status` is declared where it is first needed.
    void checked(int indent, const std::string& call) {
        out_(indent, (declared_ ? "status = " : "AsnStatus status = ") + call + ";");
        out_(indent, "if (status != kAsnOk) return status;");
        declared_ = true;
    }

    void decoder(const Type& type) {
        switch (type.kind) {
            case Kind::sequence:
                return sequence(type);
            case Kind::choice:
                return choice(type);
            case Kind::sequenceOf:
                return list(type);
            default:
                return simple(type);
        }
    }

    void begin(const Type& type) {
        out_.blank();
        out_(0, typeComment(module_, type));
        out_(0, "template <bool Tracing>");
        out_(0, "AsnStatus Decode" + type.cppName + "(AsnReader<Tracing> in, " + type.cppName +
                    "& value) {");
    }

    void nesting(const Type& type) {
        if (!type.recursive) return;
        out_(1, "const AsnNesting nesting(in.ctx);");
        out_(1, "if (nesting.tooDeep()) return kAsnTooDeep;");
    }

    void simple(const Type& type) {
        begin(type);
        const uint64_t capacity = inlineCapacity(type);
        const bool sized =
            type.target == nullptr && capacity != 0 && type.kind == Kind::octetString;
        if (!sized) registerSize(1, type);
        if (type.target != nullptr)
            out_(1, "return " + readCall(*type.target, "value") + ";");
        else if (sized)
            out_(1, "return asnSizedOctets(in, " + sizeName(*type.size) +
                        ", &value.numocts, value.data);");
        else if (capacity != 0)
            out_(1, "return pd_BitString(in, &value.numbits, value.data, sizeof value.data);");
        else
            out_(1, "return " + builtinCall(type, "value") + ";");
        out_(0, "}");
    }

    void sequence(const Type& type) {
        if (!type.additions.empty()) additions(type);
        begin(type);
        nesting(type);
        const auto optional = std::count_if(type.root.begin(), type.root.end(),
                                            [](const Member& member) { return member.optional; });
        const bool hasFlags = optional != 0 || !type.additions.empty();
        if (type.extensible) out_(1, "const bool extended = asnExtensionBit(in);");
        if (hasFlags) out_(1, "asnPresenceBits(in, value.m, " + std::to_string(optional) + ");");
        declared_ = false;
        for (const Member& member : type.root) component(member);
        if (type.additions.empty()) {
            if (type.extensible) {
                out_(1,
                     "if (extended) return pd_OpenTypeExt(in, &value.extElem1.data, "
                     "&value.extElem1.numocts);");
                out_(1, "value.extElem1 = {};");
            }
            out_(1, "return kAsnOk;");
        } else {
            out_(1, "return extended ? " + type.cppName + "_additions(in, value) : kAsnOk;");
        }
        out_(0, "}");
    }

    void component(const Member& member) {
        if (!hasMember(*member.type)) return;
        if (member.optional && !declared_) out_(1, "AsnStatus status = kAsnOk;");
        if (member.optional) declared_ = true;
        if (member.optional) out_(1, "if (value.m." + member.cppName + "Present != 0) {");
        const int indent = member.optional ? 2 : 1;
        registerInnerSize(indent, *member.type);
        checked(indent, readCall(*member.type, "value." + member.cppName));
        if (member.optional) out_(1, "}");
    }

    void additions(const Type& type) {
        out_.blank();
        out_(0, "template <bool Tracing>");
        out_(0, "AsnStatus " + type.cppName + "_additions(AsnReader<Tracing> in, " + type.cppName +
                    "& value) {");
        out_(1, "AsnAdditions additions;");
        out_(1, "AsnStatus status = asnFirstAddition(in, additions);");
        out_(1, "while (status == kAsnOk && !additions.done) {");
        out_(2, "switch (additions.index) {");
        for (size_t i = 0; i < type.additions.size(); ++i) {
            const Member& member = type.additions[i];
            out_(3, "case " + std::to_string(i) + ":");
            out_(4, "value.m." + member.cppName + "Present = 1;");
            if (hasMember(*member.type)) {
                registerInnerSize(4, *member.type);
                out_(4, "status = " + readCall(*member.type, "value." + member.cppName) + ";");
            }
            out_(4, "break;");
        }
        out_(3, "default:");
        out_(4, "break;  // an addition that is not known is skipped");
        out_(2, "}");
        out_(2, "if (status == kAsnOk) status = asnNextAddition(in, additions);");
        out_(1, "}");
        out_(1, "return status;");
        out_(0, "}");
    }

    void choice(const Type& type) {
        begin(type);
        nesting(type);
        const std::string roots = std::to_string(type.root.size());
        if (!type.additions.empty())
            extensionAlternatives(type);
        else if (type.extensible)
            unknownAlternative(type);
        out_(1, "const AsnStatus status = asnRootAlternative(in, &value.t, " + roots + ");");
        out_(1, "if (status != kAsnOk) return status;");
        out_(1, "switch (value.t) {");
        uint32_t tag = 0;
        for (const Member& member : type.root) alternative(1, ++tag, member, false);
        out_(2, "default:");
        out_(3, "return kAsnOk;");
        out_(1, "}");
        out_(0, "}");
    }

    void extensionAlternatives(const Type& type) {
        out_(1, "if (asnExtensionBit(in)) {");
        out_(2, "AsnCursor outer;");
        out_(2, "AsnStatus status = asnEnterAlternative(in, &value.t, " +
                    std::to_string(type.root.size()) + ", " +
                    std::to_string(type.additions.size()) + ", outer);");
        out_(2, "if (status != kAsnOk) return status;");
        out_(2, "switch (value.t) {");
        auto tag = static_cast<uint32_t>(type.root.size());
        for (const Member& member : type.additions) alternative(2, ++tag, member, true);
        out_(3, "default:");
        out_(4, "break;");
        out_(2, "}");
        out_(2, "if (status == kAsnOk) asnLeaveOpenType(in, outer);");
        out_(2, "return status;");
        out_(1, "}");
    }

    void unknownAlternative(const Type& type) {
        out_(1, "if (asnExtensionBit(in)) {");
        out_(2, "value.u.extElem1 = asnNewValue<AsnOpenType>(in);");
        out_(2, "if (value.u.extElem1 == nullptr) return kAsnNoMemory;");
        out_(2,
             "const AsnStatus status = pd_ChoiceOpenTypeExt(in, &value.u.extElem1->data, "
             "&value.u.extElem1->numocts);");
        out_(2, "if (status == kAsnOk) return kAsnOk;");
        out_(2, "return asnLogError(in.ctx.errInfo, status, \"" + module_.stem + "\", " +
                    std::to_string(type.trailLine) + ");");
        out_(1, "}");
    }

    void alternative(int indent, uint32_t tag, const Member& member, bool inOpenType) {
        if (!hasMember(*member.type)) return;
        const std::string slot = "value.u." + member.cppName;
        const bool isInline = heldInline(*member.type);
        out_(indent + 1, "case " + std::to_string(tag) + ":");
        if (!isInline) {
            out_(indent + 2, slot + " = asnNewValue<" + member.type->cppName + ">(in);");
            out_(indent + 2, "if (" + slot + " == nullptr) return kAsnNoMemory;");
        }
        if (!member.type->hasFunctions) registerSize(indent + 2, *member.type);
        const std::string call = readCall(*member.type, (isInline ? "" : "*") + slot) + ";";
        out_(indent + 2, (inOpenType ? "status = " : "return ") + call);
        if (inOpenType) out_(indent + 2, "break;");
    }

    void list(const Type& type) {
        begin(type);
        const std::string& element = type.element->cppName;
        nesting(type);
        registerSize(1, type);
        declared_ = false;
        const std::string bits = std::to_string(type.element->minBits);
        checked(1, "asnListLength(in, &value.n, {" + bits + ", " + bits + "})");
        out_(1, "value.elem = asnNewElements<" + element + ">(in, value.n);");
        out_(1, "if (value.elem == nullptr)");
        out_(2, "return asnLogError(in.ctx.errInfo, kAsnNoMemory, \"" + module_.stem + "\", " +
                    std::to_string(type.trailLine) + ");");
        out_(1, "for (uint32_t i = 0; i < value.n; ++i) {");
        registerInnerSize(2, *type.element);
        checked(2, readCall(*type.element, "value.elem[i]"));
        out_(1, "}");
        out_(1, "return kAsnOk;");
        out_(0, "}");
    }

    const Module& module_;
    Lines out_;
    bool declared_ = false;  // the function being written has its `status`
};

}  // namespace

std::string emitDecoders(const Module& module) {
    return DecoderEmitter(module).emit();
}

std::string emitInstances(const Module& module, const std::string& reader) {
    Lines out(module, "decoders for one reader");
    out(0, "#include \"" + module.stem + "Decode.h\"");
    out.blank();
    for (const Type* type : module.ordered)
        out(0, "template AsnStatus Decode" + type->cppName + "(" + reader + " in, " +
                   type->cppName + "& value);");
    return out.text();
}
