// How a primitive reads: it takes the cursor out of the context into a reader, which the compiler
// keeps in registers, and puts it back at its end. There are two readers. The plain one is silent,
// even about failures. The watched one tells every step to the diagnostic switch and the bit-field
// trace, and logs what fails. Primitives are templates over the two, so that each rule stands in
// one place. A primitive runs plain; where somebody watches or the plain run fails, it runs
// watched.
//
// For the run-time's own sources; what they read for others is declared in bits.h and the rest.
#pragma once

#include <cstring>
#include <type_traits>

#include "bits.h"
#include "trace.h"

/// Logs the failures of one source file: `logError(ctx, status)` records the line it stands on.
struct AsnLogger {
    AsnLogBase base;
    [[gnu::cold]] AsnStatus operator()(AsnContext& ctx, AsnStatus status,
                                       int line = __builtin_LINE()) const {
        return asnLogError(ctx.errInfo, status, kAsnRuntime, static_cast<int32_t>(base) + line);
    }
};

/// Copies `nbits` bits that start where `unread` bits are left of the octet at `from`,
/// left-aligned. No octet behind the last bit is touched; the unused low bits of the last one are
/// cleared.
void asnCopyBits(uint8_t* to, const uint8_t* from, uint32_t unread, uint32_t nbits);

/// The cursor of a context, in registers. Every member reads as the function of bits.h that it is
/// behind.
class AsnReader {
  public:
    explicit AsnReader(AsnContext& ctx)
        : ctx_(ctx),
          data_(ctx.data),
          index_(ctx.byteIndex),
          size_(ctx.size),
          unread_(static_cast<uint32_t>(ctx.bitOffset)) {}

    AsnContext& ctx() const { return ctx_; }
    bool aligned() const { return ctx_.aligned != 0; }
    const uint8_t* here() const { return data_ + index_; }
    bool atBoundary() const { return unread_ == 8; }
    int64_t position() const { return int64_t{index_} * 8 + 8 - unread_; }
    int64_t bitsLeft() const { return int64_t{size_} * 8 - position(); }

    /// Puts the cursor into a context over the same octets.
    void store(AsnCursor& cursor) const {
        cursor.byteIndex = index_;
        cursor.bitOffset = static_cast<int16_t>(unread_);
    }

    /// asnCopyCursor of the cursor where it stands now.
    void save(AsnCursor& cursor) const {
        cursor.data = data_;
        cursor.size = size_;
        store(cursor);
        cursor.dynamic = ctx_.dynamic;
        cursor.aligned = ctx_.aligned;
        cursor.flags = ctx_.flags;
    }

    /// How a primitive ends that failed.
    AsnStatus fail(const AsnLogger& /*logError*/, AsnStatus status) const { return status; }

    AsnStatus step() {
        const uint32_t index = index_ + (unread_ == 0 ? 1 : 0);
        if (index >= size_) return kAsnEndOfData;
        unread_ = (unread_ == 0 ? 8 : unread_) - 1;
        index_ = index;
        return kAsnOk;
    }

    AsnStatus bit(uint32_t& value) {
        const AsnStatus status = step();
        if (status == kAsnOk) value = uint32_t{data_[index_]} >> unread_ & 1;
        return status;
    }

    /// An extension or presence bit. Beyond the end it counts as 0: the next read that is examined
    /// fails.
    uint32_t flag() {
        uint32_t value = 0;
        (void)bit(value);
        return value;
    }

    /// `count` of them, 1 to 32, as a number, the first one read the most significant.
    uint32_t flags(uint32_t count) {
        for (uint64_t word = 0;; unread_ = 0) {
            const uint32_t index = index_ + (unread_ == 0 ? 1 : 0);
            if (index >= size_) return static_cast<uint32_t>(word << count);
            index_ = index;
            if (unread_ == 0) unread_ = 8;
            const uint32_t octet = data_[index] & ((1U << unread_) - 1);
            if (count <= unread_) {
                unread_ -= count;
                return static_cast<uint32_t>(word << count) | octet >> unread_;
            }
            word = word << unread_ | octet;
            count -= unread_;
        }
    }

    AsnStatus bits(uint32_t& value, uint32_t nbits) {
        value = 0;
        if (nbits == 0) return kAsnOk;
        if (nbits > unread_ || index_ >= size_) return bitsAcross(value, nbits);
        unread_ -= nbits;
        value = uint32_t{data_[index_]} >> unread_ & ((1U << nbits) - 1);
        if (unread_ == 0) {
            ++index_;
            unread_ = 8;
        }
        return kAsnOk;
    }

    /// Whole octets as a number, behind an align that found one.
    AsnStatus number(uint32_t& value, uint32_t octets) {
        value = 0;
        if (octets > size_ - index_) return kAsnEndOfData;
        for (uint32_t i = 0; i < octets; ++i) value = value << 8 | data_[index_ + i];
        index_ += octets;
        return kAsnOk;
    }

    AsnStatus octets(uint8_t* buffer, uint32_t capacity, uint32_t nbits) {
        const uint32_t whole = nbits / 8;
        const uint32_t rest = nbits % 8;
        if (bitsLeft() < int64_t{nbits}) return kAsnEndOfData;
        if (whole + (rest != 0 ? 1 : 0) > capacity) return kAsnTooLong;
        const uint8_t* const from = data_ + index_;
        const uint32_t unread = unread_;
        if (rest == 0)
            index_ += whole;
        else
            setPosition(position() + nbits);
        if (rest == 0 && unread == 8) {
            if (whole != 0) std::memcpy(buffer, from, whole);
        } else {
            asnCopyBits(buffer, from, unread, nbits);
        }
        return kAsnOk;
    }

    AsnStatus align() {
        if (unread_ != 8) {
            ++index_;
            unread_ = 8;
        }
        return index_ < size_ ? kAsnOk : kAsnEndOfData;
    }

    AsnStatus move(int64_t nbits) {
        const int64_t to = position() + nbits;
        if (to < 0) return kAsnEndOfData;
        const int64_t limit = (int64_t{size_} + 1) * 8;
        setPosition(to < limit ? to : limit);
        return index_ <= size_ ? kAsnOk : kAsnEndOfData;
    }

    void bindOpenType(const uint8_t* data, uint32_t numocts) {
        asnBindOpenType(ctx_, data, numocts);
        data_ = data;
        index_ = 0;
        size_ = numocts;
        unread_ = 8;
    }

    /// Moves behind octets that are known to be there.
    void moveOctets(uint32_t octets) { index_ += octets; }

    // What a watcher is told; nobody watches.
    void openField(const char* /*label*/) {}
    void closeField() {}
    template <class... Values>
    void tell(const char* /*format*/, Values... /*values*/) const {}

  protected:
    /// bits, where they are not all in the current octet.
    AsnStatus bitsAcross(uint32_t& value, uint32_t nbits) {
        uint32_t rest = nbits - unread_;
        if (index_ >= size_ || (uint64_t{rest} + 7) / 8 >= size_ - index_) return kAsnEndOfData;
        uint32_t word = data_[index_++] & ((1U << unread_) - 1);
        for (; rest >= 8; rest -= 8) word = word << 8 | data_[index_++];
        if (rest > 0) word = word << rest | uint32_t{data_[index_]} >> (8 - rest);
        value = word;
        unread_ = 8 - rest;
        return kAsnOk;
    }

    void setPosition(int64_t position) {
        index_ = static_cast<uint32_t>(position / 8);
        unread_ = static_cast<uint32_t>(8 - position % 8);
    }

    AsnContext& ctx_;
    const uint8_t* data_;
    uint32_t index_;
    uint32_t size_;
    uint32_t unread_;  // bits of the octet at index_ not yet read: 8 .. 0
};

/// The same, telling of each step: diagnostic lines, fields of the trace, failures. Failures of
/// bits, number and octets are logged here, those of the others by the caller.
class AsnWatchedReader : public AsnReader {
  public:
    using AsnReader::AsnReader;

    AsnStatus fail(const AsnLogger& logError, AsnStatus status, int line = __builtin_LINE()) const {
        store(ctx_);
        return logError(ctx_, status, line);
    }

    AsnStatus step();
    AsnStatus bit(uint32_t& value);
    uint32_t flag();
    uint32_t flags(uint32_t count);
    AsnStatus bits(uint32_t& value, uint32_t nbits);
    AsnStatus number(uint32_t& value, uint32_t octets);
    AsnStatus octets(uint8_t* buffer, uint32_t capacity, uint32_t nbits);
    AsnStatus align();
    AsnStatus move(int64_t nbits);
    void moveOctets(uint32_t octets) { (void)move(int64_t{octets} * 8); }

    void openField(const char* label) {
        store(ctx_);
        pu_newField(ctx_, label);
    }
    void closeField() {
        store(ctx_);
        pu_setFldBitCount(ctx_);
    }
    void tell(const char* text) const { asnDiag("%s", text); }
    template <class... Values>
    void tell(const char* format, Values... values) const {
        asnDiag(format, values...);
    }

  private:
    void tellBits(uint32_t nbits) const;
    void tellMove(const char* when) const;
};

[[gnu::cold]] bool asnWatched(const AsnContext& ctx);

template <class Reader, class Primitive>
inline auto asnRun(AsnContext& ctx, Primitive primitive) {
    Reader in(ctx);
    const auto result = primitive(in);
    in.store(ctx);
    return result;
}

/// asnRead after the plain run failed. Memory that could not be had is not asked for again.
template <class Primitive>
[[gnu::cold, gnu::noinline]] AsnStatus asnReadFailed(AsnContext& ctx, Primitive primitive,
                                                     AsnStatus status) {
    if (status != kAsnNoMemory) return asnRun<AsnWatchedReader>(ctx, primitive);
    return AsnLogger{AsnLogBase::reader}(ctx, status);
}

template <class Primitive>
inline auto asnReadPlain(AsnContext& ctx, Primitive primitive) {
    AsnReader in(ctx);
    const auto result = primitive(in);
    if constexpr (std::is_same_v<decltype(result), const AsnStatus>)
        if (result < 0) return asnReadFailed(ctx, primitive, result);
    in.store(ctx);
    return result;
}

/// asnRead where somebody has watched, perhaps this context.
template <class Primitive>
[[gnu::cold, gnu::noinline]] auto asnReadWatched(AsnContext& ctx, Primitive primitive) {
    return asnWatched(ctx) ? asnRun<AsnWatchedReader>(ctx, primitive)
                           : asnReadPlain(ctx, primitive);
}

/// Runs a primitive, `primitive(reader)`, and puts the cursor back. It must do the same when it is
/// run again after a failure, so it takes what it uses up, as a size constraint, beforehand; and it
/// captures by value, for what is captured by reference has to stand in memory.
template <class Primitive>
inline auto asnRead(AsnContext& ctx, Primitive primitive) {
    if (asnEverWatched.load(std::memory_order_relaxed)) return asnReadWatched(ctx, primitive);
    return asnReadPlain(ctx, primitive);
}
