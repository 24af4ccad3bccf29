// output/omllayout.cpp - one rendering: lines, wrap, paragraphs, columns.
//
// Plain text goes on behind "> " when a line is full. In a paragraph, words are gathered and
// placed; blanks stay as typed, a line end counts as one, an empty line ends it. Bytes 0x80 to
// 0xBF take no column, so a character of several bytes is never cut.
#include "core/files.h"
#include "core/progress.h"
#include "output/oml_int.h"
#include <algorithm>
#include <cstdio>
#include <unistd.h>

void io_flush(omlio *io)
{
    size_t n = io->n;
    io->n = 0;
    if (!n)
        return;
    if (io->fn) {
        io->fn(io->buf, n, io->arg);
        return;
    }
    if (io->fd < 0 || io->err)
        return;
    if (io->eachline && progress_shown)
        progress_wipe();
    if (io->log) {
        if (ovata_write(io->fd, io->buf, int32_t(n)) != int32_t(n))
            io->err = 693;
        return;
    }
    for (size_t at = 0; at < n;) {
        ssize_t k = write(io->fd, io->buf + at, n - at);
        if (k <= 0)
            return;
        at += size_t(k);
    }
}

void io_put(omlio *io, const char *p, size_t n)
{
    while (n > omliolen - io->n) {
        size_t k = omliolen - io->n;
        memcpy(io->buf + io->n, p, k);
        io->n += k;
        p += k;
        n -= k;
        io_flush(io);
    }
    memcpy(io->buf + io->n, p, n);
    io->n += n;
}

static inline int32_t chcols(char c)
{
    return (uint8_t(c) & 0xc0) != 0x80;
}

static int32_t cols_of(const char *p, size_t n)
{
    int32_t k = 0;
    for (size_t i = 0; i < n; i++)
        k += chcols(p[i]);
    return k;
}

// ---- styles on a terminal
static size_t stylecode(char *out, const layout *l)
{
    uint8_t s = l->style;
    if (l->color == COL_MARKS) {
        out[0] = omlmark_style;
        out[1] = char(32 + s);
        return 2;
    }
    static const char *const color[] = {"", "", "31", ""};
    int n = snprintf(out, 32, "\033[0");
    const char *c = color[s & ST_COLOR];
    if (*c)
        n += snprintf(out + n, size_t(32 - n), ";%s", c);
    if ((s & ST_BOLD) || (s & ST_COLOR) == ST_RES || (s & ST_COLOR) == ST_COM)
        n += snprintf(out + n, size_t(32 - n), ";1");
    if (s & ST_ITALIC)
        n += snprintf(out + n, size_t(32 - n), ";3");
    if (s & ST_UNDER)
        n += snprintf(out + n, size_t(32 - n), ";4");
    if (s & ST_LINK)
        n += snprintf(out + n, size_t(32 - n), ";36");
    out[n++] = 'm';
    return size_t(n);
}

static void style_now(layout *l)
{
    char code[40];
    if (!l->color || l->style == l->o->style)
        return;
    l->style = l->o->style;
    io_put(&l->io, code, stylecode(code, l));
}

// ---- lines
static void endline(layout *l)
{
    if (l->color && l->style != ST_TXT) {
        char code[40];
        l->style = ST_TXT;
        if (l->color == COL_ANSI)
            io_put(&l->io, "\033[0m", 4);
        else
            io_put(&l->io, code, stylecode(code, l));
    }
    io_put(&l->io, "\n", 1);
    l->col = 0;
    l->midwrap = false;
    if (l->io.eachline)
        io_flush(&l->io);
    if (l->main)
        oml_lineout(l->o, l);
}

static void pad(layout *l, int32_t n)
{
    static const char blanks[] = "                                                                ";
    for (; n > 0; n -= 64) {
        int32_t k = std::min(n, 64);
        io_put(&l->io, blanks, size_t(k));
        l->col += k;
    }
}

// One run without line ends, outside a paragraph.
static void plainrun(layout *l, const char *p, size_t n)
{
    style_now(l);
    // Bytes are at least as many as columns, but for tabs.
    if (l->col + int64_t(n) <= l->width && !memchr(p, '\t', n)) {
        io_put(&l->io, p, n);
        l->col += cols_of(p, n);
        return;
    }
    for (size_t i = 0; i < n; i++) {
        int32_t k = p[i] == '\t' ? (l->col | 7) + 1 - l->col : chcols(p[i]);
        if (k && l->col + k > l->width) {
            endline(l);
            style_now(l);
            io_put(&l->io, "> ", 2);
            l->col = 2;
            l->midwrap = true;
            if (p[i] == '\t')
                k = 6;
        }
        io_put(&l->io, p + i, 1);
        l->col += k;
    }
}

// ---- words of a paragraph
static void startline(layout *l)
{
    int32_t want = l->indent;
    pad(l, want - l->col);
    l->fresh = false;
    l->indent = l->ind2;
}

static void restyle(layout *l, uint8_t style)
{
    char code[40];
    if (!l->color || l->style == style)
        return;
    l->style = style;
    io_put(&l->io, code, stylecode(code, l));
}

// Places the word gathered so far. A piece of an overlong word goes on where the line is.
static void placeword(layout *l)
{
    if (!l->nword)
        return;
    if (l->blanks >= 0) { // -1: glued to what was placed before
        if (!l->fresh && l->wordcols && l->col + l->blanks + l->wordcols > l->width - l->rmargin) {
            uint8_t last = l->style;
            endline(l);
            l->fresh = true;
            startline(l);
            restyle(l, l->wordstyle);
            l->style = last;
        } else if (l->fresh)
            startline(l);
        else
            pad(l, l->blanks);
    }
    io_put(&l->io, l->word, l->nword);
    l->col += l->wordcols;
    l->nword = 0;
    l->wordcols = 0;
    l->blanks = -1;
}

static void addword(layout *l, const char *p, size_t n, int32_t cols)
{
    if (l->nword + n + 40 > omlbuflen)
        placeword(l);
    if (!l->nword)
        l->wordstyle = l->style;
    if (l->color && l->style != l->o->style) {
        l->style = l->o->style;
        l->nword += stylecode(l->word + l->nword, l);
    }
    memcpy(l->word + l->nword, p, n);
    l->nword += n;
    l->wordcols += cols;
}

static void endword(layout *l)
{
    placeword(l);
    if (l->blanks < 0)
        l->blanks = 0;
    if (l->style & (ST_UNDER | ST_LINK)) // shows on the blanks between words
        style_now(l);
}

static void pararun(layout *l, const char *p, size_t n)
{
    const char *end = p + n;
    while (p < end) {
        if (*p == ' ' || *p == '\t') {
            endword(l);
            if (!l->lastnl)
                l->blanks++;
            p++;
            continue;
        }
        const char *q = p;
        while (q < end && *q != ' ' && *q != '\t' && q - p < 256)
            q++;
        l->lastnl = false;
        l->begun = true;
        addword(l, p, size_t(q - p), cols_of(p, size_t(q - p)));
        p = q;
    }
}

void lay_text(layout *l, const char *p, size_t n)
{
    if (!n)
        return;
    l->eatnl = false;
    if (l->para)
        pararun(l, p, n);
    else
        plainrun(l, p, n);
}

void lay_newline(layout *l)
{
    if (l->eatnl) {
        l->eatnl = false;
        return;
    }
    if (!l->para) {
        endline(l);
        return;
    }
    bool empty = l->lastnl;
    endword(l);
    if (empty) {
        lay_paraend(l);
        l->eatnl = false;
        endline(l);
        return;
    }
    l->blanks = 1;
    l->lastnl = l->begun;
}

void lay_para(layout *l, int32_t ind1, int32_t ind2, int32_t rmargin, int32_t skip)
{
    lay_paraend(l);
    l->eatnl = false;
    for (; skip > 0; skip--)
        endline(l);
    l->para = l->fresh = true;
    l->lastnl = l->begun = false;
    l->rmargin = std::clamp(rmargin, 0, l->width / 2);
    int32_t most = l->width - l->rmargin - 8;
    l->indent = l->ind1 = std::clamp(ind1, 0, most);
    l->ind2 = std::clamp(ind2, 0, most);
    l->blanks = 0;
}

void lay_paraend(layout *l)
{
    if (l->para) {
        endword(l);
        l->para = false;
        l->eatnl = true;
    }
    if (l->col)
        endline(l);
}

void lay_newpage(layout *l)
{
    lay_paraend(l);
    if (l->color == COL_MARKS)
        io_put(&l->io, &omlmark_page, 1);
}

void lay_break(layout *l)
{
    if (!l->para) {
        endline(l);
        l->eatnl = true;
        return;
    }
    endword(l);
    endline(l);
    l->fresh = true;
    l->indent = l->ind2;
    l->blanks = 0;
    l->lastnl = false;
    l->begun = false;
}

void lay_glyph(layout *l, const char *p, size_t n, int32_t cols)
{
    l->eatnl = false;
    if (l->para) {
        l->lastnl = false;
        l->begun = true;
        addword(l, p, n, cols);
        return;
    }
    if (l->col + cols > l->width && l->col > 2) {
        endline(l);
        io_put(&l->io, "> ", 2);
        l->col = 2;
    }
    style_now(l);
    io_put(&l->io, p, n);
    l->col += cols;
}

void lay_linkmark(layout *l, const char *p, size_t n)
{
    char mark[200];
    if (l->color != COL_MARKS || n > sizeof mark - 2)
        return;
    mark[0] = omlmark_link;
    memcpy(mark + 1, p, n);
    mark[n + 1] = omlmark_end;
    if (l->para)
        addword(l, mark, n + 2, 0);
    else
        io_put(&l->io, mark, n + 2);
}

int32_t lay_column(const layout *l)
{
    if (!l->para)
        return l->col;
    int32_t at = l->fresh ? l->indent : l->col + std::max(l->blanks, 0);
    return at + l->wordcols;
}

void lay_hline(layout *l, int32_t n)
{
    bool utf = l->main && l->o->utf8;
    int32_t most = l->width - (l->para ? l->rmargin : 0) - lay_column(l);
    if (n <= 0)
        n = most;
    for (n = std::min(n, l->width); n > 0; n--)
        lay_glyph(l, utf ? "\xe2\x94\x80" : "-", utf ? 3 : 1, 1);
}

void lay_space(layout *l, int32_t n)
{
    l->eatnl = false;
    n = std::clamp(n, 0, l->width);
    if (l->para) {
        endword(l);
        if (l->fresh) {
            startline(l);
            l->blanks = 0;
        }
        l->blanks += n;
        l->lastnl = false;
        return;
    }
    for (; n > 0; n--)
        plainrun(l, " ", 1);
}

void lay_col(layout *l, int32_t col)
{
    l->eatnl = false;
    col = std::min(col, l->width);
    if (l->para) {
        endword(l);
        if (l->fresh)
            startline(l);
        pad(l, col - 1 - l->col);
        l->blanks = 0;
        l->lastnl = false;
        return;
    }
    pad(l, col - 1 - l->col);
}

// Blanks before and behind a text of len columns: how is c centred, C centred with the odd
// blank in front, r right, l left. Without a field the line itself is the field.
static int32_t leading(const layout *l, char how, int32_t field, int32_t len)
{
    int32_t width = field > 0 ? field : l->width - (l->para ? l->rmargin : 0);
    int32_t room = std::max(width - len, 0);
    int32_t lead = how == 'l' ? 0 : how == 'r' ? room : how == 'C' ? (room + 1) / 2 : room / 2;
    return field > 0 ? lead : std::max(lead - lay_column(l), 0);
}

void lay_align(layout *l, char how, int32_t field, int32_t len)
{
    lay_space(l, leading(l, how, field, len));
}

void lay_alignend(layout *l, char how, int32_t field, int32_t len)
{
    if (field > 0)
        lay_space(l, field - len - leading(l, how, field, len));
}
