#include "json_dump.h"

#include <bit>
#include <charconv>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "detail_writer.h"
#include "text_format.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr size_t kHexColumn =
    48;  // characters of 16 octets in hex; the octets as characters follow

unsigned digit(char c) {
    return static_cast<unsigned>(c <= '9' ? c - '0' : c - 'a' + 10);
}

/// Replaces the escapes of print.h by their octets.
std::string unescaped(std::string_view text) {
    std::string octets;
    octets.reserve(text.size());
    for (size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '\\') {
            octets += text[at];
        } else if (text[++at] == '\\') {
            octets += '\\';
        } else {
            octets += static_cast<char>(digit(text[at + 1]) << 4 | digit(text[at + 2]));
            at += 2;
        }
    }
    return octets;
}

/// A number, TRUE or FALSE. A REAL that is no number in JSON is text: "inf", "nan".
Json plainValue(std::string_view text) {
    if (text == "TRUE" || text == "FALSE") return text == "TRUE";
    const char* const end = text.data() + text.size();
    int64_t integer = 0;
    if (std::from_chars(text.data(), end, integer).ptr == end) return integer;
    double real = 0;
    if (text.find('n') == std::string_view::npos &&
        std::from_chars(text.data(), end, real).ptr == end)
        return real;
    return text;
}

/// Reads the lines of an escaped dump. A path begins with a capital. A line that continues the line
/// before it does not.
class DumpReader {
  public:
    explicit DumpReader(std::string_view text) : rest_(text) {}

    bool next(Json& values) {
        if (rest_.empty()) return false;
        const std::string_view line = takeLine();
        const size_t equals = line.find(" = ");
        const std::string_view path = line.substr(0, equals);
        const std::string_view value = line.substr(equals + 3);
        Json::object_t pair;  // filled in place, because a dump has many of them
        pair.reserve(2);
        pair.emplace_back("path", path);
        pair.emplace_back("value", valueOf(value));
        values.push_back(std::move(pair));
        isWide_ = path.ends_with(".nchars");
        return true;
    }

  private:
    std::string_view takeLine() {
        const size_t end = rest_.find('\n');
        const std::string_view line = rest_.substr(0, end);
        rest_.remove_prefix(end + 1);
        return line;
    }

    Json valueOf(std::string_view value) {
        if (value.empty()) return isWide_ ? Json(takeWideText()) : Json(takeHex());
        if (value[0] == '\'') return unescaped(value.substr(1, value.size() - 2));
        if (value[0] == '{') return takeObjectIdentifier();
        return plainValue(value);
    }

    std::string takeHex() {
        std::string hex;
        while (!rest_.empty() && (rest_[0] < 'A' || rest_[0] > 'Z'))
            for (const char c : takeLine().substr(0, kHexColumn))
                if (c != ' ') hex += c;
        return hex;
    }

    /// The characters of a BMPString. The dump has them in the byte order of the machine.
    std::string takeWideText() {
        const std::string hex = takeHex();
        std::vector<uint16_t> text;
        for (size_t at = 0; at + 4 <= hex.size(); at += 4) {
            const unsigned first = digit(hex[at]) << 4 | digit(hex[at + 1]);
            const unsigned second = digit(hex[at + 2]) << 4 | digit(hex[at + 3]);
            const bool isLittle = std::endian::native == std::endian::little;
            text.push_back(
                static_cast<uint16_t>(isLittle ? second << 8 | first : first << 8 | second));
        }
        return utf8Of(text);
    }

    /// Reads "0 0 8 }". The dump has each number as a signed one of 32 bits.
    std::string takeObjectIdentifier() {
        const std::string_view line = takeLine();
        std::string text;
        for (const char *at = line.data(), *end = at + line.size(); at + 1 < end; ++at) {
            int32_t number = 0;
            at = std::from_chars(at, end, number).ptr;
            if (!text.empty()) text += '.';
            text += std::to_string(static_cast<uint32_t>(number));
        }
        return text;
    }

    std::string_view rest_;
    bool isWide_ = false;  // the line before has the length of a BMPString
};

}  // namespace

void appendDump(Json& values, const TamselDecoder& decoder) {
    std::string text;
    decoder.print(sinkOf(text), true);
    DumpReader reader(text);
    while (reader.next(values)) continue;
}
