// The words and signs of ASN.1 notation.
#pragma once

#include <string>
#include <vector>

struct Token {
    enum Class { word, number, text, sign, unclosedText, end } tokenClass = end;
    std::string value;  // of a text: without its quotes, a doubled quote as one
    int line = 0;
};

/// Splits a module into tokens, without the comments. The last one is `Token::end`. A character
/// that begins no token becomes a sign, which the parser refuses.
std::vector<Token> tokenize(const std::string& text);
