// core/numtext.h - numbers read from text.
#pragma once
#include <cstdint>

// Reads the whole of text as a number: decimal with optional point and exponent (e or d, in
// either case), a missing value (. or .a to .z), or a hexadecimal float such as 1.8x+3 or
// -1.fffffeX+7e (digits, x or X, signed hexadecimal exponent of 2). Blanks around it are
// allowed, an exponent needs a digit before its letter, and overflow gives misval.
// Correctly rounded. Returns 0, or 1 when text is not a number (out is then misval).
int32_t cnvstoz(const char *text, double *out);

// As cnvstoz for the first n bytes of text, which need not end there.
int32_t cnvstozn(const char *text, int32_t n, double *out);

// A whole number in the range of int32, sign allowed, blanks around it allowed. Returns 0 or 1.
int32_t cnvstoint4(const char *text, int32_t *out);

// The shortest decimal text that reads back as the same float (type T_FLOAT) or double;
// missing values by their letters. buf holds at least 32 bytes. Returns buf.
char *cnvztos(double z, char *buf);
