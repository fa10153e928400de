// Every primitive: the first octets choose it, the variant, the bit to begin at and a constraint.

#include <cstdlib>
#include <cstring>
#include <memory>

#include "asn1per/asn1per.h"

namespace {

AsnStatus readOne(AsnContext& ctx, unsigned which, unsigned parameter) {
    static constexpr AsnSizeConstraint kBeyond{1, 0, 300, nullptr};
    static constexpr AsnSizeConstraint kSizes[] = {
        {0, 1, 1, nullptr},   {0, 0, 2, nullptr},     {0, 1, 128, nullptr}, {0, 1, 256, nullptr},
        {0, 16, 16, nullptr}, {0, 1, 65535, nullptr}, {0, 2, 9, &kBeyond},  {0, 0, 65536, nullptr}};
    if ((parameter & 8) != 0) pd_SetSizeConstraint(ctx, &kSizes[parameter & 7]);
    const char* const alphabet = (parameter & 16) != 0 ? "0123456789#*," : nullptr;
    int32_t number = 0;
    uint32_t count = 0;
    uint8_t buffer[40];
    const char* text = nullptr;
    const uint8_t* data = nullptr;
    AsnDynOctStr octets{};
    AsnDynBitStr bits{};
    AsnBMPString bmp{};
    AsnObjId id{};
    double real = 0;
    switch (which) {
        case 0:
            return pd_bits(ctx, &count, parameter);
        case 1:
            return pd_octets(ctx, buffer, sizeof buffer, parameter);
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
            return pd_BitString(ctx, &count, buffer, sizeof buffer);
        case 12:
            return pd_OctetString(ctx, &count, buffer, sizeof buffer);
        case 13:
            return pd_DynBitString(ctx, bits);
        case 14:
            return pd_DynOctetString(ctx, octets);
        case 15:
            return pd_NumericString(ctx, &text, alphabet);
        case 16:
            return pd_PrintableString(ctx, &text, alphabet);
        case 17:
            return pd_VisibleString(ctx, &text, alphabet);
        case 18:
            return pd_IA5String(ctx, &text, alphabet);
        case 19:
            return pd_GeneralString(ctx, &text, alphabet);
        case 20:
            return pd_86CharString(ctx, &text, alphabet);
        case 21:
            return pd_BMPString(ctx, bmp, nullptr);
        case 22:
            return pd_ObjectId(ctx, id);
        case 23:
            return pd_Real(ctx, &real);
        case 24:
            return pd_OpenType(ctx, &data, &count);
        case 25:
            return pd_OpenTypeExt(ctx, &data, &count);
        case 26:
            return pd_ChoiceOpenTypeExt(ctx, &data, &count);
        case 27:
            return pd_moveBitCursor(ctx, static_cast<int64_t>(parameter) * 5 - 300);
        case 28:
            return pd_ListLength(ctx, &count, parameter);
        default:
            return pd_byteAlign(ctx);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    const uint8_t flags = data[0];
    size_t calls = 1 + (data[1] & 7U);
    data += 2;
    size -= 2;
    if (size < 2 * calls) return 0;
    const size_t length = size - 2 * calls;
    const std::unique_ptr<uint8_t[]> block(new uint8_t[length]);
    std::memcpy(block.get(), data + 2 * calls, length);
    AsnContext ctx;
    const uint8_t one = 0;
    if (asnInitContext(ctx, &one, 1) != kAsnOk) return 0;
    asnBindOpenType(ctx, block.get(), static_cast<uint32_t>(length));
    ctx.aligned = flags & 1;
    asnSetFieldTrace(ctx, flags & 2);
    if (length != 0) ctx.bitOffset = static_cast<int16_t>(flags >> 2 & 7);
    for (size_t i = 0; i < calls; ++i) {
        const AsnStatus status = readOne(ctx, data[2 * i] % 30U, data[2 * i + 1]);
        if (status < -24 || status > 2) std::abort();
        if (ctx.bitOffset < 0 || ctx.bitOffset > 8 || ctx.byteIndex > length + 1) std::abort();
        if (status < 0) break;
    }
    asnFreeContext(ctx);
    return 0;
}
