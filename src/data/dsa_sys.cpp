// data/dsa_sys.cpp - the system area: its start for the edition, its settings as words of
// `set`, and emptying the dataset.
#include "core/limits.h"
#include "core/numtext.h"
#include "core/rc.h"
#include "core/settings.h"
#include "core/state.h"
#include "data/dsa_int.h"
#include "data/labels.h"
#include "data/variables.h"
#include "interp/dm.h"
#include "interp/messages.h"
#include "output/print.h"
#include <cctype>
#include <cstdio>
#include <cstdlib>

// ---- words of set

int32_t dsa_sizetext(const char *text, uint64_t *bytes)
{
    char num[64];
    size_t n = 0;
    while (*text == ' ')
        text++;
    while ((isdigit(uint8_t(*text)) || *text == '.') && n < sizeof num - 1)
        num[n++] = *text++;
    num[n] = 0;
    double z, unit = 1;
    if (cnvstoz(num, &z))
        return RC_SYNTAX;
    if (z >= misval) {
        // A missing value asks for no limit.
        *bytes = 0;
        return *text ? RC_SYNTAX : 0;
    }
    switch (tolower(uint8_t(*text))) {
    case 'b': unit = 1, text++; break;
    case 'k': unit = 1024, text++; break;
    case 'm': unit = 1048576, text++; break;
    case 'g': unit = 1073741824, text++; break;
    default: break;
    }
    while (*text == ' ')
        text++;
    if (*text || z * unit >= 0x1p62)
        return RC_SYNTAX;
    *bytes = uint64_t(z * unit);
    return 0;
}

static int32_t whole_number(const char *text, int64_t *n)
{
    double z;
    *n = 0;
    if (cnvstoz(text, &z) || !(z > -1e15 && z < 1e15) || z != double(int64_t(z)))
        return invalid(text);
    *n = int64_t(z);
    return 0;
}

static int32_t set_maxvar_fn(const setting *, const char *text)
{
    int64_t k;
    int32_t rc = whole_number(text, &k);
    if (rc)
        return rc;
    if (cur_edition->maxvar_max == cur_edition->maxvar)
        return errout(RC_SYNTAX, "maxvar cannot be changed in this version of Ovata\n");
    if (sysdsa->K > 0)
        return error(RC_DATACHANGED);
    return dsa_reset_K_max(sysdsa, k);
}

static int32_t set_niceness_fn(const setting *, const char *text)
{
    int64_t n;
    int32_t rc = whole_number(text, &n);
    return rc ? rc : dsa_reset_niceness(sysdsa, n);
}

static int32_t set_size_fn(const setting *s, const char *text)
{
    uint64_t bytes;
    if (dsa_sizetext(text, &bytes))
        return invalid(text);
    if (s->hook == SH_SEGSIZE)
        return dsa_reset_seg_size(sysdsa, bytes);
    return s->hook == SH_MINMEM ? dsa_reset_memory_min_goal(sysdsa, bytes)
                                : dsa_reset_memory_max_goal(sysdsa, bytes);
}

static int32_t set_memory_fn(const setting *, const char *)
{
    outlev_keep keep(1);
    return spout21("(set memory ignored; memory is sized as the data need it)\n");
}

static int32_t set_obs_fn(const setting *, const char *text)
{
    int64_t n;
    int32_t was = _Nobs, rc = whole_number(text, &n);
    if (rc)
        return rc;
    if (n < was)
        return errout(RC_SYNTAX, "obs must be at least %d\n", was);
    if (n == was)
        return 0;
    if ((rc = dsa_add_obs(sysdsa, n - was, true)))
        return rc;
    s_updata = newdata = true;
    _srtlist[0] = 0;  // the new rows stand behind the others whatever they hold
    outlev_keep keep(1);
    return spout21f("obs was %d, now %d\n", was, _Nobs);
}

static void fill_hooks()
{
    static const struct {
        set_hook hook;
        set_fn fn;
    } rows[] = {
        {SH_MAXVAR, set_maxvar_fn}, {SH_NICENESS, set_niceness_fn}, {SH_SEGSIZE, set_size_fn},
        {SH_MINMEM, set_size_fn},   {SH_MAXMEM, set_size_fn},       {SH_MEMORY, set_memory_fn},
        {SH_OBS, set_obs_fn},
    };
    for (auto &r : rows)
        if (!set_hooks[r.hook])
            set_hooks[r.hook] = r.fn;
}

// ---- start

static void vars_gone(const char *name)
{
    charrm(name);
    if (strcmp(name, "_dta"))
        rmvarlab(name);
}

int32_t sinit0_dsa()
{
    if (!dsa_open(1, 0))
        return RC_NOMEM;
    dsa_onvarsgone = vars_gone;
    maxmaxvar = cur_edition->maxvar;
    dsa_set_UPint(sysdsa, &sysdsa->K_max, uint32_t(maxmaxvar));
    dsa_set_UPint(sysdsa, &sysdsa->_N_max, cur_edition->N_max);
    if (cur_edition->segsize)
        dsa_set_Hint(sysdsa, &sysdsa->segsize_suggested, cur_edition->segsize);
    int32_t rc = dsa_start(sysdsa);
    if (rc)
        return rc;
    fill_hooks();
    dsa_reset_noisy(sysdsa, 1);
    return 0;
}

void drop_all()
{
    if (dsa_ondropall)
        dsa_ondropall();
    dsa_truncate_var(sysdsa, 0, true);
    dsa_truncate_obs(sysdsa, 0);
    dmzap(DM_VALLABEL);
    dmzap(DM_VARLABEL);
    charrm(nullptr);
    datalbl[0] = 0;
    _i_Kvar = 0;
    s_updata = false;
    newdata = newDtaset = true;
}
