// interp/messages.h - return codes and their words.
//
// A failure prints its words where it happens and returns its code, in one step:
//
//   return error(198);             the standard words of a code, at level 3
//   return notalow("weights");     "weights not allowed", 101
//
// messages.def holds one row for each code. error prints at the error level and restores the
// level in force. Codes with no row print nothing of their own.
#pragma once
#include <cstddef>
#include <cstdint>

// Prints the standard words of rc and returns the code to report: mostly rc itself; the
// internal codes report a public one; 2000 and the notes (8001, 8002, 8005) report 0.
[[nodiscard]] int32_t error(int32_t rc);
// As error for a code that came from a command's argument (see errcmd in interp/): some are
// mapped to plainer words. Returns the code itself.
[[nodiscard]] int32_t extended_error(int32_t rc);
// kind 1 invalid name, 2 name required, 3 already defined (110), 4 ambiguous abbreviation
// (111), 5 not found (111), 6 invalid name (182).
[[nodiscard]] int32_t error2(int32_t kind, const char *text);

// One row of the table.
struct msgrow {
    int32_t code;
    const char *text;    // without its line feed
    uint8_t level;       // 1 note, 3 error
    int32_t reported;    // what error returns
};
extern const msgrow msgtable[];
extern const int32_t nmsgtable;
const msgrow *msg_row(int32_t code);  // or null

// The indexed block of 73 texts behind the codes that share a run of numbers, and the
// start-up texts by number. Both copy into buffer (256 bytes) and return it; an index past
// the end gives the empty text.
char *loadmsg(char *buffer, int32_t index);
char *loadstr(char *buffer, int32_t index);

[[nodiscard]] int32_t invalid(const char *text);   // "invalid TEXT", 198
[[nodiscard]] int32_t required(const char *text);  // "TEXT required", 100
[[nodiscard]] int32_t notalow(const char *text);   // "TEXT not allowed", 101
[[nodiscard]] int32_t notfound(const char *text);  // "TEXT not found", 111
[[nodiscard]] int32_t unmatchedquote();            // 132
[[nodiscard]] int32_t unbalanced_quotes();         // 132
[[nodiscard]] int32_t noobsnoerr();
[[nodiscard]] int32_t braceerror();                // 198
[[nodiscard]] int32_t nomatchbrace();              // "matching close brace not found", 198
[[nodiscard]] int32_t macnotfound(const char *name);
[[nodiscard]] int32_t varnotfound(const char *name);
[[nodiscard]] int32_t matnotfound(const char *name);
[[nodiscard]] int32_t labnotfound(const char *name);
[[nodiscard]] int32_t regrnotfound();              // last estimates not found, 301
[[nodiscard]] int32_t gnrnotfound(const char *name);
[[nodiscard]] int32_t eqnotfound(const char *name);  // 303
[[nodiscard]] int32_t experr();
[[nodiscard]] int32_t errornumlist(int32_t rc);

// File failures: "file NAME not found" and so on. Codes 697 (saved) and 698 are notes and
// report 0. A negated code from ov_open is accepted as well.
[[nodiscard]] int32_t fierr(int32_t code, const char *name);

// Words of our own at the error level (c_outlev 3), raw, printf-style; returns rc, or 1 when
// a break was pressed while printing.
[[nodiscard, gnu::format(printf, 2, 3)]] int32_t errout(int32_t rc, const char *fmt, ...);
