// commands/dsasyscmd.cpp - _dsasys: a look into the storage area, and hands on it.
#include "core/clock.h"
#include "core/numtext.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa_int.h"
#include "expr/parse.h"
#include "interp/interp.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/print.h"
#include "stats/results.h"
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <string>

int32_t _ti_dsasyscmd(int32_t);

namespace {

int32_t ended() { return *ti_gettok(tokinfo, prsestd) ? error(RC_SYNTAX) : 0; }

int32_t take_number(int64_t low, int64_t high, int64_t *n)
{
    double z;
    std::string word = ti_gettok(tokinfo, prsenum);
    if (word.empty())
        return required("number");
    if (cnvstoz(word.c_str(), &z) || z >= misval || z != double(int64_t(z)))
        return invalid(word.c_str());
    if (z < double(low) || z > double(high))
        return errout(RC_SYNTAX, "%s must be between %" PRId64 " and %" PRId64 "\n", word.c_str(),
                      low, high);
    *n = int64_t(z);
    return ended();
}

int32_t take_size(uint64_t *bytes)
{
    std::string word = ti_gettok(tokinfo, " ");
    if (dsa_sizetext(word.c_str(), bytes))
        return word.empty() ? required("size") : invalid(word.c_str());
    return ended();
}

int32_t refresh(int32_t rc)
{
    int32_t bad = dsa_fsa_update(sysdsa);
    return rc ? rc : bad;
}

int32_t do_downsize()
{
    int32_t rc = ended();
    return rc ? rc : dsa_downsize(sysdsa);
}

// ---- history

const char *event_text(int32_t event, char *buf)
{
    static const struct {
        int32_t code;
        const char *text;
    } rows[] = {
        {1, "hist_on"},        {2, "hist_off"},        {4, "init"},
        {5, "start begins"},   {6, "start successful"}, {7, "dsa reset noisy"},
        {11, "drop open"},     {12, "drop"},           {13, "drop close"},
        {14, "truncate S"},    {15, "Add S up to"},    {16, "Add S necs"},
        {17, "Add S des"},     {18, "adj width"},      {19, "adj S"},
        {20, "shutdown"},
    };
    for (auto &r : rows)
        if (r.code == event)
            return r.text;
    snprintf(buf, 24, "other %d", event);
    return buf;
}

void history_detail(const dsa_hist *h)
{
    spout21("\n   seq  event                    arg    width     S       _No_    lrec\n");
    for (int32_t i = 0; i < dsa_nhist && !stopflag; i++) {
        const dsa_histrec *r = &h->ring[(h->pos + i) % dsa_nhist];
        char buf[24];
        if (r->seq)
            spout21f("%6" PRIu64 "  %-16s %11" PRId64 " %8" PRIu64 " %5u %10u %7" PRIu64 "\n",
                     r->seq, event_text(r->event, buf), r->arg, r->width, r->S, r->No, r->lrec);
    }
}

struct counter {
    const char *result, *text;
    int64_t dsa_hist::*at;
};
const counter counters[] = {
    {"repart_wider_s", "repartitions wider", &dsa_hist::wider_s},
    {"repart_longer_s", "repartitions longer", &dsa_hist::longer_s},
    {"repart_wider_f", "repartitions wider, failed", &dsa_hist::wider_f},
    {"repart_longer_f", "repartitions longer, failed", &dsa_hist::longer_f},
    {"adjS_incr_s", "increases of S", &dsa_hist::incr_s},
    {"adjS_decr_s", "decreases of S", &dsa_hist::decr_s},
    {"adjS_incr_f", "increases of S, failed", &dsa_hist::incr_f},
    {"adjS_decr_f", "decreases of S, failed", &dsa_hist::decr_f},
};

int32_t do_history()
{
    bool detail = false, clear = false;
    for (;;) {
        const char *t = ti_gettok(tokinfo, prsestd);
        if (!*t)
            break;
        if (!strcmp(t, "detail"))
            detail = true;
        else if (!strcmp(t, "clear"))
            clear = true;
        else if (strcmp(t, ","))
            return error(RC_SYNTAX);
    }
    dsa_hist *h = &sysdsa->hist;
    retval_clear();
    for (const counter &c : counters) {
        spout21f("  %-28s %10" PRId64 "\n", c.text, h->*c.at);
        retval_set_gscalar(double(h->*c.at), c.result);
    }
    if (detail)
        history_detail(h);
    if (clear) {
        *h = {};
        h->on = true;
    }
    return 0;
}

// ---- query

void line(const char *name, uint64_t v) { spout21f("  %s=%" PRIu64 "\n", name, v); }
void line_size(const char *name, uint64_t v)
{
    char buf[24];
    spout21f("  %s=%s\n", name, sprint_memsize(buf, v));
}

void query_tune(const dsa_area *d)
{
    spout21("tune:\n");
    line_size("memory_min_goal", d->memory_min_goal);
    if (d->memory_max_goal)
        line_size("memory_max_goal", dsa_memory_max_goal_adj(d));
    else
        spout21("  memory_max_goal=.\n");
    line("memory_min_S", uint64_t(d->memory_min_S));
    line("memory_max_S", uint64_t(d->memory_max_S));
    line("K_max", d->K_max);
    line("_N_max", d->_N_max);
    line("pfull_up_trigger", uint64_t(d->pfull_up_trigger));
    line("pfull_up_target", uint64_t(d->pfull_up_target));
    line("pfull_dn_trigger", uint64_t(d->pfull_dn_trigger));
    line("niceness", uint64_t(d->niceness));
    spout21f("  waitsecs=%g\n", d->waitsecs);
    line_size("segsize_min", d->segsize_min);
    line_size("segsize_suggested", d->segsize_suggested);
    spout21f("  prelloacate=%d\n", d->preallocate);
    line("width_max", d->width_max);
    line("width_suggested", d->width_suggested);
    line("width_free_big", d->width_free_big);
}

void query_spec(const char *name, const dsa_tabspec *t)
{
    spout21f("  %s: min=%" PRIu64 " init=%" PRIu64 " max=%" PRIu64 " incr_amt=%" PRIu64
             " decr_threshold=%" PRIu64 "\n",
             name, t->min, t->init, t->max, t->incr_amt, t->decr_threshold);
}

void query_table(const dsa_area *d)
{
    spout21("table:\n");
    query_spec("vartab", &d->vartab);
    query_spec("segtab", &d->segtab);
    line("offset", d->offset_n);
    line("typ", d->typ_n);
    line("name", d->name_n);
    line("fmt", d->fmt_n);
    line("lbl", d->lbl_n);
    line("srt", d->srt_n);
    line("segment", d->segtab_n);
}

void query_data(const dsa_area *d)
{
    spout21("data:\n");
    line("K", d->K);
    line("_No_", d->_No_);
    line("lrec", d->lrec);
    line("width", d->width);
    line("n_per_S", d->n_per_S);
    line_size("segment_size", d->segment_size);
    line("S", d->S);
    spout21f("  spare=%s\n", d->spare ? "yes" : "no");
    line("fsa_blocks", d->fsa.nblock);
    char num[40];
    spout21f("  Up to %s observations\n", fmt_comma(num, dsa__N_max_calc(d, true) - 1.0));
}

void query_down(const dsa_area *d)
{
    spout21("down:\n");
    spout21f("  pending=%s\n", d->downsize_pending ? "yes" : "no");
    if (d->downsize_pending)
        spout21f("  elapsed=%.3f\n", clock_secs() - d->downsize_since);
    line("wanted", dsa_wanted_S(d));
}

int32_t do_query()
{
    static const struct {
        const char *word;
        void (*print)(const dsa_area *);
    } sections[] = {{"tune", query_tune}, {"table", query_table}, {"data", query_data},
                    {"down", query_down}};
    const dsa_area *d = sysdsa;
    std::string which = ti_gettok(tokinfo, prsestd);
    if (int32_t rc = ended())
        return rc;
    bool any = false;
    for (auto &s : sections)
        if (which.empty() || which == s.word) {
            s.print(d);
            any = true;
        }
    if (!any)
        return invalid(which.c_str());
    uint64_t most = dsa_memory_max_goal_adj(d);
    retval_clear();
    retval_set_gscalar(d->_N_max, "N_max");
    retval_set_gscalar(d->K_max, "K_max");
    retval_set_gscalar(double(d->niceness), "niceness");
    retval_set_gscalar(d->waitsecs, "waitsecs");
    retval_set_gscalar(double(d->segment_size), "segment_size");
    retval_set_gscalar(most ? double(most) : misval, "memory_max");
    retval_set_gscalar(double(d->width), "width");
    retval_set_gscalar(double(d->lrec), "lrec");
    retval_set_gscalar(d->n_per_S, "n_per_seg");
    retval_set_gscalar(d->_No_, "_N_");
    retval_set_gscalar(double(d->hist.wider_s), "n_repart_wide");
    retval_set_gscalar(double(d->hist.longer_s), "n_repart_long");
    retval_set_gscalar(double(d->hist.wider_s + d->hist.longer_s), "n_repart");
    retval_set_gscalar(d->fsa.nblock, "fsa_blocks");
    return 0;
}

int32_t do_probe()
{
    int32_t rc = ended();
    if (rc)
        return rc;
    uint32_t S = dsa_maxS_avbl(sysdsa);
    char size[24], total[24];
    spout21f("  segment_size=%s\n  S_max=%u\n  total=%s\n",
             sprint_memsize(size, sysdsa->segment_size), S,
             sprint_memsize(total, S * sysdsa->segment_size));
    retval_clear();
    retval_set_gscalar(double(sysdsa->segment_size), "segment_size");
    retval_set_gscalar(S, "S_max");
    return 0;
}

// ---- changes

int32_t do_Kmax()
{
    int64_t n;
    int32_t rc = take_number(0, INT32_MAX, &n);
    return rc ? rc : dsa_reset_K_max(sysdsa, n);
}

int32_t do_Nmax()
{
    int64_t n;
    int32_t rc = take_number(1, 2147483647, &n);
    if (rc)
        return rc;
    if (uint32_t(n) < sysdsa->_No_)
        return errout(RC_SYNTAX, "%u observations already exist\n", uint32_t(_Nobs));
    sysdsa->_N_max = uint32_t(n);
    return 0;
}

int32_t do_memory_max()
{
    uint64_t bytes;
    int32_t rc = take_size(&bytes);
    return rc ? rc : dsa_reset_memory_max_goal(sysdsa, bytes);
}

int32_t do_niceness()
{
    int64_t n;
    int32_t rc = take_number(INT32_MIN, INT32_MAX, &n);
    return rc ? rc : dsa_reset_niceness(sysdsa, n);
}

// The dataset goes; a size that cannot be had leaves the area with the one before.
int32_t do_restart()
{
    uint64_t bytes = sysdsa->segsize_suggested, was = bytes;
    if (ti_peektok_chr(tokinfo)) {
        int32_t rc = take_size(&bytes);
        if (rc)
            return rc;
    }
    drop_all();
    dsa_shutdown(sysdsa);
    sysdsa->segsize_suggested = bytes;
    int32_t rc = dsa_start(sysdsa);
    if (!rc)
        return 0;
    sysdsa->segsize_suggested = was;
    outlev_keep keep(3);
    spout21(dsa_start(sysdsa) ? "COULD NOT RESTART!\n" : "(restarted with original value)\n");
    return rc;
}

int32_t do_S()
{
    int64_t n;
    int32_t rc = take_number(1, int64_t(sysdsa->segtab.max), &n);
    return rc ? rc : refresh(dsa_sys_adjust_S(sysdsa, uint32_t(n)));
}

int32_t do_width()
{
    int64_t n;
    int32_t rc = take_number(1, int64_t(sysdsa->width_max), &n);
    return rc ? rc : refresh(dsa_sys_adjust_width(sysdsa, uint64_t(n)));
}

// ---- fsa

int32_t do_fsa()
{
    int32_t rc = ended();
    if (rc)
        return rc;
    const dsa_area *d = sysdsa;
    if (!dsa_fsa_debug(d)) {
        spout21("segno table/block correct\n");
        return 0;
    }
    for (uint32_t i = 0; i < d->_No_ && !stopflag; i++) {
        uint32_t f = d->fsa.block[i >> fsa_shift][i & (fsa_perblock - 1)], s = i / d->n_per_S;
        if (f != s)
            spout21f("%u. segno_f=%u segno_d=%u\n", i, f, s);
    }
    return 9;
}

int32_t do_fsarebuild()
{
    int32_t rc = ended();
    return rc ? rc : dsa_fsa_rebuild(sysdsa);
}

int32_t do_fsaspeed()
{
    int64_t n;
    int32_t rc = take_number(1, 1000000, &n);
    if (rc)
        return rc;
    spout21f("%.3f seconds\n", dsa_fsa_speedtest(sysdsa, int32_t(n)));
    return 0;
}

const struct {
    const char *word;
    int32_t min;
    int32_t (*run)();
} words[] = {
    {"downsize", 1, do_downsize},     {"history", 1, do_history},
    {"Kmax", 4, do_Kmax},             {"memory_max", 4, do_memory_max},
    {"Nmax", 4, do_Nmax},             {"niceness", 4, do_niceness},
    {"probe", 5, do_probe},           {"query", 1, do_query},
    {"restart", 3, do_restart},       {"S", 1, do_S},
    {"width", 5, do_width},           {"fsa", 3, do_fsa},
    {"fsarebuild", 4, do_fsarebuild}, {"fsaspeed", 5, do_fsaspeed},
};

}  // namespace

int32_t _ti_dsasyscmd(int32_t)
{
    std::string word = ti_gettok(tokinfo, prsestd);
    outlev_keep keep(0);
    for (auto &w : words)
        if (cmdcmp(word.c_str(), w.word, w.min))
            return w.run();
    return error(RC_SYNTAX);
}
