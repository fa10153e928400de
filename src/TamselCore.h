// Tamsel::Core: decodes one H.323 signalling message into memory.
//
//     TamselDecoder decoder;
//     if (decoder.decode(kTamsel1998.ras, octets, true) == kAsnOk) {
//         std::string_view dump;
//         if (decoder.dump(&dump) == kAsnOk) use(dump);
//     }
//
// A decoder belongs to one thread at a time. Any number of decoders may run in any number of
// threads: nothing of the process is changed, and no exception is thrown.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "asn1per/asn1per.h"
#include "asn1per/dump.h"

/// A message family: the type of its messages, and what decodes and prints a value of that type.
struct TamselFamily {
    const char* name;   // "ras", "ui" or "h245"
    const char* title;  // "H.225.0 RAS"
    const char* root;   // "RasMessage": the first step of every path
    size_t valueSize;   // octets of the structure, at most kTamselValueSize
    AsnStatus (*decode)(AsnContext& ctx, void* value);
    void (*print)(AsnDump& dump, const void* value);
};
constexpr size_t kTamselValueSize = 2048;

/// A set of modules. A program that does not name a set is linked without it.
struct TamselModules {
    const char* name;   // "1998"
    TamselFamily ras;   // H.225.0 RAS: RasMessage
    TamselFamily ui;    // H.225.0 call signalling: H323-UserInformation
    TamselFamily h245;  // H.245: MultimediaSystemControlMessage
};

/// H.225.0 version 2, H.245 version 3, H.235 version 1: what the exports of Tamsel.h decode. The
/// values are H225RasMessage and H225H323_UserInformation (H323.h), and
/// H245MultimediaSystemControlMessage (H245.h).
extern const TamselModules kTamsel1998;

/// H.225.0 version 7, H.245 version 15 and the H.235 that they import, decoded as published,
/// without the deviations of 1998. The values have the same names, in the namespace asn2009
/// (2009/H323.h, 2009/H245.h).
extern const TamselModules kTamsel2009;

/// Decodes messages one after the other. It holds all memory of a message, about 75 KiB of it in
/// the object itself; only long messages need more, from malloc. What it returns is valid until
/// its next `decode` and as long as the decoder and the octets of the message exist.
class TamselDecoder {
  public:
    /// The longest message: bit positions are 32-bit numbers.
    static constexpr size_t kMaxOctets = (size_t{1} << 28) - 1;

    TamselDecoder() = default;
    ~TamselDecoder();
    TamselDecoder(const TamselDecoder&) = delete;
    TamselDecoder& operator=(const TamselDecoder&) = delete;

    /// Decodes one message, in the ALIGNED or UNALIGNED variant. Octets after a complete message
    /// are not an error; `octets()` tells where it ends. The octets are read in place, not copied.
    /// Returns 0; kAsnEndOfData if the message ends too early (no octets at all included),
    /// kAsnTooLong above kMaxOctets, or another status of error.h.
    AsnStatus decode(const TamselFamily& family, std::span<const uint8_t> message, bool aligned);

    /// The same, and records the field of every primitive, up to the failure if there is one. It is
    /// slower, and takes memory for the path of every field.
    AsnStatus decodeTraced(const TamselFamily& family, std::span<const uint8_t> message,
                           bool aligned);

    /// What `decode` returned. The functions below need a decoder that has decoded.
    AsnStatus status() const { return status_; }

    /// The status with its trail, for asnErrorText and asnLogErrorCb.
    const AsnErrorInfo& errors() const { return ctx_.errInfo; }

    /// How many octets the message took. The last one counts even if only some of its bits were
    /// read.
    uint32_t octets() const { return static_cast<uint32_t>((bitPosition() + 7) / 8); }

    /// The bit of the message that would be read next; after a failure, the bit that the failing
    /// step was to read, or the position in the open type if that came in fragments.
    int64_t bitPosition() const;

    /// The fields that decodeTraced recorded, in the order of reading. Names are the full path of
    /// the value and what was read ("RasMessage ConsUnsigned"); positions are bits of the message.
    /// What is in an open type that came in fragments is not recorded. The field in which a message
    /// failed is the last one; it has 0 bits.
    const AsnBitFieldList& fields() const { return ctx_.fieldList; }

    /// Prints the fields as a table: names, bits, octets, characters.
    void printFields(AsnDumpSink sink) const;

    /// The decoded structure, which a failure leaves incomplete: of the type that the family has.
    template <class Message>
    const Message& value() const {
        return *reinterpret_cast<const Message*>(value_);
    }

    /// Prints the message, if it decoded. The sink must not throw. With `escaped`, for a terminal,
    /// everything in character strings that is not printable ASCII is escaped (print.h).
    void print(AsnDumpSink sink, bool escaped = false) const;

    /// The dump as text in memory of the decoder; empty if the message did not decode.
    /// Returns 0, or kAsnNoMemory.
    [[nodiscard]] AsnStatus dump(std::string_view* text);

  private:
    void release();
    AsnStatus run(const TamselFamily& family, std::span<const uint8_t> message);
    void start(const TamselFamily& family, std::span<const uint8_t> message, bool aligned);

    const TamselFamily* family_ = nullptr;  // null: nothing is decoded
    AsnStatus status_ = kAsnOk;
    std::span<const uint8_t> message_;
    char* text_ = nullptr;  // from malloc, kept from message to message
    size_t textRoom_ = 0;
    AsnFieldPaths paths_{};
    AsnContext ctx_;
    AsnMemFirstBlock first_;
    alignas(16) unsigned char value_[kTamselValueSize];
};
