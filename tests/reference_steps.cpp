#include "reference_steps.h"

#include <unistd.h>

#include <bit>
#include <cstring>
#include <iterator>
#include <memory>
#include <utility>

#include "asn1per/asn1per.h"

CapturedOutput::CapturedOutput() : file_(std::tmpfile()), saved_(dup(1)) {
    std::fflush(stdout);
    dup2(fileno(file_), 1);
}

CapturedOutput::~CapturedOutput() {
    (void)take();
    dup2(saved_, 1);
    close(saved_);
    std::fclose(file_);
}

std::string CapturedOutput::take() {
    std::fflush(stdout);
    std::string text(static_cast<size_t>(lseek(1, 0, SEEK_CUR)), '\0');
    if (text.empty()) return text;
    lseek(1, 0, SEEK_SET);
    if (read(1, text.data(), text.size()) < 0) text.clear();
    lseek(1, 0, SEEK_SET);
    return text;
}

namespace {

/// What a primitive returns and stores; strings only if it succeeds.
struct Value {
    AsnStatus status = 0;
    uint32_t count = 0xA5A5A5A5;
    int32_t number = -0x5A5A5A5A;
    uint8_t flag = 0xA5;
    uint32_t start = 0xA5A5A5A5;
    uint32_t numocts = 0xA5A5A5A5;
    std::string text = {};
    std::vector<uint16_t> text16 = {};
    reference::Octets octets = {};
    std::vector<uint32_t> arcs = {};
    uint64_t real = 0;
    bool operator==(const Value&) const = default;
};

using Reader = reference::Reader;

// What the run-time stores.
template <class T>
void set(std::vector<T>& to, const T* from, size_t count) {
    to.assign(from, from + count);
}
void store(Value& v, const AsnDynBitStr& from) {
    v.count = from.numbits;
    set<uint8_t>(v.octets, from.data, (from.numbits + 7) / 8);
}
void store(Value& v, const auto& octets) {
    v.count = octets.numocts;
    set<uint8_t>(v.octets, octets.data, octets.numocts);
}
void store(Value& v, const AsnBMPString& from) {
    set<uint16_t>(v.text16, from.data, from.nchars);
}
void store(Value& v, const AsnObjId& from) {
    set(v.arcs, from.subid, static_cast<size_t>(from.numids));
}
void store(Value& v, double from) {
    v.real = std::bit_cast<uint64_t>(from);
}

template <class T>
AsnStatus stored(Value& v, auto read) {
    T to{};
    const AsnStatus status = read(to);
    if (status == 0) store(v, to);
    return status;
}
AsnStatus intoBuffer(Value& v, const Arguments& a, auto read) {
    reference::Octets buffer(a.capacity, 0xA5);
    const AsnStatus status = read(buffer.data());
    if (status == 0) v.octets = buffer;
    return status;
}
AsnStatus text(AsnContext& in, Value& v, const Arguments& a, auto read) {
    const char* to = nullptr;
    const AsnStatus status = read(in, &to, a.permitted);
    if (status == 0) v.text.assign(to, a.textSize);
    return status;
}
AsnStatus span(AsnContext& in, Value& v, auto read) {
    const uint8_t* data = nullptr;
    const AsnStatus status = read(in, &data, &v.numocts);
    if (data != nullptr) v.start = static_cast<uint32_t>(data - in.data);
    return status;
}

// What the reference reader stores.
void fixedString(Reader& in, Value& v, const Arguments& a, const reference::StringKind& kind) {
    v.octets = in.fixedString(v.count, a.capacity, kind);
    v.octets.resize(a.capacity, 0xA5);
}
void wholeString(Value& v, auto read) {
    uint32_t count = 0;
    v.octets = read(count);
    v.count = count;
}

struct Primitive {
    const char* name;
    AsnStatus (*runTime)(AsnContext&, Value&, const Arguments&);
    void (*reference)(Reader&, Value&, const Arguments&);
};

#define STEP(name, inRunTime, inReference)                                                   \
    {                                                                                        \
        name,                                                                                \
            [](AsnContext& in, [[maybe_unused]] Value& v,                                    \
               [[maybe_unused]] const Arguments& a) -> AsnStatus { return inRunTime; },      \
            [](Reader& in, [[maybe_unused]] Value& v, [[maybe_unused]] const Arguments& a) { \
                inReference;                                                                 \
            }                                                                                \
    }
#define TEXT(type)                                                                 \
    STEP("pd_" #type, text(in, v, a, [](auto&&... b) { return pd_##type(b...); }), \
         v.text = in.typedString(reference::k##type, a.permitted) + '\0')

const Primitive kPrimitives[] = {
    STEP("pd_SetSizeConstraint",
         pd_SetSizeConstraint(in, a.records.empty() ? nullptr : a.records.data()),
         in.pd_SetSizeConstraint(a.chain)),
    STEP("pd_IncrBitIdx", pd_IncrBitIdx(in), in.pd_IncrBitIdx()),
    STEP("pd_bit", pd_bit(in, &v.flag), v.flag = in.pd_bit()),
    STEP("pd_bit, skipped", pd_bit(in, nullptr), in.pd_IncrBitIdx()),
    STEP("pd_bits", pd_bits(in, &v.count, a.nbits), v.count = in.pd_bits(a.nbits)),
    STEP("pd_octets",
         intoBuffer(v, a, [&](auto* to) { return pd_octets(in, to, a.capacity, a.nbits); }),
         (v.octets = in.pd_octets(a.capacity, a.nbits)).resize(a.capacity, 0xA5)),
    STEP("pd_byteAlign", pd_byteAlign(in), in.pd_byteAlign()),
    STEP("pd_moveBitCursor", pd_moveBitCursor(in, a.distance), in.pd_moveBitCursor(a.distance)),
    STEP("pd_ConsWholeNumber", pd_ConsWholeNumber(in, &v.count, a.rangeSize),
         v.count = in.pd_ConsWholeNumber(a.rangeSize)),
    STEP("pd_ConsInteger", pd_ConsInteger(in, &v.number, a.lower, a.upper),
         v.number = in.pd_ConsInteger(a.lower, a.upper)),
    STEP("pd_ConsUnsigned", pd_ConsUnsigned(in, &v.count, a.rangeSize, a.nbits + a.rangeSize),
         v.count = in.pd_ConsUnsigned(a.rangeSize, a.nbits + a.rangeSize)),
    STEP("pd_ConsUnsigned, from 0", pd_ConsUnsigned(in, &v.count, 0, a.rangeSize),
         v.count = in.pd_ConsUnsigned(0, a.rangeSize)),
    STEP("pd_ExtInteger", pd_ExtInteger(in, &v.number, a.lower, a.upper),
         v.number = in.pd_ExtInteger(v.number, a.lower, a.upper)),
    STEP("pd_UnconsInteger", pd_UnconsInteger(in, &v.number),
         v.number = in.pd_UnconsInteger(v.number)),
    STEP("pd_UnconsUnsigned", pd_UnconsUnsigned(in, &v.count), v.count = in.pd_UnconsUnsigned()),
    STEP("pd_SmallNonNegWholeNumber", pd_SmallNonNegWholeNumber(in, &v.count),
         v.count = in.pd_SmallNonNegWholeNumber()),
    STEP("pd_Length", pd_Length(in, &v.count), const auto length = in.pd_Length();
         v.count = length.count; v.status = length.form),
    STEP("pd_GetComponentLength", pd_GetComponentLength(in, a.itemBits),
         v.status = in.pd_GetComponentLength(a.itemBits)),
    STEP("pd_BitString",
         intoBuffer(v, a, [&](auto* to) { return pd_BitString(in, &v.count, to, a.capacity); }),
         fixedString(in, v, a, reference::kBits)),
    STEP("pd_OctetString",
         intoBuffer(v, a, [&](auto* to) { return pd_OctetString(in, &v.count, to, a.capacity); }),
         fixedString(in, v, a, reference::kOctets)),
    STEP("pd_DynBitString",
         stored<AsnDynBitStr>(v, [&](auto& to) { return pd_DynBitString(in, to); }),
         wholeString(v, [&](auto& count) { return in.dynString(count, reference::kBits); })),
    STEP("pd_DynOctetString",
         stored<AsnDynOctStr>(v, [&](auto& to) { return pd_DynOctetString(in, to); }),
         wholeString(v, [&](auto& count) { return in.dynString(count, reference::kOctets); })),
    TEXT(NumericString),
    TEXT(PrintableString),
    TEXT(VisibleString),
    TEXT(IA5String),
    TEXT(GeneralString),
    TEXT(86CharString),
    STEP("pd_BMPString",
         stored<AsnBMPString>(v, [&](auto& to) { return pd_BMPString(in, to, a.permitted16()); }),
         v.text16 = in.pd_BMPString(a.restricted ? &a.codes : nullptr)),
    STEP("pd_16BitConstrainedString",
         stored<AsnBMPString>(v,
                              [&](auto& to) {
                                  return pd_16BitConstrainedString(
                                      in, to, {0, nullptr, a.lowest, 0xFFFF, a.width, 16});
                              }),
         v.text16 = in.pd_16BitConstrainedString({nullptr, a.lowest, a.width, 16})),
    STEP("asnDecObjIdContents",
         stored<AsnObjId>(v,
                          [&](auto& to) {
                              AsnOctetReader reader{in.data, in.size, 0};
                              return asnDecObjIdContents(reader, to, a.length);
                          }),
         v.arcs = Reader::asnDecObjIdContents(*in.data, a.length)),
    STEP("pd_ObjectId", stored<AsnObjId>(v, [&](auto& to) { return pd_ObjectId(in, to); }),
         v.arcs = in.pd_ObjectId()),
    STEP("pd_Real", stored<double>(v, [&](auto& to) { return pd_Real(in, &to); }),
         v.real = std::bit_cast<uint64_t>(in.pd_Real())),
    STEP("pd_OpenType",
         stored<AsnOpenType>(v, [&](auto& to) { return pd_OpenType(in, &to.data, &to.numocts); }),
         wholeString(v, [&](auto& count) { return in.pd_OpenType(count); })),
    STEP("pd_OpenTypeExt", span(in, v, [](auto&&... b) { return pd_OpenTypeExt(b...); }),
         in.pd_OpenTypeExt(v.start, v.numocts)),
    STEP("pd_ChoiceOpenTypeExt",
         span(in, v, [](auto&&... b) { return pd_ChoiceOpenTypeExt(b...); }),
         in.pd_ChoiceOpenTypeExt(v.start, v.numocts)),
};

/// The state after a step.
struct Outcome {
    Value value;
    std::pair<uint32_t, int32_t> cursor;
    AsnStatus firstError;
    bool constrained;  // a size constraint is pending
    std::vector<std::string> trail = {};
    std::vector<reference::Field> fields = {};
    std::string diagnostics = {};
    bool operator==(const Outcome&) const = default;
};

std::string hexOf(const reference::Octets& octets) {
    std::string text = std::to_string(octets.size()) + " octets";
    char digits[4];
    for (size_t i = 0; i < octets.size() && i < 48; ++i) {
        std::snprintf(digits, sizeof digits, " %02X", octets[i]);
        text += digits;
    }
    return text;
}

std::string print(const auto&... numbers) {
    return ((std::to_string(numbers) + " ") + ...);
}

std::string print(const Outcome& outcome) {
    const Value& v = outcome.value;
    std::string text = "status, cursor, first error, constraint: " +
                       print(v.status, outcome.cursor.first, outcome.cursor.second,
                             outcome.firstError, outcome.constrained) +
                       "\n      values " + print(v.count, v.number, v.flag, v.start, v.numocts) +
                       hexOf(v.octets) + ", text " + hexOf({v.text.begin(), v.text.end()}) +
                       "\n      trail ";
    for (const std::string& site : outcome.trail) text += site + " ";
    text += "\n      fields";
    for (const reference::Field& field : outcome.fields)
        text += field.name + " " + print(field.bitOffset, field.bitCount);
    return text + "\n" + outcome.diagnostics;
}

}  // namespace

/// One case in progress: the same octets and cursor in both.
struct ReferenceCase {
    ReferenceComparison& all;
    reference::Octets data;
    std::unique_ptr<uint8_t[]> block;  // the same octets in a block of exactly their size
    std::string diagnostics;
    Reader in;
    AsnContext ctx;
    Arguments arguments[4];  // live as long as the case, because a chain stays pending

    ReferenceCase(ReferenceComparison& comparison, Choices& c, unsigned mode) : all(comparison) {
        const bool aligned = c.oneIn(2);
        uint32_t start = c.below(c.oneIn(4) ? 40 : 10);
        data = makeOctets(c, aligned, start);
        const auto end = static_cast<uint32_t>(data.size() * 8);
        if (start > end || c.oneIn(16)) start = end - c.below(9);
        if (c.oneIn(64)) start = end + c.below(8);  // where a move may have left the cursor
        in = {{&data, 0, 8, aligned, (mode & ReferenceComparison::kTraced) != 0}};
        if ((mode & ReferenceComparison::kDiagnosed) != 0) in.diagnostics = &diagnostics;
        in.pd_SetBitOffset(start);
        if (start > 0 && start % 8 == 0 && c.oneIn(2)) {
            --in.byteIndex;
            in.bitOffset = 0;
        }
        block = std::make_unique<uint8_t[]>(data.size());
        std::copy(data.begin(), data.end(), block.get());
        (void)asnInitContext(ctx, block.get(), static_cast<uint32_t>(data.size()));
        ctx.aligned = aligned ? 1 : 0;
        ctx.byteIndex = in.byteIndex;
        ctx.bitOffset = static_cast<int16_t>(in.bitOffset);
        asnSetFieldTrace(ctx, in.traced ? 1 : 0);
        if (c.oneIn(16)) {  // left over from an earlier failure
            in.log(reference::kRange, "earlier:1");
            asnLogError(ctx.errInfo, kAsnRange, "earlier", 1);
        }
        for (uint32_t names = c.oneIn(4) ? c.below(3) : 0; names > 0 && in.traced; --names) {
            in.nameStack.emplace_back("name");
            (void)pu_pushName(ctx, "name");
        }
    }
    ~ReferenceCase() { asnFreeContext(ctx); }
    ReferenceCase(const ReferenceCase&) = delete;
    ReferenceCase& operator=(const ReferenceCase&) = delete;

    Outcome referenceStep(const Primitive& primitive, const Arguments& a) {
        Value v;
        try {
            primitive.reference(in, v, a);
        } catch (const reference::Status status) {
            v.status = status;
        }
        return {v,
                {in.byteIndex, in.bitOffset},
                in.firstError,
                !in.sizeConstraint.empty(),
                in.trail,
                in.fields,
                std::exchange(diagnostics, {})};
    }

    Outcome runTimeStep(const Primitive& primitive, const Arguments& a, const Outcome& expected) {
        Value v;
        asnSetDiag(in.diagnostics != nullptr ? 1 : 0);
        v.status = primitive.runTime(ctx, v, a);
        asnSetDiag(0);
        Outcome outcome{
            v, {ctx.byteIndex, ctx.bitOffset}, ctx.errInfo.status, ctx.sizeConstraint != nullptr};
        const auto sites = static_cast<size_t>(ctx.errInfo.trailCount);
        for (size_t i = 0; i < sites; ++i) {
            const AsnTrailEntry& entry = ctx.errInfo.trail[i];
            if (sites == expected.trail.size())  // a line belongs to one function
                all.sites_.emplace(entry.line, expected.trail[i]);
            const bool known =
                std::strcmp(entry.module, "rtsrc/asn1per") == 0 && all.sites_.contains(entry.line);
            outcome.trail.push_back(known ? all.sites_[entry.line]
                                          : entry.module + (":" + std::to_string(entry.line)));
        }
        for (auto* link = ctx.fieldList.head; link != nullptr; link = link->next)
            outcome.fields.push_back(
                {link->field->name, link->field->bitOffset, link->field->bitCount});
        if (in.diagnostics == nullptr) return outcome;
        // The address of a field is its own.
        const std::string lines = all.output_.take();
        size_t kept = 0;
        for (size_t at = 0; (at = lines.find("pField 0x", kept)) != std::string::npos;) {
            outcome.diagnostics.append(lines, kept, at + std::strlen("pField 0x") - kept);
            kept = lines.find('\n', at);
        }
        outcome.diagnostics.append(lines, kept);
        return outcome;
    }

    /// Whether both did the same, and there may be a next step.
    bool step(const Primitive& primitive, Arguments& a) {
        const Reader before = in;
        const Outcome expected = referenceStep(primitive, a);
        a.textSize = expected.value.text.size();
        Outcome got = runTimeStep(primitive, a, expected);
        if (in.unsettled) return false;
        ++all.steps_;
        const std::string name = primitive.name;
        const bool succeeded =
            expected.trail.size() == before.trail.size() && expected.value.status >= 0;
        const bool bitReader =
            name.starts_with("pd_bit") || name == "pd_IncrBitIdx" || name == "pd_octets";
        if (!succeeded && !bitReader && got.cursor.second >= 0 && got.cursor.second <= 8)
            got.cursor = expected.cursor;  // unspecified, but in a valid form
        if (got == expected) return succeeded;
        std::string& text = all.difference_;
        if (!text.empty()) return false;
        text = name + (in.aligned ? ", ALIGNED" : ", UNALIGNED") + ", from " +
               print(before.byteIndex, before.bitOffset) + "in " + hexOf(data) +
               "\n  nbits, capacity, rangeSize, lower, upper, distance, itemBits, length: " +
               print(a.nbits, a.capacity, a.rangeSize, a.lower, a.upper, a.distance, a.itemBits,
                     a.length) +
               "\n  permitted: " + (a.permitted == nullptr ? "all" : a.permitted) + ", 16-bit " +
               (a.restricted ? std::to_string(a.codes.size()) : "all") + ", pending:";
        for (const reference::Size& size : before.sizeConstraint)
            text += (size.extended ? " ext " : " ") + print(size.lower, size.upper);
        text += "\n    reference: " + print(expected) + "    run-time:  " + print(got);
        return false;
    }
};

void ReferenceComparison::run(Choices choices, unsigned mode) {
    ReferenceCase one(*this, choices, mode);
    const uint32_t count = 1 + choices.below(4);
    for (uint32_t i = 0; i < count; ++i) {
        const auto primitives = static_cast<uint32_t>(std::size(kPrimitives));
        const uint32_t which = i == 0 && choices.oneIn(3) ? 0 : choices.below(primitives);
        makeArguments(choices, one.arguments[i]);
        if (!one.step(kPrimitives[which], one.arguments[i])) break;
    }
}
