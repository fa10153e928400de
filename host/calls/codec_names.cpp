#include "codec_names.h"

namespace {

struct Known {
    std::string_view name;
    std::vector<uint32_t> arcs;  // the identifier begins with these
};

/// The identifiers begin with itu-t, recommendation, the letter of the series (g is 7, h is 8) and
/// the number of the recommendation.
const std::vector<Known>& knownIdentifiers() {
    static const std::vector<Known> kKnown = {
        {"g7221", {0, 0, 7, 7221}},          {"g7222", {0, 0, 7, 7222}},
        {"h264", {0, 0, 8, 241, 0, 0}},      {"mpeg4Visual", {0, 0, 8, 245, 1, 0, 0}},
        {"amr", {0, 0, 8, 245, 1, 1, 1}},    {"h239Control", {0, 0, 8, 239, 1, 1}},
        {"h239Video", {0, 0, 8, 239, 1, 2}},
    };
    return kKnown;
}

}  // namespace

std::string genericName(const AsnObjId& identifier) {
    const auto* const arcs = identifier.subid;
    for (const Known& known : knownIdentifiers())
        if (known.arcs.size() <= static_cast<size_t>(identifier.numids) &&
            std::equal(known.arcs.begin(), known.arcs.end(), arcs))
            return std::string(known.name);
    std::string text;
    for (int32_t i = 0; i < identifier.numids; ++i)
        text += (i > 0 ? "." : "") + std::to_string(arcs[i]);
    return text;
}

std::string shortName(std::string_view name) {
    for (const std::string_view ending : {"Capability", "Audio", "Video"})
        if (name.size() > ending.size() && name.ends_with(ending))
            name.remove_suffix(ending.size());
    return std::string(name);
}
