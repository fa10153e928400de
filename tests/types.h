// All generated types, by way of their tables, and octets to decode as any of them.
#pragma once

#include <random>
#include <stdexcept>

#include "asn1per/typetable.h"
#include "support.h"

extern const AsnTypeInfo kH235Types[];
extern const size_t kH235TypeCount;
extern const AsnTypeInfo kH245Types[];
extern const size_t kH245TypeCount;
extern const AsnTypeInfo kH323Types[];
extern const size_t kH323TypeCount;
extern const AsnTypeInfo kZooTypes[];
extern const size_t kZooTypeCount;

inline std::vector<const AsnTypeInfo*> allTypes() {
    std::vector<const AsnTypeInfo*> types;
    for (size_t i = 0; i < kH235TypeCount; ++i) types.push_back(&kH235Types[i]);
    for (size_t i = 0; i < kH245TypeCount; ++i) types.push_back(&kH245Types[i]);
    for (size_t i = 0; i < kH323TypeCount; ++i) types.push_back(&kH323Types[i]);
    for (size_t i = 0; i < kZooTypeCount; ++i) types.push_back(&kZooTypes[i]);
    return types;
}

inline const AsnTypeInfo& typeNamed(const std::string& name) {
    for (const AsnTypeInfo* type : allTypes())
        if (type->name == name) return *type;
    throw std::out_of_range(name);
}

/// Zeroed memory for one value.
inline std::unique_ptr<uint64_t[]> newValue(const AsnTypeInfo& type) {
    return std::unique_ptr<uint64_t[]>(new uint64_t[type.size / 8 + 1]());
}

/// Few bits set reach deep into a type, many set every flag.
inline Octets randomOctets(std::mt19937& random, size_t size) {
    Octets octets(size);
    const uint32_t density = random() % 4;
    for (uint8_t& octet : octets) {
        octet = static_cast<uint8_t>(random());
        for (uint32_t i = 0; i < density; ++i) octet = static_cast<uint8_t>(octet & random());
    }
    return octets;
}
