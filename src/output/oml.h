// output/oml.h - the renderer of OMCL, and the sinks it feeds.
//
// Mark-up comes in through omlsend, raw text through omlsendraw. One scanner reads the
// mark-up, tags are rows of omltags.def, and what they produce goes to every sink attached:
//
//   terminal     rendered at the screen's width, styles as colours when it is a terminal
//   plain log    rendered at the log's own width, no styles
//   mark-up log  the mark-up itself; raw braces are written {c -(} and {c )-}
//   user         a routine of the caller's (labels, tests, the more-prompt)
//
//   {name}   {name args}   {name:text}   {name args:text}
//
// Styles nest and end with their text. A tag nobody knows prints as it stands. An unclosed
// tag ends with its line. Raw text never meets the scanner.
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>

enum oml_out : uint8_t { OML_PLAIN, OML_TERMINAL, OML_MARKUP };
using oml_userfn = int32_t (*)(const char *text, size_t n, void *arg);

struct oml;  // the renderer record
extern oml *oml_cur, *oml_reswin;

[[nodiscard]] oml *omlopen(uint8_t kind);  // an oml_out; null without memory
void omlclose(oml *o);
void omlreinitialize(oml *o);  // forget open styles, paragraph and column state
// 40 to 255; anything else is brought to the nearer end. Returns the width taken.
int32_t omlset_maxwidth(oml *o, int32_t width);
int32_t omlquery_maxwidth(const oml *o);
void omlset_pagelen(oml *o, int32_t lines);
// With a descriptor the routine only answers the more-prompt, being called with null text;
// without one it takes the output too.
void omlset_user(oml *o, oml_userfn fn, void *arg);
void omlset_useroff(oml *o);
void omlset_useron(oml *o);
void omlset_fd(oml *o, int32_t fd);         // where the terminal sink writes; -1 none
void omlset_chars(oml *o, int utf8);        // line-drawing and named characters in UTF-8 or ASCII
int omlquery_chars(const oml *o);
bool omlcolorset(oml *o, bool on);          // styles as colours; returns the earlier setting
// The record's own output turns into a stream of mark-up, which begins with the line {omcl};
// weakly when it goes on a stream that has that line. off renders again.
void omlomclset(oml *o, bool on);
void omlomclsetweak(oml *o, bool on);

int32_t omlsend(oml *o, const char *markup);     // both return stopflag
int32_t omlsendraw(oml *o, const char *text);
int32_t omlsendscreen(oml *o, const char *markup);  // past the logs
// A line that was typed goes to the logs only; onscreen tells that the terminal showed it.
void omltyped(oml *o, const char *line, bool onscreen);
void omlflush(oml *o);
int32_t omlcolumn(const oml *o);                 // 1-based column of the next character

// Logs attached to a renderer. A log is a descriptor with a kind and a width of its own;
// output is the plain one, input the mark-up one (named for what they hold: what came out,
// what went in). Several may be attached; id tells them apart.
int32_t omlset_log_output(oml *o, int32_t fd, int32_t width);  // id, or -1 without memory
int32_t omlset_log_input(oml *o, int32_t fd);                  // id, or -1
void omllog_pause(oml *o, int32_t id, bool pause);
int32_t omlsendlog(oml *o, int32_t id, const char *markup);  // to that log alone, paused or not
void omllog_widths(oml *o, int32_t width);       // of all plain logs
int32_t omllog_err(const oml *o, int32_t id);    // of one log
int32_t omllog_close(oml *o, int32_t id);        // flushes; 0 or 693; the fd stays open
int32_t oml_query_log_err(const oml *o);         // 0, or 693 after a failed log write

// Rendering for a file or another program: a record of its own that hands the routine plain
// text in ASCII, or with marks the text in UTF-8 and in it
//   omlmark_style, a byte 32 + style (omlst_... bits)    omlmark_page, where a page begins
//   omlmark_link, a page's name, omlmark_end
// Close it with omlclose. Null without memory.
[[nodiscard]] oml *omlsend_genascii_begin(int32_t width, bool marks, oml_userfn fn, void *arg);
int32_t omlsend_genascii(oml *o, const char *markup);
int32_t omlsend_genascii_raw(oml *o, const char *text);
inline constexpr char omlmark_style = 1, omlmark_link = 2, omlmark_end = 3, omlmark_page = 12;
enum : uint8_t {  // of the style byte; the two lowest bits are a colour
    omlst_result = 1, omlst_error = 2, omlst_command = 3, omlst_color = 3,
    omlst_bold = 4, omlst_italic = 8, omlst_under = 16, omlst_link = 32,
};

// Paging. omlmore returns the key, or 0 when no prompt is due.
int32_t omlmore(oml *o);
void sysinitmore(int32_t moretime);
// What the screen is told; the terminal fills it in, and empty texts do without.
struct omlscreen {
    const char *wipe = "";  // the line the cursor is in, and to its start
    const char *standout = "", *standend = "";
    const char *sane = "";  // attributes off, the cursor shown
};
extern omlscreen oml_screen;
bool omlpromptset(const char *markup);  // the form of the prompt; false without memory
// The routine a console hands to omlset_user: shows the prompt and waits for a key.
int32_t sysmore(const char *text, size_t n, void *arg);

// Printed width of a marked-up string, and its text without mark-up.
int32_t lenofomcl(const char *markup);
std::string omltext(const char *markup);
