#include "template.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <stdexcept>
#include <vector>

namespace {

bool isNamePart(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0;
}

/// Takes the first line off a text, without its end.
std::string_view takeLine(std::string_view& text) {
    const size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

size_t marginOf(std::string_view line) {
    return std::min(line.find_first_not_of(' '), line.size());
}

const std::string& placeNamed(std::string_view name, Places places) {
    for (const auto& [known, value] : places)
        if (known == name) return value;
    throw std::logic_error("a template asks for $" + std::string(name));
}

/// Reads the place at the start of `text`, "$name" or "${name}", and takes it off.
const std::string& takePlace(std::string_view& text, Places places) {
    const bool braces = text.substr(1, 1) == "{";
    text.remove_prefix(braces ? 2 : 1);
    size_t length = 0;
    while (length < text.size() && isNamePart(text[length])) ++length;
    const std::string& value = placeNamed(text.substr(0, length), places);
    text.remove_prefix(braces ? length + 1 : length);
    return value;
}

/// A line with its places filled, or nothing if one of them is filled with nothing.
std::optional<std::string> fillLine(std::string_view line, Places places) {
    const std::string margin(line.substr(0, marginOf(line)));
    std::string filled;
    while (!line.empty()) {
        const size_t place = std::min(line.find('$'), line.size());
        filled += line.substr(0, place);
        line.remove_prefix(place);
        if (line.empty()) break;
        std::string_view value = takePlace(line, places);
        if (value.empty()) return std::nullopt;
        if (value.ends_with('\n')) value.remove_suffix(1);
        filled += takeLine(value);
        while (!value.empty()) {
            const std::string_view next = takeLine(value);
            filled += next.empty() ? "\n" : "\n" + margin + std::string(next);
        }
    }
    return filled;
}

}  // namespace

std::string fill(std::string_view text, Places places) {
    std::string filled;
    if (text.starts_with('\n')) text.remove_prefix(1);
    const bool endsLine = text.ends_with('\n');
    while (!text.empty()) {
        const auto line = fillLine(takeLine(text), places);
        if (line) filled += *line + "\n";
    }
    if (!endsLine && !filled.empty()) filled.pop_back();
    return filled;
}
