// output/fmt.h - display formats of numbers and strings.
//
//   %[-][0]w.d{g|f|e}[c]   number; - left, 0 leading zeros, c commas; w,d for a decimal comma
//   %21x %16H %16L ...     hexadecimal float, and the bytes in either order
//   %[-~]ws                string; ~ centred
//   %t{d c C w m q h y b g} and %d   dates, each with letter codes behind (output/dates.h)
//
// Missing values print as . or their letter, right-aligned in the width. A number that will
// not fit is shown in the nearest form that does.
#pragma once
#include <cstddef>
#include <cstdint>

struct fmtinfo {
    char kind;       // f g e x H L s, or t for a date
    char date;       // for t: d c C w m q h y b g
    bool left, zero, center, commas, dpcomma;
    int16_t width, dec;  // width 1 to 244
    const char *codes;   // letters of a date format, within the text handed in; or ""
};
// 0 when fmt is a format, else 1. out may be null.
int32_t chkfmt(const char *fmt, fmtinfo *out);
bool fmt_isstr(const char *fmt);
bool fmt_isdate(const char *fmt);
// Width in characters, 0 when fmt is not valid.
int32_t fmtwidth(const char *fmt);

// Writes z by fmt into out, padded to the width, terminated, never beyond n bytes. Returns
// the length. A decimal comma is used when ovata_dpc is set or the format asks for it.
int32_t fmtnum(char *out, size_t n, double z, const char *fmt);
// As fmtnum without the padding blanks.
int32_t fmtnumtrim(char *out, size_t n, double z, const char *fmt);
int32_t fmtstr(char *out, size_t n, const char *text, const char *fmt);

// Formats a new variable gets: %8.0g byte and int, %12.0g long, %9.0g float, %10.0g double,
// %9s or wider for a string.
const char *fmt_default(uint8_t type, char *buf);
// "byte", "float", "str12", ... for a storage type. buf holds 8 bytes.
const char *type_word(uint8_t type, char *buf);
// The storage type a word names, 0 when none; str alone gives 0.
uint8_t type_ofword(const char *word);

// A count of bytes as "0", "nk", "nm", "ng" or plain digits. buf holds 24 bytes.
char *sprint_memsize(char *buf, uint64_t bytes);
// A number with thousands separated, no padding. buf holds 40 bytes.
char *fmt_comma(char *buf, double z);
