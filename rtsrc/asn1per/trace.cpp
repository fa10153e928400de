#include "trace.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

bool traceOn(const AsnContext& ctx) {
    return (ctx.flags & ctxFieldTrace) != 0;
}

/// The field that is being read, or null.
AsnBitField* currentField(const AsnContext& ctx) {
    const AsnBitFieldList& fields = ctx.fieldList;
    return traceOn(ctx) && !fields.lost && fields.tail != nullptr ? fields.tail->field : nullptr;
}

/// "" + "." + each name of the stack + " " + label, in the element heap.
const char* qualifiedName(AsnContext& ctx, const char* label) {
    size_t length = label != nullptr ? 1 + std::strlen(label) : 0;
    for (int32_t i = 0; i < ctx.nameStack.count; ++i)
        length += 1 + std::strlen(ctx.nameStack.names[i]);
    auto* const name = static_cast<char*>(asnMemAlloc(ctx.memHeap, length + 1));
    if (name == nullptr) return nullptr;
    for (int32_t i = 0; i < ctx.nameStack.count; ++i)
        std::strcat(std::strcat(name, "."), ctx.nameStack.names[i]);
    if (label != nullptr) std::strcat(std::strcat(name, " "), label);
    return name;
}

/// One line of the table of a field: up to four octets of bit characters, the octets in hex and as
/// characters.
class FieldLine {
  public:
    void put(char bit, uint8_t octet, bool octetEnds) {
        bits_[column_++] = bit;
        if (!octetEnds) return;
        std::snprintf(hex_ + 2 * octets_, 3, "%02x", octet);
        characters_[octets_++] = octet >= 0x20 && octet < 0x7F ? static_cast<char>(octet) : '.';
        if (octets_ == 4)
            print();
        else
            bits_[column_++] = ' ';
    }
    void finish() {
        if (column_ == 0) return;
        std::memset(bits_ + column_, '-', 35 - column_);
        std::memset(hex_ + 2 * octets_, '-', 8 - 2 * octets_);
        std::memset(characters_ + octets_, '-', 4 - octets_);
        print();
    }

  private:
    void print() {
        std::printf("%-35.35s    %-8.8s    %-4.4s\n", bits_, hex_, characters_);
        *this = {};
    }
    char bits_[36] = {};
    char hex_[9] = {};
    char characters_[5] = {};
    size_t column_ = 0;
    size_t octets_ = 0;
};

/// The bits of one field as they stand in the message: "-" before it in its first octet, "x" for
/// the padding behind it. The next field's start says how far that reaches; 0 stands for none.
void printBits(const AsnContext& ctx, const AsnBitField& field, int64_t nextBitOffset) {
    const int64_t end = int64_t{field.bitOffset} + field.bitCount;
    const int64_t stop = nextBitOffset > end ? nextBitOffset : end;
    FieldLine line;
    for (int64_t at = field.bitOffset / 8 * 8; at < stop && at < int64_t{ctx.size} * 8; ++at) {
        const uint8_t octet = ctx.data[at / 8];
        char bit = 'x';
        if (at < field.bitOffset)
            bit = '-';
        else if (at < end)
            bit = (octet >> (7 - at % 8) & 1) != 0 ? '1' : '0';
        line.put(bit, octet, at % 8 == 7);
    }
    line.finish();
}

}  // namespace

AsnBitField* pu_newField(AsnContext& ctx, const char* label) {
    if (!traceOn(ctx)) return nullptr;
    ctx.fieldList.lost = true;
    const char* const name = qualifiedName(ctx, label);
    if (name == nullptr) return nullptr;
    auto* const field = static_cast<AsnBitField*>(asnMemAlloc(ctx.memHeap, sizeof(AsnBitField)));
    if (field == nullptr) return nullptr;
    auto* const link = static_cast<AsnBitFieldLink*>(std::malloc(sizeof(AsnBitFieldLink)));
    if (link == nullptr) return nullptr;
    *field = {name, pd_GetBitOffset(ctx), 0};
    asnDiag("pu_newField: name '%s', bitOffset %d, pField 0x%x\n", name,
            static_cast<int>(field->bitOffset),
            static_cast<unsigned>(reinterpret_cast<uintptr_t>(field)));
    *link = {field, nullptr};
    (ctx.fieldList.tail != nullptr ? ctx.fieldList.tail->next : ctx.fieldList.head) = link;
    ctx.fieldList.tail = link;
    ctx.fieldList.lost = false;
    ++ctx.fieldList.count;
    return field;
}

void pu_setFldBitOffset(AsnContext& ctx) {
    AsnBitField* const field = currentField(ctx);
    if (field == nullptr) return;
    field->bitOffset = pd_GetBitOffset(ctx);
    asnDiag("field '%s' bit offset set to %d\n", field->name, static_cast<int>(field->bitOffset));
}

void pu_setFldBitCount(AsnContext& ctx) {
    AsnBitField* const field = currentField(ctx);
    if (field == nullptr) return;
    field->bitCount = pd_GetBitOffset(ctx) - field->bitOffset;
    asnDiag("field '%s' bit count set to %d\n", field->name, static_cast<int>(field->bitCount));
}

AsnStatus pu_pushName(AsnContext& ctx, const char* name) {
    if (!traceOn(ctx)) return kAsnOk;
    if (ctx.nameStack.count >= 32) return kAsnTooDeep;
    ctx.nameStack.names[ctx.nameStack.count++] = name;
    return kAsnOk;
}

const char* pu_popName(AsnContext& ctx) {
    if (!traceOn(ctx) || ctx.nameStack.count == 0) return nullptr;
    return ctx.nameStack.names[--ctx.nameStack.count];
}

void pu_printBitFieldList(const AsnContext& ctx, const char* prefix) {
    for (const AsnBitFieldLink* link = ctx.fieldList.head; link != nullptr; link = link->next) {
        const AsnBitField& field = *link->field;
        const int32_t next = link->next != nullptr ? link->next->field->bitOffset : 0;
        std::printf("%s%s\n", prefix, field.name);
        asnDiag("bit offset: %d\tbit count: %d\tnext bit offset: %d\n",
                static_cast<int>(field.bitOffset), static_cast<int>(field.bitCount),
                static_cast<int>(next));
        printBits(ctx, field, next);
        std::printf("\n");
    }
}

void pu_hexDump(const AsnContext& ctx) {
    std::printf("\nHEX                                              ASCII\n");
    uint32_t octets = ctx.byteIndex + (ctx.bitOffset != 8 ? 1 : 0);
    if (octets > ctx.size) octets = ctx.size;
    for (uint32_t start = 0; start < octets; start += 16) {
        char hex[49];
        char characters[17];
        std::memset(hex, ' ', 48);
        std::memset(characters, ' ', 16);
        hex[48] = characters[16] = 0;
        for (uint32_t i = 0; i < 16 && start + i < octets; ++i) {
            const uint8_t octet = ctx.data[start + i];
            char digits[3];
            std::snprintf(digits, sizeof digits, "%02x", octet);
            std::memcpy(hex + size_t{3} * i, digits, 2);
            if (octet >= 32 && octet <= 127)
                characters[i] = static_cast<char>(octet);
            else
                characters[i] = '.';
        }
        std::printf("%48s %16s\n", hex, characters);
    }
}
