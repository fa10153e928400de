// The names of a CHOICE's alternatives. H245Names.h has those of every CHOICE of H245.h; decoders
// and printers do not need it.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

/// Its member `all` has the names of the alternatives, as in a dump. The first has the tag 1. It is
/// declared for the CHOICE types of the H...Names.h that are included.
template <class Choice>
struct AsnNames;

/// The name of the alternative that a value has; empty if it has none, or one that the modules do
/// not know.
template <class Choice>
constexpr std::string_view asnAlternativeName(const Choice& value) {
    const std::span<const std::string_view> names = AsnNames<Choice>::all;
    return value.t > 0 && value.t <= names.size() ? names[value.t - 1] : std::string_view();
}
