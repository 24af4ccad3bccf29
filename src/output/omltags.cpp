// output/omltags.cpp - what the tags do.
#include "output/oml_int.h"
#include <algorithm>
#include <cstdlib>
#include <string_view>

#define EACH(o, call)                                                                              \
    for (layout *l = (o)->lays; l; l = l->next)                                                    \
        if (!l->markup && !l->paused)                                                              \
    call

using run_t = int32_t(oml *, const omltag *, omltext_t, const omltext_t *);

static void put(oml *o, omltext_t s)
{
    EACH(o, lay_text(l, s.p, s.n));
}
static void put(oml *o, const char *s)
{
    put(o, omltext_t{s, strlen(s)});
}

// Up to max numbers, separated by blanks. Returns how many there were.
static int32_t numbers(omltext_t s, int32_t *out, int32_t max)
{
    int32_t n = 0;
    for (size_t i = 0; i < s.n && n < max;) {
        if (s.p[i] == ' ') {
            i++;
            continue;
        }
        int32_t v = 0;
        size_t from = i;
        for (; i < s.n && s.p[i] >= '0' && s.p[i] <= '9'; i++)
            v = std::min(v * 10 + (s.p[i] - '0'), 9999);
        if (i == from)
            break;
        out[n++] = v;
    }
    return n;
}

// ---- styles
static int32_t t_color(oml *o, const omltag *t, omltext_t, const omltext_t *)
{
    o->style = uint8_t(t->arg);
    return 1;
}
static int32_t t_bits(oml *o, const omltag *t, omltext_t, const omltext_t *)
{
    o->style = t->arg ? uint8_t(o->style | t->arg) : uint8_t(o->style & ~(ST_BOLD | ST_ITALIC));
    return 1;
}
static int32_t t_under(oml *o, const omltag *, omltext_t args, const omltext_t *body)
{
    bool off = args.n == 3 && !memcmp(args.p, "off", 3);
    if (!body && !off && !(args.n == 2 && !memcmp(args.p, "on", 2)))
        return 0;
    o->style = off ? uint8_t(o->style & ~ST_UNDER) : uint8_t(o->style | ST_UNDER);
    return 1;
}
// {cmdab:short:rest}: the least abbreviation underlined.
static int32_t t_cmdab(oml *o, const omltag *, omltext_t, const omltext_t *body)
{
    if (!body)
        return 1;
    auto colon = static_cast<const char *>(memchr(body->p, ':', body->n));
    size_t k = colon ? size_t(colon - body->p) : body->n;
    o->style |= ST_BOLD | ST_UNDER;
    oml_scan(o, body->p, k, false);
    o->style &= uint8_t(~ST_UNDER);
    if (colon)
        oml_scan(o, colon + 1, body->n - k - 1, false);
    return 1;
}

// ---- layout
static int32_t t_p(oml *o, const omltag *, omltext_t args, const omltext_t *)
{
    int32_t a[4] = {0, 0, 0, 0};
    numbers(args, a, 4);
    EACH(o, lay_para(l, a[0], a[1], a[2], std::min(a[3], 9)));
    return 1;
}
static int32_t t_pend(oml *o, const omltag *, omltext_t, const omltext_t *)
{
    EACH(o, if (l->para) lay_paraend(l));
    return 1;
}
static int32_t t_hline(oml *o, const omltag *, omltext_t args, const omltext_t *)
{
    int32_t n = 0;
    bool given = numbers(args, &n, 1);
    if (!given || n)
        EACH(o, lay_hline(l, n));
    return 1;
}
static int32_t t_space(oml *o, const omltag *, omltext_t args, const omltext_t *)
{
    int32_t n = 1;
    numbers(args, &n, 1);
    EACH(o, lay_space(l, n));
    return 1;
}
static int32_t t_col(oml *o, const omltag *, omltext_t args, const omltext_t *)
{
    int32_t n = 1;
    numbers(args, &n, 1);
    EACH(o, lay_col(l, n));
    return 1;
}
static int32_t bodylen(const omltext_t *body)
{
    return lenofomcl(std::string(body->p, body->n).c_str());
}
static int32_t t_align(oml *o, const omltag *t, omltext_t args, const omltext_t *body)
{
    int32_t field = 0, len;
    if (!body)
        return 0;
    numbers(args, &field, 1);
    field = std::min(field, 255);
    len = bodylen(body);
    EACH(o, lay_align(l, char(t->arg), field, len));
    oml_scan(o, body->p, body->n, false);
    EACH(o, lay_alignend(l, char(t->arg), field, len));
    return 1;
}
static int32_t t_dup(oml *o, const omltag *, omltext_t args, const omltext_t *body)
{
    int32_t n = 1;
    if (!body)
        return 0;
    numbers(args, &n, 1);
    for (n = std::min(n, 255); n > 0; n--)
        oml_scan(o, body->p, body->n, false);
    return 1;
}
static int32_t t_break(oml *o, const omltag *, omltext_t, const omltext_t *)
{
    EACH(o, lay_break(l));
    return 1;
}
static int32_t t_newpage(oml *o, const omltag *, omltext_t, const omltext_t *)
{
    EACH(o, lay_newpage(l));
    return 1;
}
static int32_t t_joined(oml *o, const omltag *, omltext_t, const omltext_t *)
{
    o->eatnl = true;
    return 1;
}
static int32_t t_char(oml *o, const omltag *t, omltext_t args, const omltext_t *)
{
    char utf8[16], ascii[32];
    std::string_view name(args.p, args.n);
    if (t->arg || (args.n > 1 && *args.p == '&')) {
        if (!t->arg)
            name.remove_prefix(1);
        if (!oml_entity(name.data(), name.size(), utf8, ascii))
            return 0;
    } else if (!oml_char(args.p, args.n, utf8, ascii))
        return 0;
    EACH(o, {
        bool utf = l->main && o->utf8;
        const char *s = utf ? utf8 : ascii;
        int32_t cols = 0;
        for (const char *p = s; *p; p++)
            cols += (uint8_t(*p) & 0xc0) != 0x80;
        lay_glyph(l, s, strlen(s), cols);
    });
    return 1;
}
static int32_t t_say(oml *o, const omltag *t, omltext_t, const omltext_t *)
{
    put(o, t->text);
    return 1;
}

// ---- tables. A first column at ind1, a second at ind2, its further lines at ind3.
static void twocol(oml *o, const int32_t *a, const omltext_t *body)
{
    EACH(o, lay_para(l, a[0], a[2], a[3], 0));
    oml_scan(o, body->p, body->n, false);
    EACH(o, {
        if (lay_column(l) >= a[1]) { // a blank stands between the columns at least
            lay_break(l);
            l->indent = std::min(a[1], l->width - 8);
        }
        lay_col(l, a[1] + 1);
    });
}
static int32_t t_p2col(oml *o, const omltag *t, omltext_t args, const omltext_t *body)
{
    int32_t a[4];
    memcpy(a, o->p2, sizeof a);
    numbers(args, a, 4);
    a[0] = std::max(a[0] - t->arg, 0);
    omltext_t none = {"", 0};
    twocol(o, a, body ? body : &none);
    return 1;
}
static int32_t t_p2set(oml *o, const omltag *t, omltext_t args, const omltext_t *)
{
    static const int32_t standard[4] = {5, 22, 24, 2};
    memcpy(o->p2, standard, sizeof standard);
    if (!t->arg)
        numbers(args, o->p2, 4);
    return 1;
}
static void line(oml *o, int32_t indent, int32_t rmargin)
{
    EACH(o, {
        lay_paraend(l);
        l->eatnl = false;
        lay_col(l, indent + 1);
        lay_hline(l, std::max(l->width - indent - rmargin, 1));
        lay_break(l);
    });
}
static int32_t t_p2line(oml *o, const omltag *t, omltext_t args, const omltext_t *)
{
    int32_t a[2] = {o->p2[0], o->p2[3]};
    numbers(args, a, 2);
    line(o, std::max(a[0] - t->arg, 0), a[1]);
    return 1;
}
static int32_t t_synset(oml *o, const omltag *, omltext_t args, const omltext_t *)
{
    int32_t n = 20;
    numbers(args, &n, 1);
    o->synw = std::clamp(n, 4, 60);
    o->syntab = std::string_view(args.p, args.n).find("tabbed") != std::string_view::npos;
    return 1;
}
static void syncols(const oml *o, int32_t *a)
{
    a[0] = o->syntab ? 4 : 2;
    a[1] = a[0] + o->synw + 1;
    a[2] = a[1] + 2;
    a[3] = 0;
}
static int32_t t_synopt(oml *o, const omltag *, omltext_t, const omltext_t *body)
{
    int32_t a[4];
    if (!body)
        return 0;
    syncols(o, a);
    twocol(o, a, body);
    return 1;
}
static int32_t t_synline(oml *o, const omltag *, omltext_t, const omltext_t *)
{
    line(o, 2, 0);
    return 1;
}
static int32_t t_synhdr(oml *o, const omltag *t, omltext_t args, const omltext_t *body)
{
    int32_t a[4];
    static const omltext_t standard = {"{it:options}", 12};
    syncols(o, a);
    twocol(o, a, body ? body : &standard);
    put(o, "Description");
    EACH(o, lay_paraend(l));
    return t_synline(o, t, args, nullptr);
}
static int32_t t_syntab(oml *o, const omltag *, omltext_t, const omltext_t *body)
{
    if (!body)
        return 0;
    EACH(o, lay_para(l, 2, 2, 0, 0));
    oml_scan(o, body->p, body->n, false);
    EACH(o, lay_paraend(l));
    return 1;
}

// ---- links
static omltext_t unquoted(omltext_t s)
{
    while (s.n && (*s.p == '"' || *s.p == ' ')) {
        s.p++;
        s.n--;
    }
    while (s.n && (s.p[s.n - 1] == '"' || s.p[s.n - 1] == ' '))
        s.n--;
    return s;
}
static int32_t t_link(oml *o, const omltag *t, omltext_t args, const omltext_t *body)
{
    o->style |= ST_LINK;
    omltext_t shown = unquoted(args);
    if (!strcmp(t->name, "help")) {
        std::string_view s(shown.p, shown.n);
        s = s.substr(0, std::min(s.find("##"), s.find('|')));
        EACH(o, lay_linkmark(l, s.data(), s.size()));
    }
    if (body)
        return 1;
    if (t->arg || !shown.n)
        put(o, t->text ? t->text : t->name);
    else { // topic##marker|viewer: only the topic is read
        std::string_view s(shown.p, shown.n);
        if (t->form == OF_OPEN && !strcmp(t->name, "help"))
            s = s.substr(0, std::min(s.find("##"), s.find('|')));
        put(o, {s.data(), s.size()});
    }
    return 1;
}
// {manlink R regress} shows "[R] regress", {manhelp regress R:text} "[R] text".
static int32_t t_manual(oml *o, const omltag *t, omltext_t args, const omltext_t *body)
{
    std::string_view s(args.p, args.n);
    size_t blank = s.find(' ');
    std::string_view first = s.substr(0, blank),
                     rest = blank == s.npos ? std::string_view() : s.substr(blank + 1);
    bool helpform = *t->text == 'h';
    std::string_view book = helpform ? rest : first, word = helpform ? first : rest;
    o->style |= uint8_t(ST_LINK | t->arg);
    put(o, "[");
    put(o, {book.data(), book.size()});
    put(o, "] ");
    if (!body)
        put(o, {word.data(), word.size()});
    return 1;
}
static int32_t t_expand(oml *o, const omltag *t, omltext_t, const omltext_t *)
{
    oml_scan(o, t->text, strlen(t->text), false);
    return 1;
}

#define TAG(name, form, run, arg, text) {name, form, run, arg, text},
const omltag omltags[] = {
#include "output/omltags.def"
};
#undef TAG
const int32_t nomltags = int32_t(std::size(omltags));

// First letter to first row of a list by name, made once.
static int16_t *tagindex()
{
    static int16_t order[256 + std::size(omltags) + 1];
    static bool made;
    if (!made) {
        int16_t at = 256;
        for (int c = 0; c < 256; c++) {
            order[c] = at;
            for (int16_t i = 0; i < int16_t(std::size(omltags)); i++)
                if (uint8_t(*omltags[i].name) == c)
                    order[at++] = i;
        }
        order[at] = -1;
        made = true;
    }
    return order;
}
const omltag *oml_tag(const char *name, size_t n)
{
    const int16_t *order = tagindex();
    int c = uint8_t(*name);
    int to = c == 255 ? 256 + nomltags : order[c + 1];
    for (int i = order[c]; i < to; i++) {
        const omltag *t = &omltags[order[i]];
        if (!strncmp(t->name, name, n) && !t->name[n])
            return t;
    }
    return nullptr;
}
