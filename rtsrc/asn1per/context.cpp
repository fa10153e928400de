#include "context.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr uint32_t kOwnBufferSize = 16384;

int32_t diagSwitch = 0;

/// All but the cursor. The trail, the parameters and the name stack are arrays whose count is 0:
/// clearing them would cost more than decoding a small message.
void clear(AsnContext& ctx) {
    ctx.errInfo.trailCount = 0;
    ctx.errInfo.status = 0;
    ctx.errInfo.parmCount = 0;
    ctx.memHeap = {};
    ctx.reserved = 0x0A0A;
    ctx.flags = 0;
    ctx.fieldList = {};
    ctx.sizeConstraint = nullptr;
    ctx.nameStack.count = 0;
    ctx.ownBuffer = nullptr;
    ctx.depth = 0;
    ctx.fieldPaths = nullptr;
}

}  // namespace

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

AsnStatus asnInitContext(AsnContext& ctx, const uint8_t* data, uint32_t size) {
    clear(ctx);
    ctx.aligned = 0;
    return asnBindBuffer(ctx, data, size);
}

AsnStatus asnBindBuffer(AsnContext& ctx, const uint8_t* data, uint32_t size) {
    if (data != nullptr && size != 0) {
        asnBindOctets(ctx, data, size);
        return kAsnOk;
    }
    if (ctx.ownBuffer == nullptr) {
        ctx.ownBuffer = static_cast<uint8_t*>(std::calloc(1, kOwnBufferSize));
        if (ctx.ownBuffer == nullptr) return kAsnNoMemory;
    }
    asnBindOctets(ctx, ctx.ownBuffer, kOwnBufferSize);
    ctx.dynamic = 1;
    return kAsnOk;
}

AsnStatus asnForkContext(AsnContext& fork, const AsnContext& ctx) {
    clear(fork);
    asnRestoreCursor(fork, asnSaveCursor(ctx));
    fork.dynamic = 0;
    fork.aligned = ctx.aligned;
    return kAsnOk;
}

void asnCopyCursor(AsnContext& to, const AsnContext& from) {
    asnRestoreCursor(to, asnSaveCursor(from));
    to.dynamic = from.dynamic;
    to.aligned = from.aligned;
    to.flags = from.flags;
}

void asnFreeContext(AsnContext& ctx) {
    if (ctx.ownBuffer != nullptr) {
        std::free(ctx.ownBuffer);
        ctx.ownBuffer = nullptr;
        ctx.data = nullptr;
        ctx.dynamic = 0;
    }
    if (ctx.memHeap.newest != ctx.memHeap.lent) asnMemRelease(ctx.memHeap);
    for (AsnBitFieldLink* link = ctx.fieldList.head; link != nullptr;) {
        AsnBitFieldLink* const next = link->next;
        std::free(link);
        link = next;
    }
    if (ctx.errInfo.parmCount > 0) asnClearErrorParams(ctx.errInfo);
    if ((ctx.flags & ctxAllocated) != 0) std::free(&ctx);
}

void asnSetFieldTrace(AsnContext& ctx, uint8_t on) {
    const int flags = on != 0 ? ctx.flags | ctxFieldTrace : ctx.flags & ~ctxFieldTrace;
    ctx.flags = static_cast<uint16_t>(flags);
}

int32_t asnSetDiag(int32_t value) {
    return diagSwitch = value;
}

bool asnDiagOn() {
    return diagSwitch != 0;
}

void asnDiag(const char* format, ...) {
    if (!asnDiagOn()) return;
    va_list arguments;
    va_start(arguments, format);
    std::vprintf(format, arguments);
    va_end(arguments);
}
