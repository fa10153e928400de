// All generated types, by way of their tables, and octets to decode as any of them.
#pragma once

#include <cstring>
#include <random>
#include <stdexcept>

#include "asn1per/typetable.h"
#include "support.h"

#define TYPES_OF(module)                         \
    extern const AsnTypeInfo k##module##Types[]; \
    extern const size_t k##module##TypeCount
TYPES_OF(H235);
TYPES_OF(H245);
TYPES_OF(H323);
TYPES_OF(Zoo);
namespace asn2009 {
TYPES_OF(H235);
TYPES_OF(H245);
TYPES_OF(H323);
}  // namespace asn2009
namespace published {
TYPES_OF(Zoo);
}  // namespace published

/// The types of both sets, and of the zoo in both.
inline std::vector<const AsnTypeInfo*> allTypes() {
    std::vector<const AsnTypeInfo*> types;
    const auto add = [&](const AsnTypeInfo* table, size_t count) {
        for (size_t i = 0; i < count; ++i) types.push_back(&table[i]);
    };
    add(kH235Types, kH235TypeCount);
    add(kH245Types, kH245TypeCount);
    add(kH323Types, kH323TypeCount);
    add(kZooTypes, kZooTypeCount);
    add(asn2009::kH235Types, asn2009::kH235TypeCount);
    add(asn2009::kH245Types, asn2009::kH245TypeCount);
    add(asn2009::kH323Types, asn2009::kH323TypeCount);
    add(published::kZooTypes, published::kZooTypeCount);
    return types;
}

inline const AsnTypeInfo& typeNamed(const char* name) {
    for (const AsnTypeInfo* type : allTypes())
        if (std::strcmp(type->name, name) == 0) return *type;
    throw std::out_of_range(name);
}

/// Zeroed memory for one value.
inline std::unique_ptr<uint64_t[]> newValue(const AsnTypeInfo& type) {
    return std::unique_ptr<uint64_t[]>(new uint64_t[type.size / 8 + 1]());
}

/// Octets with few bits set reach deep into a type; octets with many bits set every flag.
inline Octets randomOctets(std::mt19937& random, size_t size) {
    Octets octets(size);
    const uint32_t density = random() % 4;
    for (uint8_t& octet : octets) {
        octet = static_cast<uint8_t>(random());
        for (uint32_t i = 0; i < density; ++i) octet = static_cast<uint8_t>(octet & random());
    }
    return octets;
}
