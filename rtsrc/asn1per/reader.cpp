#include "reader.h"

#include <cstring>

namespace {

constexpr AsnLogger kLogError{AsnLogBase::reader};

}  // namespace

void asnCopyBits(uint8_t* to, const uint8_t* from, uint32_t unread, uint32_t nbits) {
    const uint32_t whole = nbits / 8;
    const uint32_t rest = nbits % 8;
    if (unread == 8) {
        std::memcpy(to, from, whole);
    } else {
        for (uint32_t i = 0; i < whole; ++i)
            to[i] = static_cast<uint8_t>(from[i] << (8 - unread) | from[i + 1] >> unread);
    }
    if (rest == 0) return;
    from += whole;
    uint32_t bits = uint32_t{*from} << (8 - unread);
    if (rest > unread) bits |= uint32_t{from[1]} >> unread;
    to[whole] = static_cast<uint8_t>(bits & 0xFF00U >> rest);
}

bool asnWatched(const AsnContext& ctx) {
    return asnDiagOn() || pu_traceOn(ctx);
}

AsnStatus AsnWatchedReader::step() {
    const AsnStatus status = AsnReader::step();
    if (status == kAsnOk)
        tell("pd_IncrBitIdx: bitOffset = %d, byteIndex = %d\n", static_cast<int>(unread_),
             static_cast<int>(index_));
    return status;
}

AsnStatus AsnWatchedReader::bit(uint32_t& value) {
    AsnWatchedReader stepped = *this;
    (void)stepped.step();
    const AsnStatus status = AsnReader::bit(value);
    if (status == kAsnOk) tell("pd_bit: value = %d\n", static_cast<int>(value));
    return status;
}

uint32_t AsnWatchedReader::flag() {
    uint32_t value = 0;
    (void)bit(value);
    return value;
}

uint32_t AsnWatchedReader::flags(uint32_t count) {
    AsnWatchedReader each = *this;
    uint32_t told = 0;
    do {
        (void)each.flag();
    } while (++told < count);
    return AsnReader::flags(count);
}

AsnStatus AsnWatchedReader::bits(uint32_t& value, uint32_t nbits) {
    tellBits(nbits);
    const AsnStatus status = AsnReader::bits(value, nbits);
    return status == kAsnOk ? status : fail(kLogError, status);
}

AsnStatus AsnWatchedReader::number(uint32_t& value, uint32_t octets) {
    tellBits(octets * 8);
    const AsnStatus status = AsnReader::number(value, octets);
    return status == kAsnOk ? status : fail(kLogError, status);
}

AsnStatus AsnWatchedReader::octets(uint8_t* buffer, uint32_t capacity, uint32_t nbits) {
    AsnWatchedReader moved = *this;
    const AsnStatus status = AsnReader::octets(buffer, capacity, nbits);
    if (status != kAsnOk) return fail(kLogError, status);
    if (nbits != 0 && moved.atBoundary()) (void)moved.move(nbits);
    return status;
}

AsnStatus AsnWatchedReader::align() {
    const bool moves = !atBoundary();
    const AsnStatus status = AsnReader::align();
    store(ctx_);
    if (moves && pu_traceOn(ctx_)) pu_setFldBitOffset(ctx_);
    return status;
}

AsnStatus AsnWatchedReader::move(int64_t nbits) {
    tell("pd_moveBitCursor: bitOffset = %d\n", static_cast<int>(nbits));
    tellMove("before");
    const bool refused = position() + nbits < 0;
    const AsnStatus status = AsnReader::move(nbits);
    if (!refused) tellMove("after");
    return status;
}

void AsnWatchedReader::tellBits(uint32_t nbits) const {
    tell("pd_bits: nbits = %d, nbytes = %d\n", static_cast<int>(nbits),
         static_cast<int>(((nbits - 1) >> 3) + 1));
    if (nbits != 0 && bitsLeft() >= int64_t{nbits} && nbits >= unread_)
        tell("pd_bits: mask = %x, data[index] = %x\n", (1U << unread_) - 1,
             static_cast<unsigned>(*here()));
}

void AsnWatchedReader::tellMove(const char* when) const {
    tell("context %s move: bitOffset = %d, byteIndex = %d\n", when, static_cast<int>(unread_),
         static_cast<int>(index_));
}

static_assert(__LINE__ < 1000, "trail lines of two source files would meet");
