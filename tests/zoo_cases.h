// Types of the zoo, the modules generator/Zoo.asn and Keeper.asn, decoded from bits and printed.
#pragma once

#include <cstring>

#include "allocation.h"
#include "asn1per/typetable.h"
#include "support.h"

struct ZooCase {
    const char* type;
    const char* unaligned;  // bits, and octets in brackets; null: not in this variant
    const char* aligned;    // "=": the same
    AsnStatus status;
    const char* dump;  // as `shortened` has it; "..." matches any text
};

/// The type of that name in the table of a zoo.
struct ZooTable {
    const char* prefix;
    const AsnTypeInfo* types;
    size_t count;
    bool flagsMayBeCutOff;

    const AsnTypeInfo& operator[](const char* name) const {
        const AsnTypeInfo* const type =
            std::find_if(types, types + count, [&](const AsnTypeInfo& info) {
                const std::string_view full = info.name;
                return full.starts_with(prefix) && full.substr(std::strlen(prefix)) == name;
            });
        EXPECT_NE(type, types + count) << name;
        return type != types + count ? *type : types[0];
    }
};

/// A dump on one line: without the path of its root, and with one blank for many.
inline std::string shortened(const std::string& dump) {
    std::string text;
    size_t start = 0;
    while (start < dump.size()) {
        const size_t end = std::min(dump.find('\n', start), dump.size());
        std::string line;
        for (size_t i = start; i < end; ++i)
            if (dump[i] != ' ' || (!line.empty() && line.back() != ' ')) line += dump[i];
        start = end + 1;
        if (line.starts_with("P")) line.erase(0, line.starts_with("P ") ? 2 : 1);
        while (line.ends_with(' ')) line.pop_back();
        if (!line.empty()) text += text.empty() ? line : "; " + line;
    }
    return text;
}

inline bool matches(const std::string& text, const std::string& pattern) {
    const size_t gap = pattern.find("...");
    if (gap == std::string::npos) return text == pattern;
    return text.starts_with(pattern.substr(0, gap)) && text.ends_with(pattern.substr(gap + 3));
}

struct Outcome {
    AsnStatus status;
    std::string dump;
    int64_t elementBlocks;  // taken from the general allocator
};

inline Outcome decoded(const AsnTypeInfo& type, const Octets& octets, bool aligned, bool traced) {
    const std::unique_ptr<uint64_t[]> value(new uint64_t[type.size / 8 + 1]());
    Decoding decoding(octets, aligned);
    if (traced) asnSetFieldTrace(decoding.ctx, 1);
    allocation = {};
    Outcome outcome{type.decode(decoding.ctx, value.get()), "", allocation.requests};
    if (outcome.status == kAsnOk)
        outcome.dump = shortened(dumped([&](AsnDump& dump) { type.print(dump, value.get()); }));
    return outcome;
}

inline void check(const ZooTable& zoo, const ZooCase& row, const char* text, bool aligned) {
    if (text == nullptr) return;
    SCOPED_TRACE(std::string(row.type) + (aligned ? ", ALIGNED: " : ": ") + text);
    const AsnTypeInfo& type = zoo[row.type];
    const Octets octets = bits(text);
    for (const bool traced : {false, true}) {
        const Outcome outcome = decoded(type, octets, aligned, traced);
        EXPECT_EQ(outcome.status, row.status);
        EXPECT_TRUE(matches(outcome.dump, row.dump)) << outcome.dump;
        if (type.elementSize != 0 && row.status == kAsnEndOfData && !traced)
            EXPECT_EQ(outcome.elementBlocks, 0) << "refused before memory is taken";
    }
    if (row.status != kAsnOk) return;
    for (size_t size = 0; size < octets.size(); ++size) {
        const Octets shorter(octets.data(), octets.data() + size);
        const AsnStatus status = decoded(type, shorter, aligned, false).status;
        EXPECT_TRUE(status == kAsnEndOfData || (status == kAsnOk && zoo.flagsMayBeCutOff))
            << status;
    }
}

template <size_t count>
void checkAll(const ZooTable& zoo, const ZooCase (&rows)[count]) {
    for (const ZooCase& row : rows) {
        check(zoo, row, row.unaligned, false);
        const bool same = row.aligned != nullptr && std::string(row.aligned) == "=";
        check(zoo, row, same ? row.unaligned : row.aligned, true);
    }
}
