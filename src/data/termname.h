// data/termname.h - names of terms, as stripes of matrices and expanded lists have them.
//
//   x  L2.x  o.x             a variable, a lag of it, one that was left out
//   2.g  1b.g  1bn.g  3o.g   an indicator of a level: plain, base, first of a factor without a
//                            base, left out; 2L.g is one of the lagged factor
//   1b.g#co.x  2.g#c.x#cL.z  products, where c. marks what is no indicator
//
// An indicator product whose parts are all at their base is left out, as is any name with an o.
// Everything here is text: no dataset is looked at.
#pragma once
#include <cstdint>
#include <string>

inline constexpr int32_t term_maxname = 128, term_maxparts = 8;

enum termkind : uint8_t { TP_PLAIN, TP_LEVEL, TP_CONT };
enum : uint8_t { TM_BASE = 1, TM_NOBASE = 2, TM_OMIT = 4 };

// Time-series operators: a shift (L positive, F negative), an order of differences (D) and up
// to two spans of seasonal differences (S).
struct tsops {
    int16_t lag = 0, diff = 0, span[2] = {0, 0};
    bool any() const { return lag || diff || span[0]; }
    bool operator==(const tsops &) const = default;
};
struct termpart {
    termkind kind = TP_PLAIN;
    uint8_t marks = 0;
    int32_t level = 0;
    tsops ts;
    int32_t var = 0; // of the dataset, where somebody looked it up
    char name[33] = "";
};
struct termname {
    int32_t n = 0;
    termpart part[term_maxparts];
};

// One operator letter with its number, joined to what stands. False when there are too many.
bool ts_join(tsops *t, char letter, int32_t number);
std::string ts_text(const tsops &t);

// False when text is no name of this sort (a bare name is one).
bool term_read(const char *text, termname *out);
std::string term_write(const termname &t);
// The same column, whatever its marks and the order of its parts.
bool term_same(const termname &a, const termname &b);
// The same product of variables: levels do not count either.
bool term_sameterm(const termname &a, const termname &b);
bool term_isomitted(const termname &t);
bool term_isbase(const termname &t); // all parts indicators at their base
bool term_hasfactor(const termname &t);
void term_omit(termname *t); // sets the mark on what is not at its base
