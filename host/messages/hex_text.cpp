#include "hex_text.h"

#include <algorithm>

#include "hex_digits.h"
#include "hex_dump.h"
#include "hex_reader.h"

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string_view withoutMark(std::string_view text) {
    return text.substr(text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0);
}

/// Reads C arrays: the octets between braces.
class ArrayReader : HexReader {
  public:
    using HexReader::HexReader;

    std::vector<PastedMessage> read() {
        size_t brace = kNone;  // the last one that is open
        while (at_ < text_.size()) {
            const char c = text_[at_];
            if (skipComment()) continue;
            if (c == '{' || c == '}') {
                endMessage();
                brace = c == '{' ? at_ : kNone;
                ++at_;
            } else if (brace == kNone || isBlank(c) || c == ',') {
                ++at_;
            } else {
                readElement();
            }
        }
        if (brace != kNone) fail(brace, "no } for this {");
        return std::move(messages_);
    }

  private:
    static constexpr size_t kNone = static_cast<size_t>(-1);

    bool skipComment() {
        const std::string_view rest = text_.substr(at_);
        if (!rest.starts_with("/*") && !rest.starts_with("//")) return false;
        const size_t end = rest.starts_with("/*") ? rest.find("*/", 2) : rest.find('\n');
        at_ = end == std::string_view::npos ? text_.size() : at_ + end + 1;
        if (rest[1] == '*' && at_ < text_.size()) ++at_;
        return true;
    }

    void readElement() {
        const size_t start = at_;
        if (!skipPrefix('0')) fail(start, "an element of an array needs 0x");
        const size_t digits = digitsAt(at_);
        if (digits > 2) fail(start, "an element of more than one octet");
        readDigits(true);
    }
};

/// Reads lines of digit pairs and strings, each line a message.
class LineReader : HexReader {
  public:
    using HexReader::HexReader;

    std::vector<PastedMessage> read(bool joined) {
        bool continues = false;
        while (at_ < text_.size()) {
            const char c = text_[at_];
            if (c == '\n') {
                if (!continues && !joined) endMessage();
                continues = false;
                ++at_;
            } else if (isBlank(c)) {
                ++at_;
            } else {
                continues = c == ',' || (c == '\\' && endsLine(at_ + 1));
                if (continues)
                    ++at_;
                else
                    readItem(text_.size());
            }
        }
        endMessage();
        return std::move(messages_);
    }

  private:
    bool endsLine(size_t at) const {
        const size_t next = text_.find_first_not_of(" \t\r", at);
        return next == std::string_view::npos || text_[next] == '\n';
    }

    void readItem(size_t end) {
        const char c = text_[at_];
        const bool isBytes = c == 'b' && at_ + 1 < end && isQuote(text_[at_ + 1]);
        if (isBlank(c) || c == ',' || c == ':' || c == '-') {
            ++at_;
        } else if (isQuote(c) || isBytes) {
            at_ += isBytes ? 1 : 0;
            readQuoted();
        } else {
            const bool isNumber = skipPrefix('0');
            if (!isNumber) skipPrefix('\\');
            readDigits(isNumber);
        }
    }

    void readQuoted() {
        const size_t open = at_;
        size_t close = open + 1;
        bool isString = false;
        while (close < text_.size() && text_[close] != text_[open] && text_[close] != '\n') {
            const bool escapes = text_[close] == '\\';
            isString |= escapes;
            close += escapes ? 2 : 1;
        }
        if (close >= text_.size() || text_[close] != text_[open])
            fail(open, "no second quotation mark");
        ++at_;
        while (at_ < close) {
            if (isString)
                readCharacter();
            else
                readItem(close);
        }
        ++at_;
    }

    void readCharacter() {
        constexpr std::string_view kEscapes = "n\nr\rt\t\\\\\"\"''";
        if (text_[at_] != '\\') return add(text_[at_++]);
        if (skipPrefix('\\')) {
            if (digitsAt(at_) < 2) fail(at_, "\\x needs two hex digits");
            return readPair();
        }
        for (size_t i = 0; i < kEscapes.size(); i += 2) {
            if (kEscapes[i] != text_[at_ + 1]) continue;
            at_ += 2;
            return add(kEscapes[i + 1]);
        }
        fail(at_, "unknown escape sequence");
    }

    static bool isQuote(char c) { return c == '"' || c == '\''; }
};

}  // namespace

bool isText(std::string_view input) {
    input = withoutMark(input);
    return std::all_of(input.begin(), input.end(),
                       [](char c) { return HexReader::isBlank(c) || (c >= 0x20 && c <= 0x7E); });
}

std::vector<PastedMessage> parseMessages(std::string_view text, bool joined) {
    text = withoutMark(text);
    if (HexDumpReader::isDump(text)) return HexDumpReader(text).read();
    const size_t sign = text.find_first_of("{\\");
    if (sign != std::string_view::npos && text[sign] == '{') return ArrayReader(text).read();
    return LineReader(text).read(joined);
}

Octets parseHex(std::string_view text) {
    std::vector<PastedMessage> messages = parseMessages(text, true);
    return messages.empty() ? Octets() : std::move(messages[0].octets);
}

std::string formatHex(std::span<const unsigned char> octets) {
    std::string text;
    text.reserve(octets.size() * 2);
    appendHex(text, octets);
    return text;
}
