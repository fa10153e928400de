#include "trace.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>

namespace {

bool traceOn(const AsnContext& ctx) {
    return (ctx.flags & ctxFieldTrace) != 0;
}

/// The field that is being read, or null.
AsnBitField* currentField(const AsnContext& ctx) {
    const AsnBitFieldList& fields = ctx.fieldList;
    return traceOn(ctx) && !fields.lost && fields.tail != nullptr ? fields.tail->field : nullptr;
}

/// Where the cursor is: in its own octets or, if paths are asked for, in the message. False if its
/// octets are not part of the message.
bool position(const AsnContext& ctx, int32_t* bitOffset) {
    *bitOffset = pd_GetBitOffset(ctx);
    if (ctx.fieldPaths == nullptr) return true;
    const uint8_t* const start = ctx.fieldPaths->data;
    const std::less_equal<> inOrder;
    if (!inOrder(start, ctx.data) || !inOrder(ctx.data, start + ctx.fieldPaths->size)) return false;
    *bitOffset += static_cast<int32_t>(ctx.data - start) * 8;
    return true;
}

size_t append(char* to, const char* text) {
    const size_t length = std::strlen(text);
    if (to != nullptr) std::copy_n(text, length, to);
    return length;
}

/// Writes the steps from the outermost to `step`; with null, only counts the characters.
size_t appendPath(char* to, const AsnPathStep* step) {
    if (step == nullptr) return 0;
    char element[16];
    const char* name = step->name;
    if (name == nullptr) {
        std::snprintf(element, sizeof element, "%u]", static_cast<unsigned>(step->index));
        name = element;
    }
    size_t length = appendPath(to, step->outer);
    for (const char* text : {step->prefix, name})
        length += append(to != nullptr ? to + length : nullptr, text);
    return length;
}

/// The path or, without paths, "." and each name of the stack; then " " and the label.
size_t appendName(char* to, const AsnContext& ctx, const AsnPathStep* path, const char* label) {
    size_t length = 0;
    const auto add = [&](const char* text) {
        length += append(to != nullptr ? to + length : nullptr, text);
    };
    if (ctx.fieldPaths != nullptr) {
        add(ctx.fieldPaths->root);
        length += appendPath(to != nullptr ? to + length : nullptr, path);
    }
    for (int32_t i = 0; i < ctx.nameStack.count; ++i) {
        add(".");
        add(ctx.nameStack.names[i]);
    }
    if (label != nullptr) {
        add(" ");
        add(label);
    }
    return length;
}

/// The name of a field, in the element heap.
const char* qualifiedName(AsnContext& ctx, const AsnPathStep* path, const char* label) {
    const size_t length = appendName(nullptr, ctx, path, label);
    auto* const name = static_cast<char*>(asnMemAlloc(ctx.memHeap, length + 1));
    if (name != nullptr) appendName(name, ctx, path, label);
    return name;
}

/// One line of the table of a field: up to four octets of bit characters, the octets in hex and as
/// characters.
class FieldLine {
  public:
    explicit FieldLine(AsnDumpSink sink) : sink_(sink) {}
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
        char text[64];
        const int size = std::snprintf(text, sizeof text, "%-35.35s    %-8.8s    %-4.4s\n", bits_,
                                       hex_, characters_);
        sink_.write(sink_.target, text, static_cast<size_t>(size));
        *this = FieldLine(sink_);
    }
    AsnDumpSink sink_;
    char bits_[36] = {};
    char hex_[9] = {};
    char characters_[5] = {};
    size_t column_ = 0;
    size_t octets_ = 0;
};

/// The bits of one field as they are in the message: "-" before it in its first octet, "x" for the
/// padding after it, which ends where the next field starts; `next` is 0 if there is none.
void printBits(AsnDumpSink sink, std::span<const uint8_t> message, const AsnBitField& field,
               int64_t nextBitOffset) {
    const int64_t end = int64_t{field.bitOffset} + field.bitCount;
    const int64_t stop = nextBitOffset > end ? nextBitOffset : end;
    const int64_t bits = static_cast<int64_t>(message.size()) * 8;
    FieldLine line(sink);
    for (int64_t at = field.bitOffset / 8 * 8; at < stop && at < bits; ++at) {
        const uint8_t octet = message[static_cast<size_t>(at / 8)];
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
    return asnNewField(ctx, nullptr, label);
}

AsnBitField* asnNewField(AsnContext& ctx, const AsnPathStep* path, const char* label) {
    if (!traceOn(ctx)) return nullptr;
    ctx.fieldList.lost = true;
    int32_t bitOffset = 0;
    if (!position(ctx, &bitOffset)) return nullptr;
    const char* const name = qualifiedName(ctx, path, label);
    if (name == nullptr) return nullptr;
    auto* const field = static_cast<AsnBitField*>(asnMemAlloc(ctx.memHeap, sizeof(AsnBitField)));
    if (field == nullptr) return nullptr;
    auto* const link = static_cast<AsnBitFieldLink*>(std::malloc(sizeof(AsnBitFieldLink)));
    if (link == nullptr) return nullptr;
    *field = {name, bitOffset, 0};
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
    int32_t bitOffset = 0;
    if (field == nullptr || !position(ctx, &bitOffset)) return;
    // The padding after a field moves it even if it is closed, except in the trace of a message.
    if (ctx.fieldPaths != nullptr && field->bitCount != 0) return;
    field->bitOffset = bitOffset;
    asnDiag("field '%s' bit offset set to %d\n", field->name, static_cast<int>(field->bitOffset));
}

void pu_setFldBitCount(AsnContext& ctx) {
    AsnBitField* const field = currentField(ctx);
    int32_t end = 0;
    if (field == nullptr || !position(ctx, &end)) return;
    field->bitCount = end - field->bitOffset;
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
    asnPrintFields(asnStreamSink(stdout), ctx.fieldList, {ctx.data, ctx.size}, prefix);
}

void asnPrintFields(AsnDumpSink sink, const AsnBitFieldList& fields,
                    std::span<const uint8_t> message, const char* prefix) {
    const auto print = [&](std::string_view text) {
        sink.write(sink.target, text.data(), text.size());
    };
    for (const AsnBitFieldLink* link = fields.head; link != nullptr; link = link->next) {
        const AsnBitField& field = *link->field;
        const int32_t next = link->next != nullptr ? link->next->field->bitOffset : 0;
        print(prefix);
        print(field.name);
        print("\n");
        asnDiag("bit offset: %d\tbit count: %d\tnext bit offset: %d\n",
                static_cast<int>(field.bitOffset), static_cast<int>(field.bitCount),
                static_cast<int>(next));
        printBits(sink, message, field, next);
        print("\n");
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
