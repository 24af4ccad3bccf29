// output/oml_int.h - inside the renderer: what its files share.
//
//   omlsend -> scanner (oml.cpp) -> tag rows (omltags.cpp) -> operations on every layout
//   omlsendraw ---------------------------------------------> text on every layout
//
// A layout (omllayout.cpp) holds one rendering: its width, column, open paragraph and the
// bytes on their way to a descriptor or a routine. Mark-up logs hold no rendering; they take
// the mark-up as the scanner consumes it.
#pragma once
#include "output/oml.h"
#include <cstring>

// Styles: one of four colours, and bits.
enum : uint8_t {
    ST_TXT = 0, ST_RES = omlst_result, ST_ERR = omlst_error, ST_COM = omlst_command,
    ST_COLOR = omlst_color, ST_BOLD = omlst_bold, ST_ITALIC = omlst_italic,
    ST_UNDER = omlst_under, ST_LINK = omlst_link,
    ST_NONE = 255,
};
inline constexpr size_t omlbuflen = 516;
inline constexpr size_t omliolen = 16384;

enum : uint8_t { COL_NONE, COL_ANSI, COL_MARKS };

// Where bytes go: a descriptor, or a routine.
struct omlio {
    int32_t fd = -1;
    oml_userfn fn = nullptr;
    void *arg = nullptr;
    bool log = false;      // failures are kept, and bytes go through the counted transfers
    bool eachline = false; // a person is watching: flush at line ends
    int32_t err = 0;
    size_t n = 0;
    char *buf = nullptr;   // omliolen bytes
};
void io_put(omlio *io, const char *p, size_t n);
void io_flush(omlio *io);

struct layout {
    layout *next;
    oml *o;
    omlio io;
    int32_t id;
    bool markup;           // a mark-up log: none of the fields below matter
    bool paused, waspaused;
    uint8_t color;         // how styles are shown: COL_NONE, COL_ANSI, COL_MARKS
    bool main;             // the record's own output, which pages
    bool midwrap;          // plain text went on behind "> "
    int32_t width;
    int32_t col;           // columns printed on this line
    // paragraph
    bool para, fresh;      // inside one; nothing printed on this line yet
    bool lastnl;           // the last source character was a line end
    bool begun;            // words were placed since the paragraph or a break began
    bool eatnl;            // swallow a line end that comes next
    int32_t ind1, ind2, rmargin, indent;
    int32_t blanks;        // wanted before the next word
    size_t nword;
    int32_t wordcols;
    char *word;            // omlbuflen bytes
    uint8_t style;         // as last sent to a colour terminal
    uint8_t wordstyle;     // in force where the gathered word begins
};

void lay_text(layout *l, const char *p, size_t n);
void lay_newline(layout *l);
void lay_para(layout *l, int32_t ind1, int32_t ind2, int32_t rmargin, int32_t skip);
void lay_paraend(layout *l);
void lay_break(layout *l);
void lay_newpage(layout *l);                // where there are pages; elsewhere a paragraph ends
void lay_hline(layout *l, int32_t n);       // 0: to the right margin
void lay_glyph(layout *l, const char *p, size_t n, int32_t cols);
void lay_linkmark(layout *l, const char *p, size_t n);  // where a link leads, when marks are wanted
void lay_space(layout *l, int32_t n);
void lay_col(layout *l, int32_t col);       // 1-based
void lay_align(layout *l, char how, int32_t field, int32_t len);  // blanks before an aligned text
void lay_alignend(layout *l, char how, int32_t field, int32_t len);
int32_t lay_column(const layout *l);        // 0-based, of the next character

// An open {tag: ... } of the scanner.
struct omlframe {
    uint8_t style;     // to go back to
    char close;        // 0 plain; '}' printed as it stands
    const char *after; // mark-up sent when it closes, or null
};
inline constexpr int32_t omlmaxframe = 32;

struct oml {
    uint8_t kind, openbyte;
    bool raw;              // within raw text: styles stay
    bool useron;
    oml_userfn user;
    void *userarg;
    int32_t maxwidth, pagelen, lines;
    bool moreunderway, paging;
    char *buf1, *buf2;     // the tag being read; scratch of the tag handlers
    size_t npend;          // bytes of an unfinished tag in buf1
    int32_t utf8;
    int32_t fd;
    layout *lays;          // the record's own first
    int32_t nextid, err, nmarkup;
    uint8_t style;
    int32_t nframe, deep;  // open frames; those beyond the table
    omlframe frame[omlmaxframe];
    int32_t expanding;     // depth of fixed expansions
    int32_t p2[4];         // two-column settings
    int32_t synw;
    bool syntab, eatnl;
};

bool oml_rawstate(const oml *o);
bool oml_wantstyle(const oml *o, uint8_t color);
void oml_endpara(oml *o);
void oml_atprompt(oml *o);                  // ends paragraphs; a new page begins
void oml_awaitline(oml *o);                 // the answer will end the line on the screen
int32_t omlsendrawn(oml *o, const char *text, size_t n);
void oml_scan(oml *o, const char *p, size_t n, bool top);
void oml_setstyle(oml *o, uint8_t style);
const char *oml_moreform();                 // the prompt, rendered
void oml_lineout(oml *o, layout *l);        // a line was finished on the main output

// Runs a tag. name, args and body are not terminated; body is null without a colon. Returns
// false when nobody knows it.
struct omltext_t {
    const char *p;
    size_t n;
};
// One row of omltags.def. form tells the scanner what to do with the text behind the colon.
enum omlform : uint8_t {
    OF_STYLE,    // text is scanned in the style; without text the style stays
    OF_OPEN,     // handler first, then the text is scanned, then after
    OF_WHOLE,    // handler gets the whole text
};
struct omltag {
    const char *name;
    omlform form;
    int32_t (*run)(oml *o, const omltag *t, omltext_t args, const omltext_t *body);
    int32_t arg;
    const char *text;
};
extern const omltag omltags[];
extern const int32_t nomltags;
const omltag *oml_tag(const char *name, size_t n);
// {c ...} and {&...}: the character in UTF-8 and in ASCII, or false.
bool oml_char(const char *p, size_t n, char *utf8, char *ascii);    // 16 and 32 bytes
bool oml_entity(const char *p, size_t n, char *utf8, char *ascii);
struct omlentity {
    const char *name;
    uint16_t code;
    const char *ascii;
};
extern const omlentity omlentities[];
extern const int32_t nomlentities;
