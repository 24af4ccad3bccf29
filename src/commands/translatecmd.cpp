// commands/translatecmd.cpp - translate, translator, transmap.
//
//   translate FILE FILE [, translator(NAME) replace PARAMETER(VALUE) ...]
//   translator query [NAME] | set NAME PARAMETER VALUE | reset NAME
//   transmap query [.EXT] | define .EXT .EXT NAME
//
// A translator is a row: what it reads, what it makes. Its parameters are rows, too, each for the
// kinds it makes sense for; what was set of them stays for the session.
#include "core/files.h"
#include "core/numtext.h"
#include "core/rc.h"
#include "core/settings.h"
#include "core/text.h"
#include "interp/interp.h"
#include "interp/messages.h"
#include "output/print.h"
#include "output/translate.h"
#include <cctype>
#include <cstring>
#include <string>
#include <vector>

using str = std::string;

namespace
{

enum : uint8_t { K_TEXT = 1, K_HTML = 2, K_PAGE = 4 };
struct translator_t {
    const char *name;
    bool markup;
    trans_kind kind;
};
constexpr translator_t translators[] = {
    {"omcl2txt", true, TR_TEXT}, {"omcl2log", true, TR_TEXT}, {"omcl2html", true, TR_HTML},
    {"omcl2ps", true, TR_PS},    {"omcl2pdf", true, TR_PDF},  {"txt2html", false, TR_HTML},
    {"txt2ps", false, TR_PS},    {"txt2pdf", false, TR_PDF},  {"log2html", false, TR_HTML},
    {"log2ps", false, TR_PS},    {"log2pdf", false, TR_PDF},
};
constexpr size_t ntrans = std::size(translators);

struct param_t {
    const char *name;
    uint8_t kinds;
    const char *standard; // with choices the first of them
    double low, high;     // a number between them; both 0: one of choices, or any text
    const char *choices;
    const char *unit;
};
enum {
    P_LINESIZE,
    P_TITLE,
    P_FONTSIZE,
    P_PAGESIZE,
    P_WIDTH,
    P_HEIGHT,
    P_ORIENT,
    P_LEFT,
    P_RIGHT,
    P_TOP,
    P_BOTTOM,
    P_HEADER
};
constexpr param_t params[] = {
    {"linesize", K_TEXT | K_HTML | K_PAGE, "present", 40, 255, nullptr, "columns"},
    {"title", K_HTML | K_PAGE, "", 0, 0, nullptr, "the file's name when empty"},
    {"fontsize", K_PAGE, "9", 1, 40, nullptr, "points"},
    {"pagesize", K_PAGE, "letter", 0, 0, "letter|legal|a4|custom", nullptr},
    {"pagewidth", K_PAGE, "8.5", 1, 50, nullptr, "inches"},
    {"pageheight", K_PAGE, "11", 1, 50, nullptr, "inches"},
    {"orientation", K_PAGE, "portrait", 0, 0, "portrait|landscape", nullptr},
    {"lmargin", K_PAGE, "1", 0, 20, nullptr, "inches"},
    {"rmargin", K_PAGE, "1", 0, 20, nullptr, "inches"},
    {"tmargin", K_PAGE, "1", 0, 20, nullptr, "inches"},
    {"bmargin", K_PAGE, "1", 0, 20, nullptr, "inches"},
    {"header", K_PAGE, "on", 0, 0, "on|off", nullptr},
};
constexpr size_t nparam = std::size(params);
using values = str[nparam];

values *kept(size_t t)
{
    static values all[ntrans];
    static bool made;
    if (!made)
        for (values &v : all)
            for (size_t p = 0; p < nparam; p++)
                v[p] = params[p].standard;
    made = true;
    return &all[t];
}

uint8_t kind_bit(trans_kind k)
{
    return k == TR_TEXT ? K_TEXT : k == TR_HTML ? K_HTML : K_PAGE;
}
bool takes(size_t t, size_t p)
{
    return params[p].kinds & kind_bit(translators[t].kind);
}

int32_t find_translator(const str &name, size_t *t)
{
    for (*t = 0; *t < ntrans; ++*t)
        if (name == translators[*t].name)
            return 0;
    return errout(RC_NOTFOUND, "translator %s not found\n", name.c_str());
}

bool among(const char *choices, const str &word)
{
    str all = str("|") + choices + "|";
    return !word.empty() && all.find("|" + word + "|") != str::npos;
}

int32_t set_param(size_t t, const str &name, const str &value, values *v)
{
    size_t p = 0;
    while (p < nparam && !(name == params[p].name && takes(t, p)))
        p++;
    if (p == nparam)
        return errout(RC_SYNTAX, "%s is no parameter of translator %s\n", name.c_str(),
                      translators[t].name);
    const param_t &row = params[p];
    double z;
    bool good = row.choices    ? among(row.choices, value)
                : row.high > 0 ? value == row.standard ||
                                     (!cnvstoz(value.c_str(), &z) && z >= row.low && z <= row.high)
                               : true;
    if (!good)
        return errout(RC_SYNTAX, "%s invalid; %s\n", value.c_str(),
                      row.choices ? row.choices : "out of range");
    (*v)[p] = value;
    if (p == P_WIDTH || p == P_HEIGHT)
        (*v)[P_PAGESIZE] = "custom";
    return 0;
}

double number(const values &v, size_t p)
{
    double z = 0;
    return cnvstoz(v[p].c_str(), &z) ? 0 : z;
}

int32_t make_how(size_t t, const values &v, const str &from, trans_how *how)
{
    how->kind = translators[t].kind;
    how->markup = translators[t].markup;
    how->width = v[P_LINESIZE] == "present" ? set_linesize : int32_t(number(v, P_LINESIZE));
    how->title = v[P_TITLE].empty() ? path_last(from) : v[P_TITLE];
    how->header = v[P_HEADER] == "on";
    how->fontsize = number(v, P_FONTSIZE);
    const str &size = v[P_PAGESIZE];
    how->pagewidth = size == "a4" ? 210 / 25.4 : size == "custom" ? number(v, P_WIDTH) : 8.5;
    how->pageheight = size == "a4"       ? 297 / 25.4
                      : size == "custom" ? number(v, P_HEIGHT)
                      : size == "legal"  ? 14
                                         : 11;
    if (v[P_ORIENT] == "landscape")
        std::swap(how->pagewidth, how->pageheight);
    how->left = number(v, P_LEFT);
    how->right = number(v, P_RIGHT);
    how->top = number(v, P_TOP);
    how->bottom = number(v, P_BOTTOM);
    if (how->kind >= TR_PS && (how->left + how->right + 0.5 > how->pagewidth ||
                               how->top + how->bottom + 0.5 > how->pageheight))
        return errout(RC_SYNTAX, "margins leave no room on the page\n");
    return 0;
}

// ---- which translator goes between two kinds of file
struct maprow {
    str from, to, translator;
};
std::vector<maprow> &mapping()
{
    static std::vector<maprow> rows = {
        {".omcl", ".txt", "omcl2txt"},   {".omcl", ".log", "omcl2log"},
        {".omcl", ".html", "omcl2html"}, {".omcl", ".htm", "omcl2html"},
        {".omcl", ".ps", "omcl2ps"},     {".omcl", ".pdf", "omcl2pdf"},
        {".ovhlp", ".txt", "omcl2txt"},  {".ovhlp", ".html", "omcl2html"},
        {".ovhlp", ".ps", "omcl2ps"},    {".ovhlp", ".pdf", "omcl2pdf"},
        {".txt", ".html", "txt2html"},   {".txt", ".ps", "txt2ps"},
        {".txt", ".pdf", "txt2pdf"},     {".log", ".html", "log2html"},
        {".log", ".ps", "log2ps"},       {".log", ".pdf", "log2pdf"},
    };
    return rows;
}

str extension(const str &path)
{
    str last = path_last(path);
    size_t dot = last.rfind('.');
    str ext = dot == str::npos ? "" : last.substr(dot);
    for (char &c : ext)
        c = char(tolower(uint8_t(c)));
    return ext;
}

// ---- words of the line
str next_word()
{
    char buf[500];
    if (!ti_peektok_chr(tokinfo))
        return "";
    return ti_gettokfn(tokinfo, buf) ? "" : buf;
}
int32_t no_more()
{
    return ti_peektok_chr(tokinfo) ? error(RC_SYNTAX) : 0;
}

struct asked {
    str translator;
    bool replace = false;
    std::vector<std::pair<str, str>> set;
};
// , WORD WORD(VALUE) ...: the options of translate.
int32_t read_asked(asked *a)
{
    const char *tok = ti_gettok(tokinfo, prsestd);
    if (!*tok)
        return 0;
    if (strcmp(tok, ",") != 0)
        return error(RC_SYNTAX);
    while (*(tok = ti_gettok(tokinfo, prsestd))) {
        str word = tok_text(tok), value;
        bool has = ti_peektok_chr(tokinfo) == '(';
        if (has) {
            char *p = ti_wheretok(tokinfo);
            p += strspn(p, " ");
            char *end = pfindoutside(p + 1, ')');
            if (!*end)
                return required(")");
            value.assign(p + 1, end);
            size_t b = value.find_first_not_of(" \"`"), e = value.find_last_not_of(" \"'");
            value = b == str::npos ? "" : value.substr(b, e - b + 1);
            ti_settok(tokinfo, end + 1);
        }
        if (!has && cmdcmp(word.c_str(), "replace", 3))
            a->replace = true;
        else if (has && cmdcmp(word.c_str(), "translator", 1))
            a->translator = value;
        else if (has)
            a->set.emplace_back(word, value);
        else
            return errout(RC_SYNTAX, "option %s not allowed\n", word.c_str());
    }
    return 0;
}

void show_params(size_t t)
{
    const values &v = *kept(t);
    outlev_keep keep(1);
    spoutsml("{txt}\n{p2colset 5 20 22 2}{...}\n");
    for (size_t p = 0; p < nparam; p++) {
        if (!takes(t, p))
            continue;
        const param_t &row = params[p];
        spoutsmlf("{p2col:%s}{res}", row.name);
        spout21at(0, v[p].empty() ? "\"\"" : v[p].c_str());
        spoutsml("{txt}");
        if (row.choices)
            spoutsmlf("{space 2}%s", row.choices);
        else if (row.unit)
            spoutsmlf("{space 2}%s", row.unit);
        if (row.high > 0)
            spoutsmlf(", %g to %g", row.low, row.high);
        spoutsml("{p_end}\n");
    }
    spoutsml("{p2colreset}{...}\n");
}

int32_t translator_query()
{
    str name = next_word();
    if (int32_t rc = no_more())
        return rc;
    outlev_keep keep(1);
    if (name.empty()) {
        for (const translator_t &t : translators)
            spoutsmlf("{txt}    {ovata translator query %s:%s}\n", t.name, t.name);
        return stopflag;
    }
    size_t t;
    if (int32_t rc = find_translator(name, &t))
        return rc;
    show_params(t);
    return stopflag;
}

} // namespace

int32_t translatecmd(int32_t)
{
    str from = next_word(), to = next_word();
    if (from.empty() || to.empty())
        return error(RC_SYNTAX);
    asked a;
    int32_t rc = read_asked(&a);
    if (rc)
        return rc;
    if (a.translator.empty()) {
        str x = extension(from), y = extension(to);
        for (const maprow &row : mapping())
            if (row.from == x && row.to == y)
                a.translator = row.translator;
        if (a.translator.empty())
            return errout(RC_SYNTAX, "no translator from %s to %s; say which with translator()\n",
                          x.empty() ? "a file without extension" : x.c_str(),
                          y.empty() ? "one without" : y.c_str());
    }
    size_t t;
    if ((rc = find_translator(a.translator, &t)))
        return rc;
    values v;
    for (size_t p = 0; p < nparam; p++)
        v[p] = (*kept(t))[p];
    for (const auto &[name, value] : a.set)
        if ((rc = set_param(t, name, value, &v)))
            return rc;
    trans_how how;
    if ((rc = make_how(t, v, from, &how)) ||
        (rc = translate_file(from.c_str(), to.c_str(), a.replace, how)))
        return rc;
    return spout21fat(1, "(file %s written in %s format)\n", to.c_str(),
                      how.kind == TR_TEXT   ? "text"
                      : how.kind == TR_HTML ? "HTML"
                      : how.kind == TR_PS   ? "PostScript"
                                            : "PDF");
}

int32_t translatorcmd(int32_t)
{
    str what = next_word();
    if (what.empty() || cmdcmp(what.c_str(), "query", 1))
        return translator_query();
    bool set = what == "set";
    if (!set && what != "reset")
        return error(RC_SYNTAX);
    str name = next_word();
    size_t t;
    int32_t rc = find_translator(name, &t);
    if (rc)
        return rc;
    if (set) {
        str param = next_word(), value = next_word();
        return (rc = no_more()) ? rc : set_param(t, param, value, kept(t));
    }
    if ((rc = no_more()))
        return rc;
    for (size_t p = 0; p < nparam; p++)
        (*kept(t))[p] = params[p].standard;
    return 0;
}

int32_t transmapcmd(int32_t)
{
    str what = next_word();
    std::vector<maprow> &rows = mapping();
    if (what == "define") {
        maprow row;
        row.from = next_word();
        row.to = next_word();
        row.translator = next_word();
        size_t t;
        if (row.from[0] != '.' || row.to[0] != '.' || ti_peektok_chr(tokinfo))
            return error(RC_SYNTAX);
        if (int32_t rc = find_translator(row.translator, &t))
            return rc;
        std::erase_if(rows, [&](const maprow &m) { return m.from == row.from && m.to == row.to; });
        rows.push_back(row);
        return 0;
    }
    if (!what.empty() && !cmdcmp(what.c_str(), "query", 1))
        return error(RC_SYNTAX);
    str ext = next_word();
    if (int32_t rc = no_more())
        return rc;
    outlev_keep keep(1);
    for (const maprow &m : rows)
        if (ext.empty() || m.from == ext)
            spout21f("    %-8s to %-8s %s\n", m.from.c_str(), m.to.c_str(), m.translator.c_str());
    return stopflag;
}
