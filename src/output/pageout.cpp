#include "output/pageout.h"
#include "output/oml.h"
#include <algorithm>
#include <cairo/cairo-pdf.h>
#include <cairo/cairo-ps.h>
#include <cstdio>
#include <dlfcn.h>

const char page_library[] = "libcairo.so.2";

// What is used of the library, by its own names.
#define TOOLS(X)                                                                                   \
    X(cairo_pdf_surface_create_for_stream)                                                         \
    X(cairo_ps_surface_create_for_stream)                                                          \
    X(cairo_create) X(cairo_destroy) X(cairo_surface_destroy) X(cairo_surface_finish)              \
        X(cairo_surface_status) X(cairo_show_page) X(cairo_show_text) X(cairo_move_to)             \
            X(cairo_line_to) X(cairo_stroke) X(cairo_set_line_width) X(cairo_set_source_rgb)       \
                X(cairo_select_font_face) X(cairo_set_font_size) X(cairo_text_extents)             \
                    X(cairo_status)
struct pagetools {
#define FIELD(name) decltype(&::name) name;
    TOOLS(FIELD)
#undef FIELD
};

static const pagetools *load()
{
    static pagetools tools;
    static bool tried, good;
    if (tried)
        return good ? &tools : nullptr;
    tried = true;
    void *lib = dlopen(page_library, RTLD_NOW | RTLD_LOCAL);
    if (!lib)
        return nullptr;
    good = true;
#define FIND(name)                                                                                 \
    tools.name = reinterpret_cast<decltype(&::name)>(dlsym(lib, #name));                           \
    good = good && tools.name;
    TOOLS(FIND)
#undef FIND
    return good ? &tools : nullptr;
}

static cairo_status_t write_bytes(void *arg, const unsigned char *data, unsigned int n)
{
    auto s = static_cast<bytesink *>(arg);
    s->put(reinterpret_cast<const char *>(data), n);
    return s->failed ? CAIRO_STATUS_WRITE_ERROR : CAIRO_STATUS_SUCCESS;
}

static inline cairo_t *pen(const pageout *p)
{
    return static_cast<cairo_t *>(p->cr);
}
static inline cairo_surface_t *sheet(const pageout *p)
{
    return static_cast<cairo_surface_t *>(p->surface);
}

pageout::pageout(const pagetools *t, int32_t fd, const trans_how &h) : lib(t), sink(fd), how(h)
{
    auto create = how.kind == TR_PDF ? lib->cairo_pdf_surface_create_for_stream
                                     : lib->cairo_ps_surface_create_for_stream;
    surface = create(write_bytes, &sink, how.pagewidth * 72, how.pageheight * 72);
    cr = lib->cairo_create(sheet(this));
    lib->cairo_select_font_face(pen(this), "monospace", CAIRO_FONT_SLANT_NORMAL,
                                CAIRO_FONT_WEIGHT_NORMAL);
    lib->cairo_set_font_size(pen(this), how.fontsize);
    cairo_text_extents_t e;
    lib->cairo_text_extents(pen(this), "M", &e);
    advance = e.x_advance > 0 ? e.x_advance : how.fontsize * 0.6;
    step = how.fontsize * 1.2;
    double room = (how.pageheight - how.top - how.bottom) * 72;
    lines = std::max(int32_t(room / step) - (how.header ? 2 : 0), 1);
}

pageout::~pageout()
{
    lib->cairo_destroy(pen(this));
    lib->cairo_surface_destroy(sheet(this));
}

std::unique_ptr<pageout> page_open(int32_t fd, const trans_how &how)
{
    const pagetools *t = load();
    return t ? std::make_unique<pageout>(t, fd, how) : nullptr;
}

int32_t page_columns(const pageout &p)
{
    return int32_t((p.how.pagewidth - p.how.left - p.how.right) * 72 / p.advance + 1e-6);
}

void pageout::text(uint8_t style, double x, double y, const std::string &s)
{
    uint8_t color = style & omlst_color;
    bool bold = (style & omlst_bold) || color == omlst_result || color == omlst_command;
    double red = color == omlst_error ? 0.7 : 0, blue = style & omlst_link ? 0.6 : 0;
    lib->cairo_set_source_rgb(pen(this), red, 0, blue);
    lib->cairo_select_font_face(pen(this), "monospace",
                                style & omlst_italic ? CAIRO_FONT_SLANT_ITALIC
                                                     : CAIRO_FONT_SLANT_NORMAL,
                                bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    lib->cairo_move_to(pen(this), x, y);
    lib->cairo_show_text(pen(this), s.c_str());
}

void pageout::drawhead()
{
    started = true;
    if (!how.header)
        return;
    char number[32];
    int n = snprintf(number, sizeof number, "%d", int(page));
    double y = how.top * 72 + how.fontsize, right = (how.pagewidth - how.right) * 72;
    std::string title;
    for (size_t i = 0, k; i < how.title.size(); i += k ? k : 1) {
        k = utf8_at(&how.title[i], how.title.size() - i);
        title += k ? how.title.substr(i, k) : "?";
    }
    text(0, how.left * 72, y, title);
    text(0, right - n * advance, y, number);
    lib->cairo_set_line_width(pen(this), 0.5);
    lib->cairo_move_to(pen(this), how.left * 72, y + step / 3);
    lib->cairo_line_to(pen(this), right, y + step / 3);
    lib->cairo_stroke(pen(this));
}

void pageout::run(uint8_t style, const std::string &, const char *p, size_t n)
{
    if (!started)
        drawhead();
    std::string s;
    int32_t from = col;
    for (const char *end = p + n; p < end;) {
        size_t k = utf8_at(p, size_t(end - p));
        if (*p == '\t') {
            do
                s += ' ', col++;
            while (col & 7);
        } else {
            k && (k > 1 || (uint8_t(*p) >= 32 && *p != 127)) ? s.append(p, k) : s.append("?");
            col++;
        }
        p += k ? k : 1;
    }
    double x = how.left * 72 + from * advance;
    double y = how.top * 72 + (line + (how.header ? 2 : 0)) * step + how.fontsize;
    text(style, x, y, s);
    if (style & omlst_under) {
        lib->cairo_set_line_width(pen(this), 0.5);
        lib->cairo_move_to(pen(this), x, y + how.fontsize * 0.15);
        lib->cairo_line_to(pen(this), x + (col - from) * advance, y + how.fontsize * 0.15);
        lib->cairo_stroke(pen(this));
    }
}

void pageout::lineend()
{
    if (!started)
        drawhead();
    col = 0;
    if (++line == lines)
        newpage();
}

void pageout::newpage()
{
    if (!started)
        return;
    lib->cairo_show_page(pen(this));
    line = col = 0;
    page++;
    started = false;
}

bool page_close(pageout &p)
{
    if (p.started || p.page == 1)
        p.lib->cairo_show_page(pen(&p));
    p.lib->cairo_surface_finish(sheet(&p));
    bool good = !p.lib->cairo_status(pen(&p)) && !p.lib->cairo_surface_status(sheet(&p));
    p.sink.flush();
    return good && !p.sink.failed;
}
