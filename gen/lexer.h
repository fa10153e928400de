// The words and signs of ASN.1 notation.
#pragma once

#include <string>
#include <vector>

struct Token {
    enum Class { word, number, text, sign, end } tokenClass = end;
    std::string value;  // of a text: without its quotes
    int line = 0;
};

/// Splits a module into tokens, comments left out. The last one is `Token::end`. What is no token
/// becomes a sign of one character, for the parser to refuse.
std::vector<Token> tokenize(const std::string& text);
