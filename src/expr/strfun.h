// expr/strfun.h - the pure functions behind expression rows: strings and arithmetic.
//
// Strings are NUL-terminated bytes of at most 244 characters; results go to out, which holds
// 246 bytes, may not be an argument unless said, and is cut. Numbers follow the rules of
// missing values: >= misval is missing and no function fails.
#pragma once
#include <cstdint>

double ovpow(double x, double y);
double ovint(double x);      // toward zero; keeps the letter of a missing value (as floor, ceil)
double ovfloor(double x);
double ovceil(double x);
double ovround(double x, double y);
double ovmod(double x, double y);
double ovchop(double x, double e);
double ovclip(double x, double a, double b);
double ovsign(double x);
double ovautocode(double x, double n, double x0, double x1);
double ovrecode(double x, const double *cut, int32_t n);
double ovirecode(double x, const double *cut, int32_t n);
double ovmax(const double *x, int32_t n);
double ovmin(const double *x, int32_t n);
double ovreldif(double x, double y);
double ovcomb(double n, double k);
double ovlnfactorial(double n);
double ovlngamma(double x);
double ovdigamma(double x);
double ovtrigamma(double x);
double ovlogit(double p);
double ovinvlogit(double x);
double ovcloglog(double p);
double ovinvcloglog(double x);

char *str_substr(char *out, const char *s, double n1, double n2);
char *str_subinstr(char *out, const char *s, const char *from, const char *to, double n);
char *str_subinword(char *out, const char *s, const char *from, const char *to, double n);
char *str_word(char *out, const char *s, double n);
double str_wordcount(const char *s);
double str_pos(const char *s, const char *what);   // 1-based, 0 when absent or what is empty
double str_indexnot(const char *s, const char *set);
char *str_lower(char *s);   // these six in place
char *str_upper(char *s);
char *str_proper(char *s);
char *str_ltrim(char *s);
char *str_rtrim(char *s);
char *str_itrim(char *s);
char *str_reverse(char *s);
double str_match(const char *s, const char *pattern);  // * and ?, whole string: 1 or 0
char *str_soundex(char *out, const char *s);
char *str_soundex_nara(char *out, const char *s);
char *str_toname(char *out, const char *s, double p);
char *str_abbrev(char *out, const char *s, double n);
char *str_plural(char *out, double n, const char *s, const char *t);  // t may be null
char *str_string(char *out, double z, const char *fmt);
double str_real(const char *s);
char *str_char(char *out, double n);
char *str_subdp(char *out, const char *s);
