// mosa/tokenize.h - texts cut into words, signs, quoted texts and numbers.
#pragma once
#include <string_view>
#include <vector>

struct tk_quote {
    std::string_view open, close; // nested when they differ
};
struct tk_rules {
    std::string_view white;              // characters between tokens, no part of any
    std::vector<std::string_view> signs; // each a token wherever it stands; the longest wins
    std::vector<tk_quote> quotes;
    bool numbers = false; // a number is one token, whatever signs are in it: 1.5e-3
    bool hex = false;     // and one in hexadecimal: 1.8x+3
};
// The next token of s from *at, which moves behind it; empty at the end. Quotes stay on the
// token, and one that is not closed takes all that is left.
std::string_view tk_next(std::string_view s, size_t *at, const tk_rules &rules);
