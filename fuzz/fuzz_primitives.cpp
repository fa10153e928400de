// Every primitive: the first octets choose it, the variant, the bit to begin at and a constraint.
// Nobody watches the first run; the second, with the trace on, must do the same.

#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "asn1per/asn1per.h"

namespace {

/// What the primitives read; each call fills one of these.
struct Value {
    uint32_t count = 0;
    uint8_t buffer[40] = {};
    uint8_t sixteen[16] = {};
    const char* text = nullptr;
    AsnOpenType open{};
    AsnDynOctStr octets{};
    AsnDynBitStr bits{};
    AsnBMPString bmp{};
    AsnObjId id{};
    double real = 0;
};

AsnStatus readAddition(AsnContext& ctx, void* record, uint32_t index) {
    auto& value = *static_cast<Value*>(record);
    return pd_octets(ctx, value.buffer, sizeof value.buffer, index);
}

AsnStatus readOne(AsnContext& ctx, unsigned which, unsigned parameter, Value& value) {
    static constexpr AsnSizeConstraint kBeyond{1, 0, 300, nullptr};
    static constexpr AsnSizeConstraint kSizes[] = {
        {0, 1, 1, nullptr},   {0, 0, 2, nullptr},     {0, 1, 128, nullptr}, {0, 1, 256, nullptr},
        {0, 16, 16, nullptr}, {0, 1, 65535, nullptr}, {0, 2, 9, &kBeyond},  {0, 0, 65536, nullptr}};
    if ((parameter & 8) != 0) pd_SetSizeConstraint(ctx, &kSizes[parameter & 7]);
    const char* const alphabet = (parameter & 16) != 0 ? "0123456789#*," : nullptr;
    uint32_t& count = value.count;
    auto& number = reinterpret_cast<int32_t&>(count);
    auto& flag = reinterpret_cast<uint8_t&>(count);
    AsnCursor behind;
    switch (which) {
        case 0:
            return pd_bits(ctx, &count, parameter);
        case 1:
            return pd_octets(ctx, value.buffer, sizeof value.buffer, parameter);
        case 2:
            return pd_ConsWholeNumber(ctx, &count, parameter * parameter * 7);
        case 3:
            return pd_ConsInteger(ctx, &number, -5, static_cast<int32_t>(parameter) * 1000);
        case 4:
            return pd_ConsUnsigned(ctx, &count, 0, parameter << 24);
        case 5:
            return pd_ExtInteger(ctx, &number, 1, 32768);
        case 6:
            return pd_UnconsInteger(ctx, &number);
        case 7:
            return pd_UnconsUnsigned(ctx, &count);
        case 8:
            return pd_SmallNonNegWholeNumber(ctx, &count);
        case 9:
            return pd_Length(ctx, &count);
        case 10:
            return std::min(pd_GetComponentLength(ctx, parameter & 15), 0);
        case 11:
            return pd_BitString(ctx, &count, value.buffer, sizeof value.buffer);
        case 12:
            return pd_OctetString(ctx, &count, value.buffer, sizeof value.buffer);
        case 13:
            return pd_DynBitString(ctx, value.bits);
        case 14:
            return pd_DynOctetString(ctx, value.octets);
        case 15:
            return pd_NumericString(ctx, &value.text, alphabet);
        case 16:
            return pd_PrintableString(ctx, &value.text, alphabet);
        case 17:
            return pd_VisibleString(ctx, &value.text, alphabet);
        case 18:
            return pd_IA5String(ctx, &value.text, alphabet);
        case 19:
            return pd_GeneralString(ctx, &value.text, alphabet);
        case 20:
            return pd_86CharString(ctx, &value.text, alphabet);
        case 21:
            return pd_BMPString(ctx, value.bmp, nullptr);
        case 22:
            return pd_ObjectId(ctx, value.id);
        case 23:
            return pd_Real(ctx, &value.real);
        case 24:
            return pd_OpenType(ctx, &value.open.data, &value.open.numocts);
        case 25:
            return pd_OpenTypeExt(ctx, &value.open.data, &value.open.numocts);
        case 26:
            return pd_ChoiceOpenTypeExt(ctx, &value.open.data, &value.open.numocts);
        case 27:
            return pd_moveBitCursor(ctx, static_cast<int64_t>(parameter) * 5 - 300);
        case 28:
            return pd_ListLength(ctx, &count, parameter);
        case 29:
            return pd_Boolean(ctx, flag);
        case 30:
            count = pd_Flags(ctx, 1 + (parameter & 31));
            return kAsnOk;
        case 31:
            return pd_ExtAlternative(ctx, &count, parameter == 0 ? 1 : parameter);
        case 32:
            return pd_ConsInteger(ctx, &number, 1, 256);
        case 33:
            return pd_ConsInteger(ctx, &number, 0, 65535);
        case 34:
            return pd_SizedOctetString(ctx, kSizes[4], count, value.sixteen);
        case 35:
            return pd_Additions(ctx, &value, readAddition);
        case 36:
            return asnEnterOpenType(ctx, behind);  // what follows is read inside
        default:
            return pd_byteAlign(ctx);
    }
}

/// All of it as numbers.
void append(std::vector<int64_t>& seen, const Value& value) {
    const auto add = [&seen](const auto* from, size_t count) {
        seen.insert(seen.end(), from, from + count);
    };
    add(&value.count, 1);
    add(value.buffer, sizeof value.buffer);
    add(value.sixteen, sizeof value.sixteen);
    if (value.text != nullptr) add(value.text, std::strlen(value.text));
    if (value.open.data != nullptr) add(value.open.data, value.open.numocts);
    add(value.octets.data, value.octets.numocts);
    add(&value.bits.numbits, 1);
    add(value.bits.data, (value.bits.numbits + 7) / 8);
    add(value.bmp.data, value.bmp.nchars);
    add(value.id.subid, static_cast<size_t>(value.id.numids));
    int64_t real = 0;
    std::memcpy(&real, &value.real, sizeof real);
    add(&real, 1);
}

struct Input {
    const uint8_t* calls;  // a pair of octets each
    size_t count;
    const uint8_t* octets;
    uint32_t length;
    uint8_t flags;
};

/// Statuses, values and places of the cursor.
std::vector<int64_t> outcome(const Input& input, bool watched) {
    asnEverWatched = false;
    std::vector<int64_t> seen;
    AsnContext ctx;
    const uint8_t one = 0;
    if (asnInitContext(ctx, &one, 1) != kAsnOk) std::abort();
    asnBindOpenType(ctx, input.octets, input.length);
    ctx.aligned = input.flags & 1;
    asnSetFieldTrace(ctx, watched ? 1 : 0);
    if (input.length != 0) ctx.bitOffset = static_cast<int16_t>(input.flags >> 2 & 7);
    for (size_t i = 0; i < input.count; ++i) {
        Value value;
        const AsnStatus status =
            readOne(ctx, input.calls[2 * i] % 38U, input.calls[2 * i + 1], value);
        if (status < -24 || status > 2) std::abort();
        if (ctx.bitOffset < 0 || ctx.bitOffset > 8 || ctx.byteIndex > input.length + 1)
            std::abort();
        seen.insert(seen.end(), {status, ctx.byteIndex, ctx.bitOffset});
        if (status < 0) break;
        if (status == kAsnOk) append(seen, value);
    }
    asnFreeContext(ctx);
    return seen;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    const size_t calls = 1 + (data[1] & 7U);
    if (size - 2 < 2 * calls) return 0;
    const size_t length = size - 2 - 2 * calls;
    const std::unique_ptr<uint8_t[]> block(new uint8_t[length]);
    std::memcpy(block.get(), data + 2 + 2 * calls, length);
    const Input input{data + 2, calls, block.get(), static_cast<uint32_t>(length), data[0]};
    if (outcome(input, false) != outcome(input, true)) std::abort();
    return 0;
}
