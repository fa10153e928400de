#include "made_messages.h"

namespace {

/// Writes bits, most significant first.
class BitWriter {
  public:
    explicit BitWriter(bool aligned) : aligned_(aligned) {}

    void bits(uint64_t value, int count) {
        for (int i = count - 1; i >= 0; --i) {
            if (used_ % 8 == 0) octets_.push_back(0);
            if ((value >> i & 1) != 0) octets_.back() |= static_cast<uint8_t>(0x80 >> used_ % 8);
            ++used_;
        }
    }
    void align() {
        if (aligned_) used_ = octets_.size() * 8;
    }
    /// The length determinant of less than 16384 items.
    void length(uint32_t count) {
        align();
        if (count < 128)
            bits(count, 8);
        else
            bits(0x8000 | count, 16);
    }
    /// An OCTET STRING without SIZE; from 16384 octets on in fragments.
    void octetString(uint32_t count) {
        while (count >= 16384) {
            const uint32_t blocks = count / 16384 < 4 ? count / 16384 : 4;
            align();
            bits(0xC0 | blocks, 8);
            contents(blocks * 16384);
            count -= blocks * 16384;
        }
        length(count);
        contents(count);
    }
    Octets take() { return std::move(octets_); }

  private:
    void contents(uint32_t count) {
        for (uint32_t i = 0; i < count; ++i) bits(i * 37 & 0xFF, 8);
    }
    bool aligned_;
    size_t used_ = 0;
    Octets octets_;
};

}  // namespace

Octets stringMessage(uint32_t octets, bool aligned) {
    BitWriter out(aligned);
    out.bits(0, 1);  // MultimediaSystemControlMessage: root
    out.bits(2, 2);  // command
    out.bits(0, 1);  // CommandMessage: root
    out.bits(0, 3);  // nonStandard
    out.bits(0, 1);  // NonStandardMessage: no additions
    out.bits(0, 1);  // NonStandardIdentifier: object
    out.length(3);
    out.bits(0x2B0601, 24);
    out.octetString(octets);
    return out.take();
}

Octets listMessage(uint32_t elements, bool aligned) {
    BitWriter out(aligned);
    out.bits(0, 1);  // H323-UserInformation: no additions
    out.bits(0, 1);  // no user-data
    out.bits(0, 1);  // H323-UU-PDU: no additions
    out.bits(0, 1);  // no nonStandardData
    out.bits(0, 1);  // h323-message-body: root
    out.bits(6, 3);  // facility
    out.bits(0, 1);  // Facility-UUIE: no additions
    out.bits(2, 3);  // alternativeAliasAddress alone
    out.length(3);
    out.bits(0x2B0601, 24);
    out.length(elements);
    for (uint32_t i = 0; i < elements; ++i) {
        out.bits(0, 1);  // AliasAddress: root
        out.bits(0, 1);  // e164
        out.bits(1, 7);  // two digits
        out.align();
        out.bits(0x45, 8);
    }
    out.bits(0, 1);  // FacilityReason: root
    out.bits(3, 2);  // undefinedReason
    return out.take();
}
