// expr/creturn.cpp - system values, c(): one table of rows serves the function and the list.
//
// A row without a routine shows the setting of its name.
#include "core/clock.h"
#include "core/files.h"
#include "core/limits.h"
#include "core/missing.h"
#include "core/settings.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/sort.h"
#include "expr/expr.h"
#include "expr/parse.h"
#include "output/dates.h"
#include "output/fmt.h"
#include "output/print.h"
#include "stats/esample.h"
#include "stats/random.h"
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <pwd.h>
#include <sys/utsname.h>
#include <thread>
#include <unistd.h>

creturn_above_t creturn_above;
static constexpr size_t cmax = 500;

using getfn = int32_t(char *s, double *z);
static int32_t num(double *z, double v)
{
    *z = v;
    return 1;
}
static int32_t str(char *s, const char *v)
{
    size_t n = strnlen(v, cmax - 1);
    memmove(s, v, n);
    s[n] = 0;
    return 2;
}

// Rows that are one number or one text.
#define NUM(name, value)                                                                       \
    static int32_t c_##name(char *, double *z) { return num(z, value); }
#define STR(name, value)                                                                       \
    static int32_t c_##name(char *s, double *) { return str(s, value); }

// ---- system
static int32_t c_current_date(char *s, double *)
{
    char buf[24];
    return str(s, mkwdate(buf));
}
static int32_t c_current_time(char *s, double *)
{
    char buf[24];
    return str(s, mkwtime(buf));
}
NUM(rmsg_time, creturn_above.rmsgtime ? *creturn_above.rmsgtime : 0)
NUM(ovata_version, ver_current / 100.0)
NUM(version, vernum / 100.0)
STR(born_date, "21 Nov 2026")
STR(flavor, cur_edition->flavour)
NUM(bit, 64)
NUM(zero, 0)
NUM(one, 1)
NUM(processors_mach, std::thread::hardware_concurrency())
STR(mode, batchmode ? "batch" : "")
STR(console, "console")
STR(os, "Unix")
STR(empty, "")
static int32_t c_osdtl(char *s, double *)
{
    utsname u;
    if (uname(&u))
        return str(s, "");
    snprintf(s, cmax, "%.60s %.60s", u.sysname, u.release);
    return 2;
}
static int32_t c_machine_type(char *s, double *)
{
    utsname u;
    return str(s, uname(&u) ? "" : u.machine);
}
STR(byteorder, std::endian::native == std::endian::little ? "lohi" : "hilo")
static int32_t c_username(char *s, double *)
{
    const passwd *p = getpwuid(getuid());
    return str(s, p && p->pw_name ? p->pw_name : "");
}

// ---- directories
static int32_t sysdir(char *s, const char *word)
{
    return str(s, creturn_above.sysdir ? creturn_above.sysdir(word) : "");
}
#define DIR(name, word)                                                                        \
    static int32_t c_sysdir_##name(char *s, double *) { return sysdir(s, word); }
DIR(ovata, "OVATA")
DIR(updates, "UPDATES")
DIR(base, "BASE")
DIR(site, "SITE")
DIR(plus, "PLUS")
DIR(personal, "PERSONAL")
DIR(oldplace, "OLDPLACE")
static const char *global(const char *name)
{
    const char *v = creturn_above.global ? creturn_above.global(name) : nullptr;
    return v ? v : "";
}
STR(tmpdir, tmp_dir())
static int32_t c_adopath(char *s, double *)
{
    const char *v = global("S_ADO");
    return str(s, *v ? v : "UPDATES;BASE;SITE;.;PERSONAL;PLUS;OLDPLACE");
}
STR(pwd, path_cwd().c_str())
STR(dirsep, "/")

// ---- limits
NUM(max_N_theory, double(cur_edition->N_max) - 1)
NUM(max_k_theory, cur_edition->maxvar_max)
NUM(max_width_theory, double(sysdsa ? sysdsa->width_max : 0))
NUM(max_matsize, cur_edition->matsize_max)
NUM(min_matsize, 10)
NUM(macrolen, macrolen)
NUM(cmdlen, conslen)
NUM(namelen, namelen)
NUM(eqlen, namelen)
NUM(mindouble, min_ovdouble)
NUM(maxdouble, max_ovdouble)
NUM(epsdouble, eps_ovdouble)
NUM(smallestdouble, smallest_ovdouble)
NUM(minfloat, min_ovfloat)
NUM(maxfloat, max_ovfloat)
NUM(epsfloat, eps_ovfloat)
NUM(minlong, min_ovlong)
NUM(maxlong, max_ovlong)
NUM(minint, min_ovint)
NUM(maxint, max_ovint)
NUM(minbyte, min_ovbyte)
NUM(maxbyte, max_ovbyte)
NUM(maxstrvarlen, strlen_max)

// ---- data
NUM(N, _Nobs)
NUM(k, _i_Kvar - esample_count())
NUM(width, double(sysdsa ? dsa_lrec(sysdsa) : 0))
NUM(changed, s_updata)
STR(filename, global("S_FN"))
STR(filedate, global("S_FNDATE"))
NUM(memory, sysdsa ? double(sysdsa->S) * double(sysdsa->segment_size) : 0)
NUM(maxvar, maxmaxvar)
NUM(matsize, set_matsize)
NUM(niceness, sysdsa ? double(sysdsa->niceness) : 0)
NUM(min_memory, sysdsa ? double(dsa_memory_min_goal_adj(sysdsa)) : 0)
static int32_t c_max_memory(char *, double *z)
{
    uint64_t v = sysdsa ? dsa_memory_max_goal_adj(sysdsa) : 0;
    return num(z, v ? double(v) : misval);
}
NUM(segmentsize, sysdsa ? double(sysdsa->segsize_suggested) : 0)

// ---- the rest
STR(dp, ovata_dpc ? "comma" : "period")
NUM(noisily, s_outlev == 0)
static int32_t c_seed(char *s, double *)
{
    geturnseed(s);
    return 2;
}
NUM(sortseed, sortseed())
NUM(version_rng, vernum_of_ver_rng(ver_rng) / 100.0)
NUM(pi, M_PI)
STR(alpha, "a b c d e f g h i j k l m n o p q r s t u v w x y z")
STR(ALPHA, "A B C D E F G H I J K L M N O P Q R S T U V W X Y Z")
static int32_t joined(char *s, const char *const *words, int n)
{
    *s = 0;
    for (int i = 0; i < n; i++)
        snprintf(s + strlen(s), cmax - strlen(s), "%s%s", i ? " " : "", words[i]);
    return 2;
}
static int32_t c_Mons(char *s, double *) { return joined(s, dt_mons, 12); }
static int32_t c_Months(char *s, double *) { return joined(s, dt_months, 12); }
static int32_t c_Wdays(char *s, double *) { return joined(s, dt_wdays, 7); }
static int32_t c_Weekdays(char *s, double *) { return joined(s, dt_weekdays, 7); }
NUM(rc, captrc)
NUM(compile_number, 1)
NUM(tokenlen, tokenlen)
NUM(filenamelen, filenamelen)
NUM(maxoptions, pi_maxopt)
NUM(tol_0, 1e-19)
NUM(tol_r, 1e-9)
STR(off, "off")

#define ROW(name, heading) {#name, heading, c_##name},
#define SAME(name, fn, heading) {#name, heading, c_##fn},
#define SETTING(name, heading) {#name, heading, nullptr},
const crow crows[] = {
#include "expr/creturn.def"
};
const int32_t ncrows = int32_t(std::size(crows));

// Rows by first character, chained in order.
static const crow *crow_find(const char *name)
{
    static int16_t first[256], next[std::size(crows)];
    static bool made;
    if (!made) {
        memset(first, -1, sizeof first);
        for (int i = int(std::size(crows)) - 1; i >= 0; i--) {
            uint8_t c = uint8_t(*crows[i].name);
            next[i] = first[c];
            first[c] = int16_t(i);
        }
        made = true;
    }
    for (int i = first[uint8_t(*name)]; i >= 0; i = next[i])
        if (!strcmp(crows[i].name, name))
            return &crows[i];
    return nullptr;
}

static int32_t setting_get(const char *name, char *s, double *z)
{
    const setting *t = setting_exact(name);
    if (!t || t->kind == SK_ACT)
        return 0;
    if (t->kind == SK_INT)
        return num(z, *static_cast<int32_t *>(t->at));
    if (t->kind == SK_NUM)
        return num(z, *static_cast<double *>(t->at));
    setting_text(t, s);
    return 2;
}

int32_t cfcn(const char *name, char *stringout, double *numberout)
{
    const crow *r = crow_find(name);
    // A setting that the listing has no room for answers to its name all the same.
    return r && r->get ? r->get(stringout, numberout) : setting_get(name, stringout, numberout);
}

int32_t cfcnstr(const char *name, char *out)
{
    double z = 0;
    int32_t kind = cfcn(name, out, &z);
    if (kind != 1)
        return kind;
    const crow *r = crow_find(name);
    bool vers = r && (r->get == c_version || r->get == c_ovata_version);
    bool dpc = ovata_dpc;
    ovata_dpc = false;
    fmtnumtrim(out, cmax, z, vers ? "%11.0g" : "%18.0g");
    ovata_dpc = dpc;
    return kind;
}

static int32_t show_row(const crow *r)
{
    char s[cmax], name[64];
    double z;
    int32_t kind = cfcn(r->name, s, &z);
    snprintf(name, sizeof name, "c(%s)", r->name);
    spout21fat(1, "    %20s = ", name);
    if (kind == 2)
        spout21fat(0, "\"%s\"", s);
    else {
        cfcnstr(r->name, s);
        spout21at(0, s);
    }
    outlev_keep keep(1);
    return newline();
}

int32_t creturn_list()
{
    const char *last = "";
    for (const crow &r : crows) {
        if (strcmp(last, r.heading) != 0) {
            outlev_keep keep(1);
            spoutsmlf("{hline}\n    %s\n{hline}\n", last = r.heading);
        }
        if (show_row(&r))
            return 1;
    }
    outlev_keep keep(1);
    return spoutsml("{hline}\n");
}
