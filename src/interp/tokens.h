// interp/tokens.h - the tokeniser: one small scanner that serves the whole program.
//
// It works over a text in place. On each call the caller hands it the characters that break
// a word (a parse string), so that one line can be read as words, numbers with signs, file
// names or variable names by different calls.
//
//   token          text of the current token; a quoted string is a '"' and its text behind it
//   end of text    token[0] is NUL; an empty string "" has token[0] '"' and token[1] NUL
//   two characters < = > ! ~ followed by = are one token when they are parse characters
//   quotes         "..." and the nestable `"..."'; one that never closes ends with the text
//   length         503 characters; the rest stays in the text for the next call
//
// Blanks are skipped before a token, tabs are not. Nothing is allocated, nothing is reported
// and the text is not changed.
#pragma once
#include <cstdint>

struct toktype {
    char *c_ptr;      // next character to scan
    char *lc_ptr;     // start of the last token; null after ti_settok and after an unget
    uint8_t ugetflg;  // the next get hands back token unchanged
    uint8_t ugotflg;  // the last token came from an unget
    char token[504];
};
struct gettok_state {
    char *c_ptr, *lc_ptr;
};

extern toktype tokinfo_rec;
inline constexpr toktype *tokinfo = &tokinfo_rec;  // the one over console

extern const char prsestd[], prsestdot[], prsenum[], prseopt[], prsestdnp[], prsestdnoangle[],
    prsevar[], prsestd2[], prse_fvstd[], prsefls[], prseclsvar[], prseclsvnoc[], prseeqn[];
extern const char prse_op[], prse_coding[], prse_coding2[], prse_opnum[], prse_opnlist[],
    prse_opterm[];

void ti_settok(toktype *ti, char *text);
char *ti_gettok(toktype *ti, const char *parsechars);  // returns ti->token
// As ti_gettok into buffer of macrolen bytes, for text that will not fit in token. A word may
// hold whole quoted strings, kept with their delimiters, and with bracketed also bracketed
// stretches; cut at macrolen - 1.
char *ti_gettoklong(toktype *ti, char *buffer, const char *parsechars, bool bracketed);
// Next token as a file name of at most 499 characters, quotes dropped. Returns 0, or
// RC_BADFILENAME when it is empty, a comma or a closing parenthesis.
[[nodiscard]] int32_t ti_gettokfn(toktype *ti, char *buffer);
// Demands the one-character token ch: stopflag, or 198 with its words.
[[nodiscard]] int32_t ti_gtokis(toktype *ti, char ch);
void ti_pushtok(toktype *ti, const char *text);  // text comes back from the next get
void ti_ungettok(toktype *ti);                   // a second unget in a row does nothing
void ti_stattok(const toktype *ti, gettok_state *state);
void ti_resettok(toktype *ti, const gettok_state *state);
inline char *ti_wheretok(const toktype *ti) { return ti->c_ptr; }
inline char *ti_lwheretok(const toktype *ti) { return ti->lc_ptr; }
char ti_gettok_next_char(toktype *ti);           // takes one character; NUL stays
char ti_peektok_chr(const toktype *ti);          // the next non-blank, without moving
void ti_trimtok(toktype *ti, char ch);
void ti_trimtokwhite(toktype *ti);
void ti_borrow_gettok(const toktype *ti, toktype *saved);
void ti_return_gettok(toktype *ti, const toktype *saved);
void ti_dumptok(const toktype *ti);

// Skip a quoted or bracketed stretch that starts at p; the position behind it. open tells
// that it never closed. pbrackets counts ( [ up and ) ] down alike and skips strings whole.
char *pcompoundquotes(char *p, bool *open);
char *psimplequotes(char *p, bool *open);
char *pbrackets(char *p, bool *open);
// The first ch outside quotes and brackets from p on, or the end of the text.
char *pfindoutside(char *p, char ch);

// Locates one quoted string at text, or at lc_ptr when text is null: start and end of its
// inside, and next behind its delimiter. Returns 0, or 1 with all three null. With a null
// text the scan moves behind it.
int32_t ti_parse_quoted_string(toktype *ti, char *text, char **start, char **end, char **next);

// The text of a token without the mark of a quoted string.
inline const char *tok_text(const char *token) { return *token == '"' ? token + 1 : token; }
