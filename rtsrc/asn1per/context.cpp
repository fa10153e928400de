#include "context.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {
constexpr uint32_t kOwnBufferSize = 16384;
}

AsnContext* asnNewContext(const uint8_t* data, uint32_t size, uint8_t aligned) {
    auto* const ctx = static_cast<AsnContext*>(std::malloc(sizeof(AsnContext)));
    if (ctx == nullptr) return nullptr;
    if (asnInitContext(*ctx, data, size) != kAsnOk) {
        std::free(ctx);
        return nullptr;
    }
    ctx->flags = ctxAllocated;
    ctx->aligned = aligned;
    return ctx;
}

// Not inlined into asnNewContext: malloc and memset would become one calloc, which in the GNU C
// library passes by the thread's cache and takes several times as long.
[[gnu::noinline]] AsnStatus asnInitContext(AsnContext& ctx, const uint8_t* data, uint32_t size) {
    std::memset(&ctx, 0, sizeof ctx);
    ctx.reserved = 0x0A0A;
    return asnBindBuffer(ctx, data, size);
}

AsnStatus asnBindBuffer(AsnContext& ctx, const uint8_t* data, uint32_t size) {
    if (data != nullptr && size != 0) {
        asnBindOpenType(ctx, data, size);
        return kAsnOk;
    }
    if (ctx.ownedBuffer == nullptr) {
        ctx.ownedBuffer = static_cast<uint8_t*>(std::calloc(1, kOwnBufferSize));
        if (ctx.ownedBuffer == nullptr) return kAsnNoMemory;
    }
    asnBindOpenType(ctx, ctx.ownedBuffer, kOwnBufferSize);
    ctx.dynamic = 1;
    return kAsnOk;
}

void asnBindOpenType(AsnContext& ctx, const uint8_t* data, uint32_t numocts) {
    ctx.data = data;
    ctx.byteIndex = 0;
    ctx.size = numocts;
    ctx.bitOffset = 8;
    ctx.dynamic = 0;
}

AsnStatus asnForkContext(AsnContext& fork, const AsnContext& ctx) {
    // The trail and the name stack are arrays behind counts of 0: clearing them would cost more
    // than the few bits that are read through a second cursor.
    fork.errInfo.trailCount = 0;
    fork.errInfo.status = 0;
    fork.errInfo.parmCount = 0;
    fork.memHeap = {};
    fork.reserved = 0x0A0A;
    fork.fieldList = {};
    fork.sizeConstraint = nullptr;
    fork.nameStack.count = 0;
    fork.ownedBuffer = nullptr;
    fork.depth = 0;
    asnCopyCursor(fork, ctx);
    fork.dynamic = 0;
    fork.flags = 0;
    return kAsnOk;
}

void asnCopyCursor(AsnContext& to, const AsnContext& from) {
    to.data = from.data;
    to.byteIndex = from.byteIndex;
    to.size = from.size;
    to.bitOffset = from.bitOffset;
    to.dynamic = from.dynamic;
    to.aligned = from.aligned;
    to.flags = from.flags;
}

void asnFreeContext(AsnContext& ctx) {
    std::free(ctx.ownedBuffer);
    ctx.ownedBuffer = nullptr;
    if (ctx.dynamic != 0) {
        ctx.data = nullptr;
        ctx.dynamic = 0;
    }
    asnMemRelease(ctx.memHeap);
    for (AsnBitFieldLink* link = ctx.fieldList.head; link != nullptr;) {
        AsnBitFieldLink* const next = link->next;
        std::free(link);
        link = next;
    }
    asnClearErrorParams(ctx.errInfo);
    if ((ctx.flags & ctxAllocated) != 0) std::free(&ctx);
}

void asnSetFieldTrace(AsnContext& ctx, uint8_t on) {
    ctx.flags =
        static_cast<uint16_t>(on != 0 ? ctx.flags | ctxFieldTrace : ctx.flags & ~ctxFieldTrace);
}

int32_t asnDiagSwitch = 0;

int32_t asnSetDiag(int32_t value) {
    return asnDiagSwitch = value;
}

void asnDiag(const char* format, ...) {
    if (!asnDiagOn()) return;
    va_list arguments;
    va_start(arguments, format);
    std::vprintf(format, arguments);
    va_end(arguments);
}
