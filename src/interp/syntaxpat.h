// interp/syntaxpat.h - the pattern on a line of `syntax`, read into a record.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

enum synkind : uint8_t {
    SY_NONE, SY_VARLIST, SY_VARNAME, SY_NEWVARLIST, SY_NEWVARNAME, SY_NAMELIST, SY_NAME,
    SY_ANYTHING,
};
// What stands in parentheses behind varlist and its kin.
struct synlist {
    int32_t min = -1, max = -1;  // -1 not told
    bool numeric = false, string = false;
    bool defnone = false, defgiven = false;
    bool equalok = false, everything = false;
    bool ts = false, fv = false;  // operators of time series, of factors
    std::string local, id;
};
enum synopt : uint8_t {
    SO_ON, SO_OFF, SO_INTEGER, SO_REAL, SO_CILEVEL, SO_STRING, SO_ASIS, SO_NUMLIST, SO_LIST,
    SO_PASSTHRU, SO_EXP,
};
struct synoption {
    std::string name;     // lower case; with its no for SO_OFF
    std::string local;
    size_t min;           // least abbreviation of name
    synopt type = SO_ON;
    bool required = false, hasdefault = false;
    double dflt = 0;
    std::string args;     // restrictions of a numlist
    synkind kind = SY_NONE;
    synlist list;
};
enum : uint8_t { SC_NO = 0, SC_OPTIONAL = 1, SC_REQUIRED = 2 };
struct synpattern {
    synkind kind = SY_NONE;
    bool required = false;
    synlist list;
    uint8_t if_ = SC_NO, in = SC_NO, using_ = SC_NO, exp = SC_NO, weight = SC_NO;
    bool ifbare = false, inbare = false, usingbare = false, expbare = false;  // the / forms
    std::vector<std::string> weights;  // aweight, ... in the order given
    std::vector<synoption> options;
    bool star = false;
    bool hasoptions = false;
};
[[nodiscard]] int32_t syn_read(const char *text, synpattern *p);
[[nodiscard]] int32_t syn_readlist(const std::string &text, synlist *l);

// Behind the ) that matches the ( at p, strings passed over; null when it never closes.
const char *syn_closeparen(const char *p);
// aweight and kin by a word of two letters or more, "weight" for its abbreviations, else null.
const char *syn_weightword(const std::string &word);
