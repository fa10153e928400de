// How a decode reads. Primitives and generated decoders are templates over a reader, which is
// passed by value as `in` and refers to the context. There are two readers: the plain one only logs
// failures; the tracing one also writes diagnostics and the bit-field trace. Which of them runs is
// decided once, when a function that takes a context is called.
//
// Both exist for two sets of rules. The rules are a property of a set of modules, and known when
// its decoders are compiled: a rule that is the same in both costs nothing, and a rule that differs
// asks the reader.
#pragma once

#include "context.h"
#include "trace.h"

/// For what generated decoders call most: inline in code that is optimised for speed, ordinary
/// functions in code for a debugger and in the tracing decoders, which are compiled for size.
#if defined(__OPTIMIZE__) && !defined(__OPTIMIZE_SIZE__)
#define ASN_INLINE __attribute__((always_inline)) inline
#else
#define ASN_INLINE inline
#endif

/// Trail line numbers: all run-time sources log under one module name, so each has a thousand
/// numbers of its own, and a logging site adds its line.
enum class AsnSource : int32_t {
    bits = 1000,
    numbers = 2000,
    strings = 3000,
    objid = 4000,
    real = 5000,
    opentypes = 6000,
    constructs = 7000,
    integers = 8000,
    published = 9000,
};
constexpr const char* kAsnRuntime = "rtsrc/asn1per";

enum class AsnRules {
    designed,   // those of the exports, with the deviations that docs/modules.md lists
    published,  // those of X.691
};

/// What a tracing reader knows besides the context: the path of the value.
template <bool Tracing>
struct AsnReaderPath {};
template <>
struct AsnReaderPath<true> {
    const AsnPathStep* path = nullptr;
};
template <bool Tracing, AsnRules rules>
struct AsnReaderAt;

template <bool Tracing, AsnRules rules = AsnRules::designed>
struct AsnReader {
    static constexpr bool published = rules == AsnRules::published;
    AsnContext& ctx;
    [[no_unique_address]] AsnReaderPath<Tracing> at = {};

    /// Records a failure in the trail and returns it: one site for each statement that calls this.
    AsnStatus log(AsnSource source, AsnStatus status, int line = __builtin_LINE()) const {
        return asnLogError(ctx.errInfo, status, kAsnRuntime, static_cast<int32_t>(source) + line);
    }

    /// Prints a diagnostic line if the switch is on.
    template <class... Values>
    void diag(const char* format, Values... values) const {
        if constexpr (Tracing && sizeof...(Values) != 0) asnDiag(format, values...);
        if constexpr (Tracing && sizeof...(Values) == 0) asnDiag("%s", format);
    }

    // The current field of the trace: open it, move its start to the cursor, close it.
    void newField(const char* label) const {
        if constexpr (Tracing) asnNewField(ctx, at.path, label);
    }
    void setFieldOffset() const {
        if constexpr (Tracing) pu_setFldBitOffset(ctx);
    }
    void setFieldCount() const {
        if constexpr (Tracing) pu_setFldBitCount(ctx);
    }

    // The same reader for a part of the value: a component of a SEQUENCE, an alternative of a
    // CHOICE, an element of a list. Only the tracing reader keeps the path.
    auto component([[maybe_unused]] const char* name) const {
        if constexpr (Tracing) return AsnReaderAt<true, rules>(*this, ".", name, 0);
        if constexpr (!Tracing) return *this;
    }
    auto alternative([[maybe_unused]] const char* name) const {
        if constexpr (Tracing) return AsnReaderAt<true, rules>(*this, ".u@", name, 0);
        if constexpr (!Tracing) return *this;
    }
    auto element([[maybe_unused]] uint32_t index) const {
        if constexpr (Tracing) return AsnReaderAt<true, rules>(*this, ".elem[", nullptr, index);
        if constexpr (!Tracing) return *this;
    }
};
using AsnPlainReader = AsnReader<false>;
using AsnTracingReader = AsnReader<true>;

template <bool Tracing>
using AsnPublishedReader = AsnReader<Tracing, AsnRules::published>;
using AsnPlainPublishedReader = AsnPublishedReader<false>;
using AsnTracingPublishedReader = AsnPublishedReader<true>;

/// A tracing reader with a step of its own: it lives while the part is read.
template <bool Tracing, AsnRules rules>
struct AsnReaderAt : AsnReader<Tracing, rules> {
    AsnReaderAt(const AsnReader<Tracing, rules>& outer, const char* prefix, const char* name,
                uint32_t index)
        : AsnReader<Tracing, rules>{outer.ctx, {&step}}, step{outer.at.path, prefix, name, index} {}
    AsnReaderAt(const AsnReaderAt&) = delete;
    AsnReaderAt& operator=(const AsnReaderAt&) = delete;
    AsnPathStep step;
};

/// Runs `decode(reader)` with the reader that the context asks for.
template <AsnRules rules = AsnRules::designed, class Decode>
inline auto asnRead(AsnContext& ctx, Decode decode) {
    const bool tracing = (ctx.flags & ctxFieldTrace) != 0 || asnDiagOn();
    return tracing ? decode(AsnReader<true, rules>{ctx}) : decode(AsnReader<false, rules>{ctx});
}
