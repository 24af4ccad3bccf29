// output/print.h - the print layer. Commands never write to the terminal directly.
//
// A message has a level, and is printed only when that is not below the threshold in force:
//
//   c_outlev   0 {res} results   1 {txt} text   2 {txt} echo   3 {err} errors   4 {com} input
//   s_outlev   0 all; 3 under quietly; 5 under capture
//   ls_outlev  the threshold at entry to the current program, to which noisily returns
//
// Text of the user (names, values, echoed lines) goes out raw, through the 21 family; text of
// our own that carries mark-up goes through spoutsml. Every call returns stopflag, so that a
// break shows at the next print.
#pragma once
#include <cstddef>
#include <cstdint>

extern uint8_t c_outlev, s_outlev, ls_outlev;
inline constexpr size_t outbuflen = 16384;
extern char outbuf[outbuflen];  // shared scratch of spout21o

int32_t spout21(const char *text);   // style of the level, then the text raw
int32_t spoutsml(const char *text);  // the text as mark-up, no style of its own
int32_t spout21o();                  // spout21(outbuf)
int32_t spoutstr(int32_t id);        // a start-up text by number
int32_t newline();
void spout_setcoloroflev();

// printf-style forms. Text longer than outbuflen is cut.
[[gnu::format(printf, 1, 2)]] int32_t spout21f(const char *fmt, ...);
[[gnu::format(printf, 1, 2)]] int32_t spoutsmlf(const char *fmt, ...);
// At a level of their own, restoring c_outlev: res21("%9.0g") style helpers.
int32_t spout21at(uint8_t level, const char *text);
[[gnu::format(printf, 2, 3)]] int32_t spout21fat(uint8_t level, const char *fmt, ...);

// Echo of do-file text, in blocks as the reader meets it (level 2, raw).
int32_t spoutfordo(const char *text, int32_t n);

// The level is put back when the block is left.
struct outlev_keep {
    uint8_t was = c_outlev;
    explicit outlev_keep(uint8_t level) { c_outlev = level; }
    ~outlev_keep() { c_outlev = was; }
    outlev_keep(const outlev_keep &) = delete;
    outlev_keep &operator=(const outlev_keep &) = delete;
};
// True when a message of this level would be shown: lets a command skip counting.
inline bool out_shown(uint8_t level) { return level >= s_outlev; }
