// output/omlchars.cpp - named characters, in UTF-8 and in ASCII.
#include "output/oml_int.h"
#include <cstdio>
#include <cstdlib>
#include <iterator>

static void utf8of(uint32_t c, char *out)
{
    if (c < 0x80)
        *out++ = char(c);
    else if (c < 0x800) {
        *out++ = char(0xc0 | c >> 6);
        *out++ = char(0x80 | (c & 63));
    } else {
        *out++ = char(0xe0 | c >> 12);
        *out++ = char(0x80 | (c >> 6 & 63));
        *out++ = char(0x80 | (c & 63));
    }
    *out = 0;
}

// Codes of {c code}: braces, drawing characters, and letters with marks.
static const struct {
    const char *name;
    uint16_t code;
    const char *ascii;
} codes[] = {
    {"-(", '{', "{"}, {")-", '}', "}"}, {"S|", '$', "$"}, {"'g", '`', "`"},
    {"-", 0x2500, "-"}, {"|", 0x2502, "|"}, {"+", 0x253c, "+"},
    {"TT", 0x252c, "+"}, {"BT", 0x2534, "+"}, {"LT", 0x251c, "|"}, {"RT", 0x2524, "|"},
    {"TLC", 0x250c, "+"}, {"TRC", 0x2510, "+"}, {"BRC", 0x2518, "+"}, {"BLC", 0x2514, "+"},
    {"a'", 0xe1, "a"}, {"e'", 0xe9, "e"}, {"i'", 0xed, "i"}, {"o'", 0xf3, "o"},
    {"u'", 0xfa, "u"}, {"y'", 0xfd, "y"}, {"A'", 0xc1, "A"}, {"E'", 0xc9, "E"},
    {"I'", 0xcd, "I"}, {"O'", 0xd3, "O"}, {"U'", 0xda, "U"}, {"Y'", 0xdd, "Y"},
    {"a'g", 0xe0, "a"}, {"e'g", 0xe8, "e"}, {"i'g", 0xec, "i"}, {"o'g", 0xf2, "o"},
    {"u'g", 0xf9, "u"}, {"A'g", 0xc0, "A"}, {"E'g", 0xc8, "E"}, {"I'g", 0xcc, "I"},
    {"O'g", 0xd2, "O"}, {"U'g", 0xd9, "U"},
    {"a^", 0xe2, "a"}, {"e^", 0xea, "e"}, {"i^", 0xee, "i"}, {"o^", 0xf4, "o"},
    {"u^", 0xfb, "u"}, {"A^", 0xc2, "A"}, {"E^", 0xca, "E"}, {"I^", 0xce, "I"},
    {"O^", 0xd4, "O"}, {"U^", 0xdb, "U"},
    {"a~", 0xe3, "a"}, {"o~", 0xf5, "o"}, {"n~", 0xf1, "n"}, {"A~", 0xc3, "A"},
    {"O~", 0xd5, "O"}, {"N~", 0xd1, "N"},
    {"a:", 0xe4, "a"}, {"e:", 0xeb, "e"}, {"i:", 0xef, "i"}, {"o:", 0xf6, "o"},
    {"u:", 0xfc, "u"}, {"y:", 0xff, "y"}, {"A:", 0xc4, "A"}, {"E:", 0xcb, "E"},
    {"I:", 0xcf, "I"}, {"O:", 0xd6, "O"}, {"U:", 0xdc, "U"},
    {"ae", 0xe6, "ae"}, {"AE", 0xc6, "AE"}, {"c,", 0xe7, "c"}, {"C,", 0xc7, "C"},
    {"oa", 0xe5, "a"}, {"oA", 0xc5, "A"}, {"o/", 0xf8, "o"}, {"O/", 0xd8, "O"},
    {"ss", 0xdf, "ss"}, {"r!", 0xa1, "!"}, {"r?", 0xbf, "?"}, {"L-", 0xa3, "GBP"},
    {"Y=", 0xa5, "JPY"}, {"E=", 0x20ac, "EUR"},
};

// Entities by name. Several symbols have two names.
const omlentity omlentities[] = {
    {"alpha", 0x3b1, "alpha"}, {"beta", 0x3b2, "beta"}, {"gamma", 0x3b3, "gamma"},
    {"delta", 0x3b4, "delta"}, {"epsilon", 0x3b5, "epsilon"}, {"zeta", 0x3b6, "zeta"},
    {"eta", 0x3b7, "eta"}, {"theta", 0x3b8, "theta"}, {"iota", 0x3b9, "iota"},
    {"kappa", 0x3ba, "kappa"}, {"lambda", 0x3bb, "lambda"}, {"mu", 0x3bc, "mu"},
    {"nu", 0x3bd, "nu"}, {"xi", 0x3be, "xi"}, {"omicron", 0x3bf, "omicron"},
    {"pi", 0x3c0, "pi"}, {"rho", 0x3c1, "rho"}, {"sigmaf", 0x3c2, "sigma"},
    {"sigma", 0x3c3, "sigma"}, {"tau", 0x3c4, "tau"}, {"upsilon", 0x3c5, "upsilon"},
    {"phi", 0x3c6, "phi"}, {"chi", 0x3c7, "chi"}, {"psi", 0x3c8, "psi"},
    {"omega", 0x3c9, "omega"}, {"thetasym", 0x3d1, "theta"}, {"upsih", 0x3d2, "Upsilon"},
    {"piv", 0x3d6, "pi"}, {"Alpha", 0x391, "Alpha"}, {"Beta", 0x392, "Beta"},
    {"Gamma", 0x393, "Gamma"}, {"Delta", 0x394, "Delta"}, {"Epsilon", 0x395, "Epsilon"},
    {"Zeta", 0x396, "Zeta"}, {"Eta", 0x397, "Eta"}, {"Theta", 0x398, "Theta"},
    {"Iota", 0x399, "Iota"}, {"Kappa", 0x39a, "Kappa"}, {"Lambda", 0x39b, "Lambda"},
    {"Mu", 0x39c, "Mu"}, {"Nu", 0x39d, "Nu"}, {"Xi", 0x39e, "Xi"},
    {"Omicron", 0x39f, "Omicron"}, {"Pi", 0x3a0, "Pi"}, {"Rho", 0x3a1, "Rho"},
    {"Sigma", 0x3a3, "Sigma"}, {"Tau", 0x3a4, "Tau"}, {"Upsilon", 0x3a5, "Upsilon"},
    {"Phi", 0x3a6, "Phi"}, {"Chi", 0x3a7, "Chi"}, {"Psi", 0x3a8, "Psi"},
    {"Omega", 0x3a9, "Omega"},
    {"bull", 0x2022, "*"}, {"bullet", 0x2022, "*"}, {"hellip", 0x2026, "..."},
    {"ellipsis", 0x2026, "..."}, {"prime", 0x2032, "'"}, {"Prime", 0x2033, "\""},
    {"weierp", 0x2118, "P"}, {"image", 0x2111, "Im"}, {"imaginary", 0x2111, "Im"},
    {"real", 0x211c, "Re"}, {"copy", 0xa9, "(C)"}, {"copyright", 0xa9, "(C)"},
    {"reg", 0xae, "(R)"}, {"registered", 0xae, "(R)"}, {"trade", 0x2122, "(TM)"},
    {"trademark", 0x2122, "(TM)"}, {"alef", 0x2135, "aleph"}, {"alefsym", 0x2135, "aleph"},
    {"larr", 0x2190, "<-"}, {"leftarrow", 0x2190, "<-"}, {"uarr", 0x2191, "^"},
    {"uparrow", 0x2191, "^"}, {"rarr", 0x2192, "->"}, {"rightarrow", 0x2192, "->"},
    {"darr", 0x2193, "v"}, {"downarrow", 0x2193, "v"}, {"harr", 0x2194, "<->"},
    {"dlarr", 0x21d0, "<="}, {"drarr", 0x21d2, "=>"}, {"dharr", 0x21d4, "<=>"},
    {"forall", 0x2200, "for all"}, {"part", 0x2202, "d"}, {"partial", 0x2202, "d"},
    {"exist", 0x2203, "exists"}, {"exists", 0x2203, "exists"}, {"empty", 0x2205, "{}"},
    {"emptyset", 0x2205, "{}"}, {"nabla", 0x2207, "nabla"}, {"isin", 0x2208, "in"},
    {"element", 0x2208, "in"}, {"notin", 0x2209, "not in"}, {"prod", 0x220f, "prod"},
    {"sum", 0x2211, "sum"}, {"minus", 0x2212, "-"}, {"plusmn", 0xb1, "+/-"},
    {"plusminus", 0xb1, "+/-"}, {"lowast", 0x2217, "*"}, {"asterisk", 0x2217, "*"},
    {"radic", 0x221a, "sqrt"}, {"sqrt", 0x221a, "sqrt"}, {"prop", 0x221d, "prop to"},
    {"infin", 0x221e, "infinity"}, {"infinity", 0x221e, "infinity"}, {"ang", 0x2220, "angle"},
    {"angle", 0x2220, "angle"}, {"and", 0x2227, "and"}, {"or", 0x2228, "or"},
    {"cap", 0x2229, "intersect"}, {"intersect", 0x2229, "intersect"}, {"cup", 0x222a, "union"},
    {"union", 0x222a, "union"}, {"int", 0x222b, "integral"}, {"integral", 0x222b, "integral"},
    {"there4", 0x2234, "therefore"}, {"therefore", 0x2234, "therefore"}, {"sim", 0x223c, "~"},
    {"cong", 0x2245, "~="}, {"asymp", 0x2248, "~~"}, {"ne", 0x2260, "!="},
    {"equiv", 0x2261, "=="}, {"le", 0x2264, "<="}, {"ge", 0x2265, ">="},
    {"sub", 0x2282, "subset"}, {"subset", 0x2282, "subset"}, {"sup", 0x2283, "superset"},
    {"superset", 0x2283, "superset"}, {"nsub", 0x2284, "not subset"},
    {"nsubset", 0x2284, "not subset"}, {"sube", 0x2286, "subset or equal"},
    {"subsete", 0x2286, "subset or equal"}, {"supe", 0x2287, "superset or equal"},
    {"supersete", 0x2287, "superset or equal"}, {"oplus", 0x2295, "(+)"},
    {"otimes", 0x2297, "(x)"}, {"perp", 0x22a5, "_|_"}, {"orthog", 0x22a5, "_|_"},
    {"sdot", 0x22c5, "."}, {"dot", 0x22c5, "."}, {"loz", 0x25ca, "<>"},
    {"lozenge", 0x25ca, "<>"}, {"diamond", 0x25ca, "<>"}, {"spades", 0x2660, "spades"},
    {"clubs", 0x2663, "clubs"}, {"hearts", 0x2665, "hearts"}, {"diams", 0x2666, "diamonds"},
    {"diamonds", 0x2666, "diamonds"}, {"deg", 0xb0, "deg"}, {"degree", 0xb0, "deg"},
    {"times", 0xd7, "x"}, {"divide", 0xf7, "/"}, {"sect", 0xa7, "S"}, {"para", 0xb6, "P"},
    {"amp", '&', "&"}, {"lt", '<', "<"}, {"gt", '>', ">"}, {"quot", '"', "\""},
};
const int32_t nomlentities = int32_t(std::size(omlentities));

bool oml_entity(const char *p, size_t n, char *utf8, char *ascii)
{
    for (const omlentity &e : omlentities)
        if (!strncmp(e.name, p, n) && !e.name[n]) {
            utf8of(e.code, utf8);
            snprintf(ascii, 32, "%s", e.ascii);
            return true;
        }
    return false;
}

bool oml_char(const char *p, size_t n, char *utf8, char *ascii)
{
    char name[8];
    if (n == 0 || n >= sizeof name)
        return false;
    memcpy(name, p, n);
    name[n] = 0;
    for (const auto &c : codes)
        if (!strcmp(c.name, name)) {
            utf8of(c.code, utf8);
            snprintf(ascii, 32, "%s", c.ascii);
            return true;
        }
    char *end;
    long v = strtol(name, &end, 0);
    if (*end || v < 32 || v > 255 || v == 127)
        return false;
    // As the byte itself in what is not UTF-8, so that old data prints as it was stored.
    utf8of(uint32_t(v), utf8);
    snprintf(ascii, 32, "%c", int(v));
    return true;
}
