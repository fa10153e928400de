// What the emitters of decoders share.
#pragma once

#include "emit.h"
#include "template.h"

/// Calls `text(member)` for each and joins what it returns.
template <class Members, class Text>
std::string joined(const Members& members, Text text) {
    std::string all;
    for (const auto& member : members) all += text(member);
    return all;
}

/// A decoder; `body` is what it does.
std::string decoder(const Type& type, const std::string& body);

/// "AsnReader<Tracing>", or what decodes by the rules of X.691.
std::string readerOf(const Type& type);

/// The constant that names the module in a trail.
std::string moduleConstant(const Module& module);

/// The members that have something to read.
std::vector<const Member*> valued(const std::vector<Member>& members);

/// "if (status != kAsnOk) return status;"
inline constexpr const char* kCheckStatus = "if (status != kAsnOk) return status;\n";
