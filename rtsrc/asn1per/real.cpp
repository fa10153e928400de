#include "real.h"

#include <algorithm>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace {

/// X.690 8.5.7: sign, base, scale factor and length of the exponent, exponent, mantissa.
AsnStatus decodeBinary(const uint8_t* contents, double* value, uint32_t length) {
    constexpr int kBaseBits[] = {1, 3, 4};
    const uint8_t first = contents[0];
    const unsigned base = first >> 4 & 3U;
    const int scale = first >> 2 & 3;
    if (base == 3) return kAsnInvalidReal;
    uint32_t at = 1;
    uint32_t exponentOctets = (first & 3U) + 1;
    if (exponentOctets == 4) {
        if (length < 2) return kAsnInvalidReal;
        exponentOctets = contents[at++];
    }
    if (exponentOctets == 0 || length - at <= exponentOctets) return kAsnInvalidReal;
    // An exponent beyond any double's is cut to one that still is beyond it.
    int64_t exponent = (contents[at] & 0x80) != 0 ? -1 : 0;
    for (uint32_t i = 0; i < exponentOctets; ++i)
        exponent = std::clamp<int64_t>(exponent * 256 + contents[at++], -1000000, 1000000);
    double mantissa = 0;
    int dropped = 0;  // bits of the mantissa to the right of those that fit
    for (; at < length; ++at) {
        if (mantissa < 0x1p60)
            mantissa = mantissa * 256 + contents[at];
        else
            dropped += dropped < 1000000 ? 8 : 0;
    }
    const int64_t power = exponent * kBaseBits[base] + scale + dropped;
    *value = std::ldexp(mantissa, static_cast<int>(power));
    if ((first & 0x40) != 0) *value = -*value;
    return kAsnOk;
}

/// X.690 8.5.8: text of one of the three number forms, blanks in front, comma or point. strtod
/// wants the point of the locale, which is the host's; std::from_chars would bring in half of
/// libstdc++.
AsnStatus decodeDecimal(const uint8_t* contents, double* value, uint32_t length) {
    char text[64] = {};
    const unsigned form = contents[0] & 0x3FU;
    if (form < 1 || form > 3 || length > sizeof text) return kAsnInvalidReal;
    bool hasPoint = false;
    bool hasExponent = false;
    for (uint32_t i = 1; i < length; ++i) {
        char c = static_cast<char>(contents[i]);
        if (c == ',' || c == '.') {
            c = *std::localeconv()->decimal_point;
            hasPoint = true;
        } else if (c == 'e' || c == 'E') {
            hasExponent = true;
        } else if (c == 0 || std::strchr("0123456789+- ", c) == nullptr) {
            return kAsnInvalidReal;  // also what strtod knows beyond decimal numbers
        }
        text[i - 1] = c;
    }
    if ((form == 1 && hasPoint) || hasExponent != (form == 3)) return kAsnInvalidReal;
    char* stop = text;
    *value = std::strtod(text, &stop);
    return stop == text + length - 1 && stop != text ? kAsnOk : kAsnInvalidReal;
}

AsnStatus decodeSpecial(const uint8_t* contents, double* value, uint32_t length) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    if (length != 1) return kAsnInvalidReal;
    switch (contents[0]) {
        case 0x40:
            *value = kInfinity;
            return kAsnOk;
        case 0x41:
            *value = -kInfinity;
            return kAsnOk;
        case 0x42:
            *value = std::numeric_limits<double>::quiet_NaN();
            return kAsnOk;
        case 0x43:
            *value = -0.0;
            return kAsnOk;
        default:
            return kAsnInvalidReal;
    }
}

}  // namespace

AsnStatus asnDecRealContents(const uint8_t* contents, double* value, uint32_t length) {
    double decoded = 0;
    AsnStatus status = kAsnOk;
    if (length != 0) {
        const auto decode = (contents[0] & 0x80) != 0   ? decodeBinary
                            : (contents[0] & 0x40) != 0 ? decodeSpecial
                                                        : decodeDecimal;
        status = decode(contents, &decoded, length);
    }
    if (status == kAsnOk) *value = decoded;
    return status;
}

AsnStatus pd_Real(AsnContext& ctx, double* value) {
    return asnRead(ctx, [=](auto in) { return pd_Real(in, value); });
}
