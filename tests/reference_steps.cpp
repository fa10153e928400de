#include "reference_steps.h"

#include <unistd.h>

#include <bit>
#include <cstring>
#include <iterator>
#include <memory>
#include <utility>

#include "asn1per/asn1per.h"

uint64_t Choices::word() {
    if (octets_ != nullptr) {
        uint64_t word = 0;
        for (int i = 0; i < 2 && count_ > 0; ++i, --count_) word = word << 8 | *octets_++;
        return word;
    }
    uint64_t z = state_ += 0x9E3779B97F4A7C15;
    z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9;
    z = (z ^ z >> 27) * 0x94D049BB133111EB;
    return z ^ z >> 31;
}

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

/// What any primitive may be called with.
struct Arguments {
    uint32_t nbits = 0;
    uint32_t capacity = 0;
    uint32_t rangeSize = 0;
    int32_t lower = 0;
    int32_t upper = 0;
    int64_t distance = 0;
    uint32_t itemBits = 0;
    const char* permitted = nullptr;
    reference::SizeChain chain;
    std::vector<AsnSizeConstraint> records;  // the same chain
    bool restricted = false;                 // the 16-bit codes are a permitted alphabet
    std::vector<uint16_t> codes;
    Asn16BitAlphabet codes16{};
    const Asn16BitAlphabet* permitted16() const { return restricted ? &codes16 : nullptr; }
    uint32_t width = 0;
    uint16_t lowest = 0;
    uint32_t length = 0;
    size_t textSize = 0;  // of the text that the reference reader read
};

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

/// Octets that mean something from a bit on: numbers, bitmaps, lengths and contents.
class Encoding {
  public:
    Encoding(Choices& choices, bool aligned) : c_(choices), aligned_(aligned) {}

    reference::Octets make(uint32_t start) {
        for (uint32_t i = 0; i < start; ++i) put(c_.below(2), 1);
        const uint32_t kind = c_.below(8);
        mask_ = c_.pick({0xFFU, 0xFFU, 0x07U, 0x7FU, 0x0FU});
        fixed_ = c_.pick({0x00U, 0x00U, 0x30U, 0x80U, 0xC0U});
        if (kind == 0) {
            putContents(1 + c_.below(24), false);
        } else {
            lead();
            for (uint32_t items = 1 + c_.below(3); items > 0; --items) item();
            if (c_.oneIn(2)) putContents(c_.below(4), false);
        }
        if (c_.oneIn(4)) octets_.resize(c_.below(static_cast<uint32_t>(octets_.size()) + 1));
        if (octets_.empty()) octets_.push_back(static_cast<uint8_t>(c_.below(256)));
        return {octets_.begin(), octets_.end()};  // in a block of exactly this size
    }

  private:
    void put(uint32_t value, uint32_t nbits) {
        for (; nbits > 0; --nbits, ++at_) {
            if (at_ % 8 == 0) octets_.push_back(0);
            const uint32_t bit = value >> (nbits - 1) & 1;
            octets_.back() = static_cast<uint8_t>(octets_.back() | bit << (7 - at_ % 8));
        }
    }
    void align() { put(0, (8 - at_ % 8) % 8); }

    /// What precedes a length: nothing, bits, or a small number with a bitmap.
    void lead() {
        const uint32_t n = c_.below(c_.oneIn(8) ? 64 : 4);
        switch (c_.below(6)) {
            case 0:
            case 1:
                return;
            case 2:
                return put(c_.below(4), 1 + c_.below(2));
            case 3:
                return put(n, 7);
            case 4:
                put(n, 7);
                for (uint32_t i = 0; i <= n; ++i) put(c_.below(2), 1);
                return;
            default:
                put(1, 1);
                if (aligned_) align();
                put(c_.oneIn(4) ? 0 : 1, 8);
                align();
                put(n, 8);
                if (c_.oneIn(2)) put(c_.below(1 << n % 16), n % 16);
        }
    }

    /// A length determinant and contents.
    void item() {
        if (aligned_) align();
        uint32_t length = c_.below(10);
        switch (c_.below(16)) {
            case 0:
                length = c_.pick({16U, 17U, 63U, 64U, 100U, 127U});
                break;
            case 1:
                length = c_.pick({2U, 100U, 128U, 129U, 130U, 140U, 200U, 299U, 300U, 301U});
                put(2, 2);
                put(length, 14);
                return putContents(length, !c_.oneIn(4));
            case 2: {
                const uint32_t m = c_.below(6);
                put(3, 2);
                put(c_.oneIn(64) ? 63 : m, 6);
                // Most are cut short; some have all bits; few have all octets.
                putContents(c_.oneIn(64) ? m * 16384 : c_.oneIn(4) ? m * 2048 : 3, true);
                return;
            }
            default:
                break;
        }
        put(length, 8);
        putContents(length, true);
    }

    void putContents(uint32_t count, bool real) {
        if (count > 1000) {
            align();
            octets_.insert(octets_.end(), count, static_cast<uint8_t>(c_.below(256)));
            at_ += count * 8;
            return;
        }
        for (uint32_t i = 0; i < count; ++i)
            put(i == 0 && real && c_.oneIn(6)
                    ? c_.pick({0x40U, 0x41U, 0x42U, 0x43U, 0x80U, 0x81U, 0x94U, 0xA9U, 0xC0U})
                    : (c_.below(256) & mask_) | fixed_,
                8);
    }

    Choices& c_;
    bool aligned_;
    uint32_t mask_ = 0;
    uint32_t fixed_ = 0;
    uint32_t at_ = 0;
    reference::Octets octets_;
};

void makeArguments(Choices& c, Arguments& a) {
    a.nbits = c.oneIn(8) ? c.below(400) : c.below(40);
    a.capacity = c.oneIn(2) ? (a.nbits + 7) / 8 - (a.nbits > 0 && c.oneIn(4) ? 1 : 0)
                            : c.pick({0U, 1U, 2U, 3U, 64U, 64U, 300U, 2048U});
    if (c.oneIn(64)) a.capacity = 70000;
    constexpr uint32_t kRanges[] = {0,     1,     2,        3,          10,        11,
                                    64,    255,   256,      257,        65535,     65536,
                                    65537, 70000, 1U << 24, 1U << 31,   128,       40000,
                                    300,   4,     1000000,  UINT32_MAX, 0x7FFFFFFF};
    a.rangeSize = c.pick(kRanges);
    constexpr int32_t kBounds[] = {INT32_MIN, -70000, -128, -5, -1,  0,     0,     1,        1,
                                   2,         7,      15,   63, 127, 16384, 65536, INT32_MAX};
    a.lower = c.pick(kBounds);
    const uint32_t reach = c.pick(kRanges);
    a.upper = static_cast<int32_t>(static_cast<uint32_t>(a.lower) + reach -
                                   (c.oneIn(2) ? 1 : c.below(300)));
    a.distance = static_cast<int64_t>(c.below(c.oneIn(8) ? 2000000 : 120)) - (c.oneIn(4) ? 40 : 0);
    if (c.oneIn(4)) a.distance = -a.distance;
    a.itemBits = c.pick({1U, 8U, 8U, 3U, 2U, 4U, 7U, 16U, 64U});
    if (c.oneIn(2))
        a.permitted =
            c.pick({"0123456789#*,", "0123456789#*ABCD!", "", "a", "01", "~}\x7f", "\xe4",
                    " !\"#$%&'()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\]^_",
                    "0123456789 ", "abcdefghijklmnopqrstuvwxyz0123456789ABCDEFGHIJKLMNOP"});
    for (uint32_t records = c.oneIn(6) ? 3 : c.below(3); records > 0; --records) {
        constexpr uint32_t kCounts[] = {0,  0,  1,  1,   2,   2,   3,     4,     8,
                                        15, 16, 17, 128, 255, 256, 300,   65535, 65536,
                                        5,  7,  0,  1,   2,   16,  70000, 0,     UINT32_MAX};
        uint32_t lower = c.pick(kCounts);
        uint32_t upper = c.oneIn(4) ? lower : c.pick(kCounts);
        if (lower > upper && !c.oneIn(32)) std::swap(lower, upper);
        a.chain.push_back({c.oneIn(3), lower, upper});
    }
    for (const reference::Size& size : a.chain)
        a.records.push_back({size.extended, size.lower, size.upper, nullptr});
    for (size_t i = 1; i < a.records.size(); ++i) a.records[i - 1].next = &a.records[i];
    a.restricted = c.oneIn(2);
    for (uint32_t i = c.pick({0U, 1U, 2U, 3U, 10U, 16U, 17U, 255U}); i > 0; --i)
        a.codes.push_back(static_cast<uint16_t>(i * 259));
    a.codes16 = {static_cast<uint32_t>(a.codes.size()), a.codes.data()};
    a.width = 1 + a.nbits % 16;
    a.lowest = static_cast<uint16_t>(c.below(3) * 0x7001);
    a.length = c.below(c.oneIn(4) ? 200 : 6);
}

/// What a step left behind.
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
        data = Encoding(c, aligned).make(start);
        const auto end = static_cast<uint32_t>(data.size() * 8);
        if (start > end || c.oneIn(16)) start = end - c.below(9);
        if (c.oneIn(64)) start = end + c.below(8);  // where a move may have left the cursor
        in = {&data, 0, 8, aligned, (mode & ReferenceComparison::kTraced) != 0};
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
