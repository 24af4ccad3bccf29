// commands/usesave.cpp - use and save.
//
//   use FILE [if] [in] [, clear nolabel]
//   use [varlist] [if] [in] using FILE [, clear nolabel]
//   save [FILE] [, replace nolabel orphans oldformat all emptyok]
//
// The names, the condition and the range of use belong to the file, so its line is taken
// apart here and each part is parsed when what it speaks of is known.
#include "commands/filevars.h"
#include "core/files.h"
#include "core/rc.h"
#include "core/state.h"
#include "core/text.h"
#include "data/dsa.h"
#include "data/dtafile.h"
#include "data/dtafmt.h"
#include "expr/parse.h"
#include "interp/macros.h"
#include "interp/messages.h"
#include "output/print.h"
#include "stats/results.h"
#include <cctype>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

int32_t use(int32_t);
int32_t save(int32_t);

namespace {

struct useline {
    std::string vars, quals, opts;
    char file[500];
};

// Calls on each word outside quotes and brackets; stops where fn says so. Returns the place
// of that word, or the end.
template <class F> char *walk(char *p, F fn)
{
    for (bool open = false; *p;) {
        if (*p == '"')
            p = psimplequotes(p, &open);
        else if (*p == '`' && p[1] == '"')
            p = pcompoundquotes(p, &open);
        else if (*p == '(' || *p == '[')
            p = pbrackets(p, &open);
        else if (*p == ',' || isalpha(uint8_t(*p)) || *p == '_') {
            char *q = p + 1;
            while (*p != ',' && (isalnum(uint8_t(*q)) || *q == '_' || *q == '.'))
                q++;
            if (fn(p, size_t(q - p)))
                return p;
            p = q;
        } else
            p++;
        if (open)
            return p + strlen(p);
    }
    return p;
}

bool is(const char *p, size_t n, const char *w) { return n == strlen(w) && !memcmp(p, w, n); }

int32_t split(char *line, useline *u)
{
    char *using_ = walk(line, [](char *p, size_t n) { return is(p, n, "using") || *p == ','; });
    char *rest = line;
    auto quals = [](char *p, size_t n) { return is(p, n, "if") || is(p, n, "in") || *p == ','; };
    if (*using_ && *using_ != ',') {
        char *q = walk(line, [&](char *p, size_t n) { return p >= using_ || quals(p, n); });
        u->vars.assign(line, size_t(q - line));
        u->quals.assign(q, size_t(using_ - q));
        rest = using_ + 5;
    }
    toktype ti;
    ti_settok(&ti, rest);
    int32_t rc = ti_gettokfn(&ti, u->file);
    if (rc)
        return error(rc);
    strcut(u->file, sizeof u->file, path_addext(u->file, ".dta").c_str());
    rest = ti.c_ptr;
    char *comma = walk(rest, [](char *p, size_t) { return *p == ','; });
    u->quals.append(" ").append(rest, size_t(comma - rest));
    u->opts = comma;
    return 0;
}

int32_t options(useline *u, bool *clear, bool *nolabel)
{
    toktype ti;
    ti_settok(&ti, u->opts.data());
    parinfo->pi_vlist = parinfo->pi_if = parinfo->pi_in = parinfo->pi_exp = parinfo->pi_wgt =
        parinfo->pi_using = PI_NO;
    parinfo->pi_opts = PI_OK;
    int32_t rc = ti_pi_parse(&ti, parinfo);
    if (rc)
        return rc;
    *clear = ti_pi_findopt(&ti, parinfo, "clear", 5, 0);
    *nolabel = !ti_pi_findopt(&ti, parinfo, "label", 1, 1);
    return ti_pi_chkopt(&ti, parinfo);
}

// ---- variables of a file

int32_t file_vars(const useline *u, std::vector<uint8_t> *wanted)
{
    if (u->vars.find_first_not_of(' ') == std::string::npos)
        return 0;
    dtadict d;
    int32_t rc = dta_peek(u->file, &d);
    return rc ? rc : filevars_pick(&d, u->vars, wanted);
}

// ---- rows of a file

int32_t begin(void *arg, int32_t N)
{
    auto u = static_cast<useline *>(arg);
    toktype ti;
    ti_settok(&ti, u->quals.data());
    pi_allow_reset(parinfo);
    parinfo->pi_vlist = parinfo->pi_exp = parinfo->pi_wgt = parinfo->pi_using =
        parinfo->pi_opts = PI_NO;
    parinfo->pi_if = parinfo->pi_in = PI_OK;
    // f, l and negative numbers count from the file's rows.
    int32_t was = _Nobs;
    _Nobs = N;
    int32_t rc = ti_parse1(&ti, parinfo);
    _Nobs = was;
    return rc;
}

bool keep(void *, int32_t obs, int32_t filerow)
{
    if (filerow < parinfo->pi_obs1 || filerow > parinfo->pi_obs2)
        return false;
    nobss1 = 1;
    nobss2 = obs;
    return selobs(obs);
}

int32_t remember(const char *file)
{
    int32_t rc = macresave("S_FN", file);
    return rc ? rc : macresave("S_FNDATE", dta_stamp);
}

}  // namespace

int32_t use(int32_t)
{
    useline u;
    bool clear, nolabel;
    std::vector<uint8_t> wanted;
    std::string line = ti_wheretok(tokinfo);
    int32_t rc;
    if ((rc = split(line.data(), &u)) || (rc = options(&u, &clear, &nolabel)))
        return rc;
    // An empty memory has nothing to lose, however it became empty.
    if (s_updata && !clear && (_i_Kvar > 0 || _Nobs > 0))
        return error(RC_DATACHANGED);
    if ((rc = file_vars(&u, &wanted)))
        return rc;
    dta_useopts o = {};
    o.nolabel = nolabel;
    o.arg = &u;
    if (u.quals.find_first_not_of(' ') != std::string::npos) {
        o.begin = begin;
        o.keep = keep;
    }
    if (!wanted.empty())
        o.wanted = wanted.data();
    rc = dta_use(u.file, &o);
    return rc ? rc : remember(u.file);
}

int32_t save(int32_t)
{
    char file[macrolen] = "";
    toktype *ti = tokinfo;
    char next = ti_peektok_chr(ti);
    int32_t rc;
    if (next && next != ',') {
        char given[500];
        if ((rc = ti_gettokfn(ti, given)))
            return error(rc);
        strcut(file, sizeof file, given);
    } else
        macuse("S_FN", file);
    size_t n = strlen(file);
    if (n < 1 || n > size_t(filenamelen) - 1)
        return error(RC_BADFILENAME);
    std::string path = path_addext(file, ".dta");
    parinfo->pi_vlist = parinfo->pi_if = parinfo->pi_in = parinfo->pi_exp = parinfo->pi_wgt =
        parinfo->pi_using = PI_NO;
    parinfo->pi_opts = PI_OK;
    if ((rc = ti_pi_parse(ti, parinfo)))
        return rc;
    dta_saveopts o = {};
    o.replace = ti_pi_findopt(ti, parinfo, "replace", 7, 0);
    o.label = ti_pi_findopt(ti, parinfo, "label", 1, 1);
    o.orphans = ti_pi_findopt(ti, parinfo, "orphans", 3, 0);
    o.oldformat = ti_pi_findopt(ti, parinfo, "oldformat", 3, 0);
    o.all = ti_pi_findopt(ti, parinfo, "all", 3, 0);
    o.emptyok = ti_pi_findopt(ti, parinfo, "emptyok", 7, 0);
    o.esample = *esamplename ? esamplename : nullptr;
    if ((rc = ti_pi_chkopt(ti, parinfo)))
        return rc;
    rc = dta_save(path.c_str(), &o);
    return rc ? rc : remember(path.c_str());
}
