// The decoders of a module.

#include <algorithm>

#include "emit.h"

namespace {

std::string sizeName(const Bounds& size) {
    return "kSize" + std::to_string(size.lower) +
           (size.upper != size.lower ? "To" + std::to_string(size.upper) : "");
}

class DecoderEmitter {
  public:
    explicit DecoderEmitter(const Module& module) : module_(module), out_(module, "decoders") {}

    std::string emit() {
        out_(0, "#include \"" + module_.stem + ".h\"");
        out_.blank();
        out_(0, "namespace {");
        out_.blank();
        out_(0, "constexpr const char* kModule = \"" + module_.stem + "\";");
        for (const Bounds& size : module_.sizes)
            out_(0, "constexpr AsnSizeConstraint " + sizeName(size) + "{0, " +
                        std::to_string(size.lower) + ", " + std::to_string(size.upper) +
                        ", nullptr};");
        for (const CharacterSet& set : module_.characterSets)
            out_(0, "constexpr AsnCharSet " + set.name + " = asnCharSet(kAsn" + set.alphabet +
                        ", \"" + set.permitted + "\");");
        out_.blank();
        out_(0, "}  // namespace");
        for (const Type* type : module_.ordered) decoder(*type);
        return out_.text();
    }

  private:
    /// What reads a value of the type into `to`; the size constraint is registered before.
    static std::string readCall(const Type& type, const std::string& to) {
        if (type.hasFunctions) return "Decode" + type.cppName + "(ctx, " + to + ")";
        return builtinCall(type, to);
    }

    static std::string builtinCall(const Type& type, const std::string& to) {
        if (!type.characterSet.empty())
            return "pd_ConstrainedString(ctx, &" + to + ", " + type.characterSet + ")";
        const auto text = [&](const std::string& name) {
            return "pd_" + name + "(ctx, &" + to + ", nullptr)";
        };
        switch (type.kind) {
            case Kind::boolean:
                return "pd_Boolean(ctx, " + to + ")";
            case Kind::integer:
                return integerCall(type, to);
            case Kind::octetString:
                return "pd_DynOctetString(ctx, " + to + ")";
            case Kind::bitString:
                return "pd_DynBitString(ctx, " + to + ")";
            case Kind::objectIdentifier:
                return "pd_ObjectId(ctx, " + to + ")";
            case Kind::openType:
                return "pd_OpenType(ctx, &" + to + ".data, &" + to + ".numocts)";
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
                return "pd_BMPString(ctx, " + to + ", nullptr)";
            default:
                return "kAsnOk";  // NULL
        }
    }

    static std::string integerCall(const Type& type, const std::string& to) {
        if (!type.range) return "pd_UnconsInteger(ctx, &" + to + ")";
        const bool isUnsigned = type.range->upper > INT32_MAX;
        const std::string name = type.range->extensible ? "pd_ExtInteger"
                                 : isUnsigned           ? "pd_ConsUnsigned"
                                                        : "pd_ConsInteger";
        const std::string suffix = isUnsigned ? "U" : "";
        return name + "(ctx, &" + to + ", " + std::to_string(type.range->lower) + suffix + ", " +
               std::to_string(type.range->upper) + suffix + ")";
    }

    /// Registers the size of a string or list, at the last moment: the next length consumes it.
    void registerSize(int indent, const Type& type) {
        if (type.size) out_(indent, "pd_SetSizeConstraint(ctx, &" + sizeName(*type.size) + ");");
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
        out_(0, "AsnStatus Decode" + type.cppName + "(AsnContext& ctx, " + type.cppName +
                    "& value) {");
    }

    void nesting(const Type& type) {
        if (!type.recursive) return;
        out_(1, "const AsnNesting nesting(ctx);");
        out_(1, "if (nesting.check() != kAsnOk) return kAsnTooDeep;");
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
            out_(1, "return pd_SizedOctetString(ctx, " + sizeName(*type.size) +
                        ", value.numocts, value.data);");
        else if (capacity != 0)
            out_(1, "return pd_BitString(ctx, &value.numbits, value.data, sizeof value.data);");
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
        const std::string flags = "PresenceBits(ctx, value.m, " + std::to_string(optional) + ");";
        if (type.extensible)
            out_(1, "const uint32_t extended = " +
                        (hasFlags ? "pd_Ext" + flags : "pd_Flags(ctx, 1);"));
        else if (hasFlags)
            out_(1, "pd_" + flags);
        declared_ = false;
        for (const Member& member : type.root) component(member);
        if (!type.extensible)
            out_(1, "return kAsnOk;");
        else if (type.additions.empty())
            out_(1, "return pd_UnknownAdditions(ctx, extended, value.extElem1);");
        else
            out_(1, "return extended != 0 ? pd_Additions(ctx, &value, " + type.cppName +
                        "_addition) : kAsnOk;");
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
        out_(0, "static AsnStatus " + type.cppName +
                    "_addition(AsnContext& ctx, void* record, uint32_t index) {");
        out_(1, "auto& value = *static_cast<" + type.cppName + "*>(record);");
        out_(1, "switch (index) {");
        for (size_t i = 0; i < type.additions.size(); ++i) {
            const Member& member = type.additions[i];
            out_(2, "case " + std::to_string(i) + ":");
            out_(3, "value.m." + member.cppName + "Present = 1;");
            registerInnerSize(3, *member.type);
            out_(3, "return " + readCall(*member.type, "value." + member.cppName) + ";");
        }
        out_(2, "default:");
        out_(3, "return kAsnOk;  // not known: nothing is kept");
        out_(1, "}");
        out_(0, "}");
    }

    void choice(const Type& type) {
        const bool hasValues = std::any_of(type.root.begin(), type.root.end(),
                                           [](const Member& m) { return hasMember(*m.type); }) ||
                               std::any_of(type.additions.begin(), type.additions.end(),
                                           [](const Member& m) { return hasMember(*m.type); });
        const bool known = !type.additions.empty();
        const std::string roots = std::to_string(type.root.size());
        const std::string alternative = type.cppName + "_alternative";
        if (hasValues || known) alternatives(type);
        begin(type);
        nesting(type);
        const std::string root = "Alternative(ctx, &value.t, " + roots + ");";
        const std::string decode = alternative + "(ctx, &value)";
        if (!type.extensible && !(hasValues || known)) {
            out_(1, "return pd_Root" + root);
        } else if (!type.extensible) {
            out_(1, "const AsnStatus status = pd_Root" + root);
            out_(1, "return status == kAsnOk ? " + decode + " : status;");
        } else {
            out_(1, std::string(known ? "const " : "") + "AsnStatus status = pd_Ext" + root);
            if (hasValues || known) out_(1, "if (status == kAsnOk) return " + decode + ";");
            out_(1, "if (status != kAsnExtended) return status;");
            if (known) {
                out_(1, "return pd_ExtensionAlternative(ctx, &value, value.t, " + roots + ", " +
                            std::to_string(type.additions.size()) + ", " + alternative + ");");
            } else {
                out_(1, "status = pd_UnknownAlternative(ctx, value.u.extElem1);");
                out_(1, "if (status == kAsnOk) return kAsnOk;");
                out_(1, "return asnLogError(ctx.errInfo, status, kModule, " +
                            std::to_string(type.trailLine) + ");");
            }
        }
        out_(0, "}");
    }

    void alternatives(const Type& type) {
        out_.blank();
        out_(0, "static AsnStatus " + type.cppName +
                    "_alternative([[maybe_unused]] AsnContext& ctx, void* choice) {");
        out_(1, "auto& value = *static_cast<" + type.cppName + "*>(choice);");
        out_(1, "switch (value.t) {");
        int tag = 0;
        for (const auto* members : {&type.root, &type.additions})
            for (const Member& member : *members) alternative(++tag, member);
        out_(2, "default:");
        out_(3, "return kAsnOk;  // NULL");
        out_(1, "}");
        out_(0, "}");
    }

    void alternative(int tag, const Member& member) {
        if (!hasMember(*member.type)) return;
        const std::string slot = "value.u." + member.cppName;
        const bool isInline = heldInline(*member.type);
        out_(2, "case " + std::to_string(tag) + ":");
        if (!isInline) {
            out_(3, slot + " = asnNewValue<" + member.type->cppName + ">(ctx);");
            out_(3, "if (" + slot + " == nullptr) return kAsnNoMemory;");
        }
        registerInnerSize(3, *member.type);
        out_(3, "return " + readCall(*member.type, (isInline ? "" : "*") + slot) + ";");
    }

    void list(const Type& type) {
        begin(type);
        const std::string& element = type.element->cppName;
        nesting(type);
        registerSize(1, type);
        declared_ = false;
        checked(1, "pd_ListLength(ctx, &value.n, " + std::to_string(type.element->minBits) + ")");
        out_(1, "value.elem = asnNewElements<" + element + ">(ctx, value.n);");
        out_(1, "if (value.elem == nullptr)");
        out_(2, "return asnLogError(ctx.errInfo, kAsnNoMemory, kModule, " +
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
