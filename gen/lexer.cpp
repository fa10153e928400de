#include "lexer.h"

#include <algorithm>
#include <cctype>
#include <string_view>

namespace {

bool isDigit(char c) {
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
}
bool isLetter(char c) {
    return std::isalpha(static_cast<unsigned char>(c)) != 0;
}
bool isWordPart(char c) {
    return isLetter(c) || isDigit(c) || c == '-';
}

class Scanner {
  public:
    explicit Scanner(std::string_view text) : text_(text) {}

    Token next() {
        skipBlanksAndComments();
        Token token{Token::end, "", line_};
        if (at_ >= text_.size()) return token;
        const char c = text_[at_];
        if (isLetter(c)) {
            token.tokenClass = Token::word;
            token.value = take(wordLength());
        } else if (isDigit(c) || (c == '-' && at_ + 1 < text_.size() && isDigit(text_[at_ + 1]))) {
            token.tokenClass = Token::number;
            size_t length = 1;
            while (at_ + length < text_.size() && isDigit(text_[at_ + length])) ++length;
            token.value = take(length);
        } else if (c == '"') {
            token.tokenClass = takeText(token.value) ? Token::text : Token::unclosedText;
        } else {
            token.tokenClass = Token::sign;
            token.value = take(signLength());
        }
        return token;
    }

  private:
    std::string take(size_t length) {
        std::string taken(text_.substr(at_, length));
        at_ += length;
        return taken;
    }

    /// A text, up to its quote on the same line. Returns false if there is none.
    bool takeText(std::string& value) {
        for (++at_; at_ < text_.size() && text_[at_] != '\n'; ++at_) {
            if (text_[at_] == '"' && text_.substr(at_, 2) != "\"\"") {
                ++at_;
                return true;
            }
            if (text_[at_] == '"') ++at_;
            value += text_[at_];
        }
        return false;
    }

    /// Letters, digits and hyphens; a hyphen is neither last nor doubled.
    size_t wordLength() const {
        size_t length = 1;
        while (at_ + length < text_.size() && isWordPart(text_[at_ + length])) ++length;
        const size_t comment = text_.substr(at_, length).find("--");
        length = std::min(length, comment);
        return text_[at_ + length - 1] == '-' ? length - 1 : length;
    }

    size_t signLength() const {
        for (const std::string_view sign : {"::=", "...", ".."})
            if (text_.substr(at_, sign.size()) == sign) return sign.size();
        return 1;
    }

    void skipBlanksAndComments() {
        while (at_ < text_.size()) {
            if (text_.substr(at_, 2) == "--") {
                at_ += 2;  // a comment ends with its line or with two more hyphens
                while (at_ < text_.size() && text_[at_] != '\n' && text_.substr(at_, 2) != "--")
                    ++at_;
                if (text_.substr(at_, 2) == "--") at_ += 2;
            } else if (std::isspace(static_cast<unsigned char>(text_[at_])) != 0) {
                if (text_[at_++] == '\n') ++line_;
            } else {
                return;
            }
        }
    }

    std::string_view text_;
    size_t at_ = 0;
    int line_ = 1;
};

}  // namespace

std::vector<Token> tokenize(const std::string& text) {
    Scanner scanner(text);
    std::vector<Token> tokens;
    do tokens.push_back(scanner.next());
    while (tokens.back().tokenClass != Token::end);
    return tokens;
}
