#include "stats/coefrows.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "data/variables.h"
#include "expr/strfun.h"
#include <cstring>

static constexpr int32_t labelwidth = 12;

static std::string abbreviated(const std::string &s, int32_t width)
{
    char out[246];
    if (int32_t(s.size()) <= width)
        return s;
    str_abbrev(out, s.c_str(), width < 5 ? 5 : width);
    return out;
}

static std::string level_text(const termpart &p, bool labels)
{
    char text[81];
    int32_t var = labels ? sysfindvar(p.name) : 0;
    const vltable *table = var && *_lbllist[var - 1] ? vlfind(_lbllist[var - 1]) : nullptr;
    if (table && vlfindval(table, p.level, text, 80) >= 0 && *text)
        return text;
    return std::to_string(p.level);
}

std::string coefrow_levels(const termname &t, bool labels, int32_t width)
{
    std::vector<std::string> words;
    size_t total = 0;
    for (int32_t i = 0; i < t.n; i++)
        if (t.part[i].kind == TP_LEVEL) {
            words.push_back(level_text(t.part[i], labels));
            total += words.back().size() + 1;
        }
    int32_t n = int32_t(words.size());
    std::string s;
    for (std::string &w : words) {
        bool cut = int32_t(total) - 1 > width;
        s += (s.empty() ? "" : "#") + (cut ? abbreviated(w, (width - n + 1) / n) : w);
    }
    return s;
}

// Parts of the heading on lines of their own where they do not fit on one.
static std::vector<std::string> heading_of(const termname &t)
{
    std::vector<std::string> lines;
    for (int32_t i = 0; i < t.n; i++) {
        const termpart &p = t.part[i];
        std::string ops = (p.kind == TP_CONT ? "c" : "") + ts_text(p.ts);
        std::string w = ops + (ops.empty() ? "" : ".") + p.name + (i + 1 < t.n ? "#" : "");
        w = abbreviated(w, labelwidth);
        if (!lines.empty() && lines.back().size() + w.size() <= size_t(labelwidth))
            lines.back() += w;
        else
            lines.push_back(w);
    }
    return lines;
}

static std::string key_of(const termname &t)
{
    std::string s;
    for (int32_t i = 0; i < t.n; i++)
        s += std::string(t.part[i].kind == TP_LEVEL ? "#i" : "#c") + ts_text(t.part[i].ts) + "." +
             t.part[i].name;
    return s;
}

static bool has_levels(const termname &t)
{
    for (int32_t i = 0; i < t.n; i++)
        if (t.part[i].kind == TP_LEVEL)
            return true;
    return false;
}

coefrow coefrow_of(const umatname &name, bool zero, bool labels)
{
    coefrow r;
    termname t;
    r.label = abbreviated(name.name, labelwidth);
    r.what = zero ? CR_OMITTED : CR_PLAIN;
    if (!strchr(name.name, '.') || !term_read(name.name, &t))
        return r;
    bool base = false;
    for (int32_t i = 0; i < t.n; i++)
        base |= (t.part[i].marks & TM_BASE) != 0;
    if (term_isomitted(t) || zero)
        r.what = name.info & UN_EMPTY ? CR_EMPTY : base ? CR_BASE : CR_OMITTED;
    if (!term_hasfactor(t)) {
        for (int32_t i = 0; i < t.n; i++)
            t.part[i].marks = 0;
        r.label = abbreviated(term_write(t), labelwidth);
        return r;
    }
    r.factor = true;
    r.key = key_of(t);
    if (has_levels(t)) {
        r.heading = heading_of(t);
        r.label = coefrow_levels(t, labels, labelwidth - 1) + " ";
    } else { // a power or a product: its name in lines, the numbers beside the last
        r.heading = heading_of(t);
        r.label = r.heading.back();
        r.heading.pop_back();
    }
    return r;
}
