// output/oml.cpp - renderer records, and the scanner of mark-up.
#include "core/mem.h"
#include "core/state.h"
#include "output/oml_int.h"
#include <algorithm>
#include <cstdlib>
#include <new>
#include <unistd.h>

oml *oml_cur, *oml_reswin;
static bool nestedopen; // the prompt's form is being worked out
static char *moreform;
static int32_t scandepth; // nested scans and measurements; bounds the work of hostile mark-up
static constexpr int32_t maxdepth = 6;

// ---- records
static layout *newlayout(oml *o)
{
    void *at = safemalloc(sizeof(layout));
    if (!at)
        return nullptr;
    layout *l = new (at) layout{};
    l->o = o;
    l->width = 79;
    l->io.buf = static_cast<char *>(safemalloc(omliolen));
    l->word = static_cast<char *>(safemalloc(omlbuflen));
    if (!l->io.buf || !l->word) {
        safefree(l->io.buf);
        safefree(l->word);
        safefree(l);
        return nullptr;
    }
    return l;
}

static void freelayout(layout *l)
{
    safefree(l->io.buf);
    safefree(l->word);
    l->~layout();
    safefree(l);
}

static oml *newrecord(uint8_t kind)
{
    void *at = safecalloc(sizeof(oml));
    if (!at)
        return nullptr;
    oml *o = new (at) oml{};
    o->kind = o->openbyte = kind;
    o->maxwidth = 79;
    o->pagelen = 23;
    o->useron = o->paging = true;
    o->fd = -1;
    o->style = ST_TXT;
    o->synw = 20;
    o->buf1 = static_cast<char *>(safemalloc(omlbuflen));
    o->buf2 = o->buf1 ? static_cast<char *>(safemalloc(omlbuflen)) : nullptr;
    o->lays = o->buf2 ? newlayout(o) : nullptr;
    if (!o->lays) {
        safefree(o->buf1);
        safefree(o->buf2);
        safefree(o);
        return nullptr;
    }
    o->lays->main = true;
    o->lays->markup = kind == OML_MARKUP;
    o->nmarkup = kind == OML_MARKUP;
    static const int32_t p2[4] = {5, 22, 24, 2};
    memcpy(o->p2, p2, sizeof p2);
    return o;
}

oml *omlopen(uint8_t kind)
{
    if (!nestedopen && !moreform) {
        nestedopen = true;
        bool good = omlpromptset("{clearmore:{hline 2}more{hline 2}}\n");
        nestedopen = false;
        if (!good)
            return nullptr;
    }
    oml *o = newrecord(kind);
    if (o && kind == OML_TERMINAL)
        omlset_fd(o, 1);
    return o;
}

bool omlpromptset(const char *markup)
{
    std::string form = omltext(markup);
    while (!form.empty() && form.back() == '\n')
        form.pop_back();
    char *copy = static_cast<char *>(safemalloc(form.size() + 1));
    if (!copy)
        return false;
    memcpy(copy, form.c_str(), form.size() + 1);
    safefree(moreform);
    moreform = copy;
    return true;
}
const char *oml_moreform()
{
    return moreform ? moreform : "--more--";
}

void omlclose(oml *o)
{
    if (!o)
        return;
    omlflush(o);
    while (layout *l = o->lays) {
        o->lays = l->next;
        freelayout(l);
    }
    safefree(o->buf1);
    safefree(o->buf2);
    if (oml_cur == o)
        oml_cur = nullptr;
    if (oml_reswin == o)
        oml_reswin = nullptr;
    safefree(o);
}

void omlreinitialize(oml *o)
{
    o->npend = 0;
    o->nframe = o->deep = 0;
    o->style = ST_TXT;
    o->eatnl = false;
    for (layout *l = o->lays; l; l = l->next) {
        l->para = l->eatnl = false;
        l->nword = 0;
        l->wordcols = l->col = 0;
    }
}

int32_t omlset_maxwidth(oml *o, int32_t width)
{
    o->maxwidth = o->lays->width = std::clamp(width, 40, 255);
    return o->maxwidth;
}
int32_t omlquery_maxwidth(const oml *o)
{
    return o->maxwidth;
}
void omlset_pagelen(oml *o, int32_t lines)
{
    o->pagelen = lines;
}

static void route(oml *o)
{
    omlio &io = o->lays->io;
    io_flush(&io);
    io.fd = o->fd;
    io.fn = o->fd < 0 && o->useron ? o->user : nullptr;
    io.arg = o->userarg;
}
void omlset_user(oml *o, oml_userfn fn, void *arg)
{
    o->user = fn;
    o->userarg = arg;
    route(o);
}
void omlset_useroff(oml *o)
{
    o->useron = false;
    route(o);
}
void omlset_useron(oml *o)
{
    o->useron = true;
    route(o);
}

static bool env_utf8()
{
    for (const char *name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char *v = getenv(name);
        if (v && *v)
            return strcasestr(v, "utf-8") || strcasestr(v, "utf8");
    }
    return false;
}

void omlset_fd(oml *o, int32_t fd)
{
    o->fd = fd;
    route(o);
    layout *l = o->lays;
    bool tty = fd >= 0 && isatty(fd);
    const char *term = getenv("TERM");
    l->io.eachline = tty;
    bool color = tty && !getenv("NO_COLOR") && term && strcmp(term, "dumb") != 0;
    l->color = color ? COL_ANSI : COL_NONE;
    o->utf8 = tty && env_utf8();
}
void omlset_chars(oml *o, int utf8)
{
    o->utf8 = utf8;
}
int omlquery_chars(const oml *o)
{
    return o->utf8;
}

bool omlcolorset(oml *o, bool on)
{
    layout *l = o->lays;
    bool was = l->color == COL_ANSI;
    if (l->color != COL_MARKS)
        l->color = on ? COL_ANSI : COL_NONE;
    return was;
}

void omlomclsetweak(oml *o, bool on)
{
    layout *l = o->lays;
    if (l->markup == on)
        return;
    if (l->para)
        lay_paraend(l);
    l->markup = on;
    l->col = 0;
    o->nmarkup += on ? 1 : -1;
}

void omlomclset(oml *o, bool on)
{
    bool was = o->lays->markup;
    omlomclsetweak(o, on);
    if (on && !was)
        io_put(&o->lays->io, "{omcl}\n", 7);
}

int32_t omlcolumn(const oml *o)
{
    return lay_column(o->lays) + 1;
}

void omlflush(oml *o)
{
    for (layout *l = o->lays; l; l = l->next)
        io_flush(&l->io);
}

bool oml_rawstate(const oml *o)
{
    return o->raw;
}

bool oml_wantstyle(const oml *o, uint8_t color)
{
    return o->style != color && !o->nframe && (o->nmarkup || o->lays->color);
}

void oml_endpara(oml *o)
{
    for (layout *l = o->lays; l; l = l->next)
        if (l->para) {
            lay_paraend(l);
            l->eatnl = false;
        }
}

void oml_atprompt(oml *o)
{
    oml_endpara(o);
    o->lines = 0;
}

// A prompt is printed: whoever answers ends the line, so what comes next begins a new one.
void oml_awaitline(oml *o)
{
    o->lays->col = 0;
}

// ---- attached logs
static int32_t addlog(oml *o, int32_t fd, bool markup, int32_t width)
{
    layout *l = newlayout(o);
    if (!l)
        return -1;
    l->io.fd = fd;
    l->io.log = true;
    l->markup = markup;
    l->width = std::clamp(width, 40, 255);
    l->id = ++o->nextid;
    layout **at = &o->lays->next;
    while (*at)
        at = &(*at)->next;
    *at = l;
    return l->id;
}
int32_t omlset_log_output(oml *o, int32_t fd, int32_t width)
{
    return addlog(o, fd, false, width);
}
int32_t omlset_log_input(oml *o, int32_t fd)
{
    int32_t id = addlog(o, fd, true, 79);
    if (id < 0)
        return id;
    bool fresh = lseek(fd, 0, SEEK_END) <= 0; // a log that goes on has its mark already
    o->nmarkup++;
    for (layout *l = o->lays; l; l = l->next)
        if (l->id == id)
            io_put(&l->io, fresh ? "{omcl}\n{txt}" : "{txt}", fresh ? 12 : 5);
    o->style = ST_TXT;
    return id;
}

static layout *findlog(const oml *o, int32_t id)
{
    for (layout *l = o->lays->next; l; l = l->next)
        if (l->id == id)
            return l;
    return nullptr;
}
void omllog_pause(oml *o, int32_t id, bool pause)
{
    if (layout *l = findlog(o, id))
        l->paused = pause;
}
void omllog_widths(oml *o, int32_t width)
{
    for (layout *l = o->lays->next; l; l = l->next)
        l->width = std::clamp(width, 40, 255);
}
int32_t omllog_err(const oml *o, int32_t id)
{
    const layout *l = findlog(o, id);
    return l ? l->io.err : 0;
}
int32_t omllog_close(oml *o, int32_t id)
{
    for (layout **at = &o->lays->next; layout *l = *at; at = &l->next) {
        if (l->id != id)
            continue;
        if (l->para)
            lay_paraend(l);
        io_flush(&l->io);
        int32_t err = l->io.err;
        *at = l->next;
        o->nmarkup -= l->markup;
        freelayout(l);
        return err;
    }
    return 0;
}
int32_t oml_query_log_err(const oml *o)
{
    for (const layout *l = o->lays->next; l; l = l->next)
        if (l->io.err)
            return l->io.err;
    return 0;
}

// ---- what the scanner does to every layout
static void all_text(oml *o, const char *p, size_t n)
{
    for (layout *l = o->lays; l; l = l->next)
        if (!l->markup && !l->paused)
            lay_text(l, p, n);
}
static void all_newline(oml *o)
{
    for (layout *l = o->lays; l; l = l->next)
        if (!l->markup && !l->paused)
            lay_newline(l);
}
static void log_markup(oml *o, const char *p, size_t n)
{
    if (o->nmarkup && n)
        for (layout *l = o->lays; l; l = l->next)
            if (l->markup && !l->paused)
                io_put(&l->io, p, n);
}
static void log_raw(oml *o, const char *p, size_t n)
{
    if (!o->nmarkup)
        return;
    const char *end = p + n;
    while (p < end) {
        const char *q = p;
        while (q < end && *q != '{' && *q != '}')
            q++;
        log_markup(o, p, size_t(q - p));
        if (q < end)
            log_markup(o, *q == '{' ? "{c -(}" : "{c )-}", 6);
        p = q < end ? q + 1 : q;
    }
}

static void rawlines(oml *o, const char *p, size_t n)
{
    const char *end = p + n;
    while (p < end) {
        auto q = static_cast<const char *>(memchr(p, '\n', size_t(end - p)));
        if (!q)
            q = end;
        if (q > p)
            all_text(o, p, size_t(q - p));
        if (q < end) {
            while (o->nframe)
                o->style = o->frame[--o->nframe].style;
            o->deep = 0;
            if (o->eatnl)
                o->eatnl = false;
            else
                all_newline(o);
            q++;
        }
        p = q;
    }
}

// An unfinished tag that will not be finished becomes text.
static void dropping(oml *o)
{
    if (!o->npend)
        return;
    size_t n = o->npend;
    o->npend = 0;
    log_raw(o, o->buf1, n);
    rawlines(o, o->buf1, n);
}

int32_t omlsendrawn(oml *o, const char *text, size_t n)
{
    o->raw = true;
    dropping(o);
    rawlines(o, text, n);
    log_raw(o, text, n);
    o->raw = false;
    return stopflag;
}
int32_t omlsendraw(oml *o, const char *text)
{
    return omlsendrawn(o, text, strlen(text));
}

void omltyped(oml *o, const char *line, bool onscreen)
{
    layout *l = o->lays;
    l->paused = true;
    omlsendraw(o, line);
    omlsendraw(o, "\n");
    l->paused = false;
    o->lines = 0;
    if (onscreen)
        l->col = 0;
}

// Sends to some of the layouts, the others being paused. What the mark-up leaves open ends with
// it: for those who did not see it nothing has happened.
template <class Whom> static int32_t send_to(oml *o, const char *markup, Whom whom)
{
    dropping(o);
    struct {
        uint8_t style;
        int32_t nframe, deep, p2[4], synw;
        omlframe frame[omlmaxframe];
        bool syntab, eatnl;
    } was;
    was.style = o->style;
    was.nframe = o->nframe;
    was.deep = o->deep;
    was.synw = o->synw;
    was.syntab = o->syntab;
    was.eatnl = o->eatnl;
    memcpy(was.p2, o->p2, sizeof was.p2);
    memcpy(was.frame, o->frame, sizeof was.frame);
    for (layout *l = o->lays; l; l = l->next) {
        l->waspaused = l->paused;
        l->paused = !whom(l);
    }
    o->nframe = o->deep = 0;
    o->eatnl = false;
    omlsend(o, markup);
    dropping(o);
    for (layout *l = o->lays; l; l = l->next)
        l->paused = l->waspaused;
    o->style = was.style;
    o->nframe = was.nframe;
    o->deep = was.deep;
    o->synw = was.synw;
    o->syntab = was.syntab;
    o->eatnl = was.eatnl;
    memcpy(o->p2, was.p2, sizeof was.p2);
    memcpy(o->frame, was.frame, sizeof was.frame);
    return stopflag;
}

int32_t omlsendscreen(oml *o, const char *markup)
{
    return send_to(o, markup, [](const layout *l) { return l->main; });
}
int32_t omlsendlog(oml *o, int32_t id, const char *markup)
{
    return send_to(o, markup, [=](const layout *l) { return l->id == id && !l->main; });
}

// ---- the scanner
static inline bool namechar(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '.';
}

// The head of a tag at p (behind its brace): name, arguments, and where the head ends.
struct taghead {
    omltext_t name, args;
    const char *end; // the closing brace or the colon
    bool body;
};
enum scanres { TAG_NO, TAG_MORE, TAG_YES };
static scanres readhead(const char *p, const char *end, taghead *h)
{
    const char *q = p;
    if (q < end && *q == '&') { // {&name}
        q++;
        h->name = {p, 1};
        const char *a = q;
        while (q < end && (namechar(*q)))
            q++;
        h->args = {a, size_t(q - a)};
        h->end = q;
        h->body = false;
        return q == end ? TAG_MORE : *q == '}' && q > a ? TAG_YES : TAG_NO;
    }
    while (q < end && namechar(*q))
        q++;
    h->name = {p, size_t(q - p)};
    if (q == end)
        return q - p > 40 ? TAG_NO : TAG_MORE;
    if (q == p)
        return TAG_NO;
    const char *a = *q == ' ' ? q + 1 : q;
    bool chars = h->name.n == 1 && *p == 'c';
    if (*q != ' ' && *q != ':' && *q != '}')
        return TAG_NO;
    for (q = a;; q++) {
        if (q == end)
            return TAG_MORE;
        if (*q == '}' || (*q == ':' && !chars))
            break;
        if (*q == '\n' || *q == '{')
            return TAG_NO;
        if (*q == '"' && !chars) {
            const char *r = q + 1;
            while (r < end && *r != '"' && *r != '\n')
                r++;
            if (r == end)
                return TAG_MORE;
            if (*r == '"')
                q = r;
        }
    }
    h->args = {a, size_t(q - a)};
    while (h->args.n && h->args.p[h->args.n - 1] == ' ')
        h->args.n--;
    h->end = q;
    h->body = *q == ':';
    return TAG_YES;
}

// Behind the text of a tag: its closing brace, or the end of its line; null when unfinished.
static const char *bodyend(const char *p, const char *end)
{
    int32_t open = 1;
    for (; p < end; p++) {
        if (*p == '\n')
            return p;
        if (*p == '{')
            open++;
        if (*p == '}' && --open == 0)
            return p;
    }
    return nullptr;
}

static void pushframe(oml *o, uint8_t style, char close, const char *after)
{
    if (o->nframe == omlmaxframe) {
        o->deep++;
        return;
    }
    o->frame[o->nframe++] = {style, close, after};
}

static void popframe(oml *o)
{
    if (o->deep) {
        o->deep--;
        return;
    }
    if (!o->nframe) {
        all_text(o, "}", 1);
        return;
    }
    omlframe f = o->frame[--o->nframe];
    if (f.close)
        all_text(o, &f.close, 1);
    if (f.after)
        oml_scan(o, f.after, strlen(f.after), false);
    o->style = f.style;
}

// Handles the tag at p. Returns the position behind it, p when it is no tag, null when its end
// is still to come.
static const char *dotag(oml *o, const char *p, const char *end)
{
    taghead h;
    scanres r = readhead(p + 1, end, &h);
    if (r != TAG_YES)
        return r == TAG_MORE ? nullptr : p;
    const omltag *t = oml_tag(h.name.p, h.name.n);
    if (!t) {
        all_text(o, p, size_t(h.end + 1 - p));
        if (h.body)
            pushframe(o, o->style, '}', nullptr);
        return h.end + 1;
    }
    if (t->form == OF_WHOLE && h.body) {
        const char *b = h.end + 1, *e = bodyend(b, end);
        if (!e)
            return nullptr;
        omltext_t body = {b, size_t(e - b)};
        uint8_t was = o->style;
        t->run(o, t, h.args, &body);
        o->style = was;
        return *e == '}' ? e + 1 : e;
    }
    omltext_t none = {h.end, 0};
    uint8_t was = o->style;
    if (!t->run(o, t, h.args, h.body ? &none : nullptr))
        return p;
    if (h.body)
        pushframe(o, was, 0, nullptr);
    else if (t->form != OF_STYLE)
        o->style = was;
    return h.end + 1;
}

static size_t scanrun(oml *o, const char *p, size_t n, bool top)
{
    const char *begin = p, *end = p + n;
    while (p < end) {
        const char *q = p;
        while (q < end && *q != '{' && *q != '}' && *q != '\n')
            q++;
        if (q > p)
            all_text(o, p, size_t(q - p));
        if (q == end)
            return n;
        p = q;
        if (*p == '}') {
            popframe(o);
            p++;
            continue;
        }
        if (*p == '\n') {
            rawlines(o, p, 1);
            p++;
            continue;
        }
        // How long a tag may be does not depend on the pieces it comes in: the mark-up log holds
        // other pieces and must read the same.
        q = dotag(o, p, end - p > ptrdiff_t(omlbuflen) ? p + omlbuflen : end);
        if (!q && top && end - p < ptrdiff_t(omlbuflen))
            return size_t(p - begin); // wait for the rest
        if (!q || q == p) {
            all_text(o, p, 1);
            q = p + 1;
        }
        p = q;
    }
    return n;
}

void oml_scan(oml *o, const char *p, size_t n, bool top)
{
    if (scandepth >= maxdepth) {
        rawlines(o, p, n);
        return;
    }
    scandepth++;
    int32_t base = o->nframe;
    scanrun(o, p, n, top);
    while (o->nframe > base)
        o->style = o->frame[--o->nframe].style;
    scandepth--;
}

int32_t omlsend(oml *o, const char *markup)
{
    size_t n = strlen(markup);
    std::string joined;
    if (o->npend) {
        joined.assign(o->buf1, o->npend);
        joined.append(markup, n);
        o->npend = 0;
        markup = joined.data();
        n = joined.size();
    }
    scandepth++;
    size_t used = scanrun(o, markup, n, true);
    scandepth--;
    log_markup(o, markup, used);
    if (used < n) {
        o->npend = n - used;
        memcpy(o->buf1, markup + used, o->npend);
    }
    return stopflag;
}

oml *omlsend_genascii_begin(int32_t width, bool marks, oml_userfn fn, void *arg)
{
    oml *o = omlopen(OML_PLAIN);
    if (!o)
        return nullptr;
    omlset_maxwidth(o, width);
    omlset_user(o, fn, arg);
    if (marks)
        o->lays->color = COL_MARKS;
    o->utf8 = marks;
    return o;
}
int32_t omlsend_genascii(oml *o, const char *markup)
{
    return omlsend(o, markup);
}
int32_t omlsend_genascii_raw(oml *o, const char *text)
{
    return omlsendraw(o, text);
}

// ---- measuring
// A record for each depth: a tag that measures may stand inside a text that is measured.
static int32_t collect(const char *text, size_t n, void *arg)
{
    static_cast<std::string *>(arg)->append(text, n);
    return 0;
}
static oml *measurer()
{
    static oml *record[maxdepth + 2];
    oml *&o = record[std::min(scandepth, maxdepth + 1)];
    if (!o)
        o = newrecord(OML_PLAIN);
    if (!o)
        return nullptr;
    omlreinitialize(o);
    o->lays->width = 1 << 20;
    o->lays->io.n = 0;
    return o;
}

std::string omltext(const char *markup)
{
    std::string out;
    oml *o = measurer();
    if (!o)
        return out;
    omlset_user(o, collect, &out);
    o->lays->width = nestedopen ? 79 : 1 << 20;
    omlsend(o, markup);
    dropping(o);
    if (o->lays->para)
        lay_paraend(o->lays);
    io_flush(&o->lays->io);
    omlset_user(o, nullptr, nullptr);
    return out;
}

int32_t lenofomcl(const char *markup)
{
    oml *o = measurer();
    if (!o)
        return int32_t(strlen(markup));
    omlsend(o, markup);
    dropping(o);
    int32_t n = lay_column(o->lays);
    o->lays->io.n = 0;
    return n;
}
