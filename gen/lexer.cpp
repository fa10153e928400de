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
            token.tokenClass = Token::text;
            const size_t close = std::min(text_.find('"', at_ + 1), text_.size());
            token.value = text_.substr(at_ + 1, close - at_ - 1);
            line_ += static_cast<int>(std::count(token.value.begin(), token.value.end(), '\n'));
            at_ = std::min(close + 1, text_.size());
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

    size_t wordLength() const {
        size_t length = 1;
        while (at_ + length < text_.size()) {
            const char c = text_[at_ + length];
            const bool comment = text_.substr(at_ + length, 2) == "--";
            if ((!isLetter(c) && !isDigit(c) && c != '-') || comment) break;
            ++length;
        }
        return length;
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
