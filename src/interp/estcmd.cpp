// ereturn and _estimates: the store of estimates as commands write it.
#include "core/rc.h"
#include "core/state.h"
#include "core/text.h"
#include "data/dsa.h"
#include "data/umat.h"
#include "data/variables.h"
#include "expr/parse.h"
#include "interp/interp.h"
#include "interp/macros.h"
#include "interp/messages.h"
#include "interp/programs.h"
#include "interp/retparse.h"
#include "stats/coeftab.h"
#include "stats/esample.h"
#include "stats/estpost.h"
#include "stats/results.h"
#include <cstring>

bool hastmp_estheld, estrestore;

// ---- e()

// hold NAME [, restore nullok permanent]. What is permanent outlives the program.
static int32_t est_hold()
{
    char name[33];
    int32_t rc = ret_result_name(name);
    if (rc)
        return rc;
    bool restore = false, nullok = false, permanent = false;
    if (*ti_gettok(tokinfo, prsestd) == ',')
        while (*ti_gettok(tokinfo, prsestd)) {
            if (!strcmp(tokinfo->token, "restore"))
                restore = true;
            else if (!strcmp(tokinfo->token, "nullok"))
                nullok = true;
            else if (!strcmp(tokinfo->token, "permanent"))
                permanent = true;
            else
                return notalow(tok_text(tokinfo->token));
        }
    else if (*tokinfo->token)
        return error(RC_SYNTAX);
    if (!nullok && gretval_find(RK_E, "cmd") == 0 && !lastest)
        return regrnotfound();
    rc = held_hold(RK_E, name, permanent);
    if (rc == RC_EXISTS)
        return error2(3, name);
    if (rc)
        return error(rc);
    hastmp_estheld = hastmp_estheld || !permanent;
    estrestore = estrestore || restore;
    return 0;
}

static int32_t est_unhold()
{
    char name[33];
    int32_t rc = ret_result_name(name);
    if (rc)
        return rc;
    bool copy = false;
    if (*ti_gettok(tokinfo, prsestd) == ',') {
        copy = !strcmp(ti_gettok(tokinfo, prsestd), "copy");
        if (!copy)
            return notalow(tok_text(tokinfo->token));
        ti_gettok(tokinfo, prsestd);
    }
    if (*tokinfo->token)
        return notalow(tok_text(tokinfo->token));
    rc = held_restore(RK_E, name, copy);
    return rc == RC_NOTFOUND ? notfound(name) : rc;
}

// ---- posting

struct postopts {
    char depname[33], properties[81];
    double obs, dof;
    int32_t sample;  // variable that becomes e(sample), 0 none
    bool rename;
};

static int32_t post_options(postopts *o)
{
    *o = {};
    parinfo->pi_opts = PI_OK;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    if (rc)
        return rc;
    char text[81];
    o->obs = o->dof = -1;
    (void)ti_pi_findargn(tokinfo, parinfo, "depname", 1, o->depname, 32, 1);
    (void)ti_pi_findargasis(tokinfo, parinfo, "properties", 4, o->properties, 80);
    (void)ti_pi_findoptv(tokinfo, parinfo, "obs", 1, &o->obs, 1, 0);
    (void)ti_pi_findoptv(tokinfo, parinfo, "dof", 2, &o->dof, 1, 0);
    o->rename = ti_pi_findopt(tokinfo, parinfo, "rename", 3, 0) != 0;
    if (ti_pi_findargn(tokinfo, parinfo, "esample", 1, text, 32, 1)) {
        int32_t var = ovata_findvar(text, 1, true);
        if (var < 0)
            return -var;
        if (t_isstr(_typlist[var - 1]))
            return error(471);
        o->sample = var;
    }
    return ti_pi_chkopt(tokinfo, parinfo);
}

static int32_t post_facts(const postopts *o)
{
    if (*o->depname)
        estval_set_glocal("depvar", o->depname);
    if (o->obs >= 0 && estval_reset_gscalar(o->obs, "N"))
        return RC_DMMEM;
    if (o->dof >= 0 && estval_reset_gscalar(o->dof, "df_r"))
        return RC_DMMEM;
    return o->sample ? esample_take(o->sample) : 0;
}

static int32_t est_post_cmd()
{
    char b[33] = "", v[33] = "", *to[] = {b, v};
    int32_t n = 0;
    for (; n < 2; n++) {
        const char *tok = ti_gettok(tokinfo, prsestd);
        if (!mac_goodname(tok, strlen(tok))) {
            ti_ungettok(tokinfo);
            break;
        }
        strcut(to[n], 33, tok);
    }
    postopts o;
    int32_t rc = post_options(&o);
    if (rc)
        return rc;
    if (*b)
        rc = est_post_named(b, v);
    else
        estval_clear();
    if (rc)
        return rc;
    lastest = true;
    if (!o.sample)
        esample_drop();
    if (*o.properties || *b)
        estval_set_glocal("properties", *o.properties ? o.properties : *v ? "b V" : "b");
    return post_facts(&o);
}

// repost [b = NAME] [V = NAME] [, esample() rename]
static int32_t est_repost_cmd()
{
    char name[2][33] = {"", ""};
    for (int i = 0; i < 2; i++) {
        const char *tok = ti_gettok(tokinfo, prsestd);
        bool isb = !strcmp(tok, "b"), isv = !strcmp(tok, "V");
        if (!isb && !isv) {
            ti_ungettok(tokinfo);
            break;
        }
        if (int32_t rc = ti_gtokis(tokinfo, '='))
            return rc;
        strcut(name[isv], 33, ti_gettok(tokinfo, prsestd));
    }
    postopts o;
    int32_t rc = post_options(&o);
    if (!rc)
        rc = est_repost_named(name[0], name[1], o.rename);
    if (!rc && *o.properties)
        rc = estval_reset_glocal("properties", o.properties);
    return rc ? rc : post_facts(&o);
}

static int32_t est_display_cmd()
{
    parinfo->pi_opts = PI_OK;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    if (rc)
        return rc;
    coeftab t;
    if ((rc = coeftab_options(&t)))
        return rc;
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    return coeftab_show(&t);
}

int32_t estimate(int32_t arg)
{
    ret_category();
    const char *sub = tokinfo->token;
    if (cmdcmp(sub, "hold", 4))
        return est_hold();
    if (cmdcmp(sub, "unhold", 6))
        return est_unhold();
    if (cmdcmp(sub, "clear", 2)) {
        int32_t rc = ret_at_end();
        if (rc)
            return rc;
        if (arg == 2)
            return held_drop(RK_E, "_all");
        estval_clear();
        esample_drop();
        return 0;
    }
    if (arg == 2) {
        if (cmdcmp(sub, "dir", 1))
            return held_dir(RK_E);
        if (cmdcmp(sub, "drop", 4))
            return ret_drop_held(RK_E);
        return error(RC_SYNTAX);
    }
    if (cmdcmp(sub, "list", 2))
        return ret_list_store(RK_E);
    if (cmdcmp(sub, "display", 2))
        return est_display_cmd();
    bool eclass = program_class == 3;
    if (cmdcmp(sub, "local", 3))
        return eclass ? macgen(MG_ERETURN) : error(152);
    if (cmdcmp(sub, "scalar", 3))
        return eclass ? ret_set_scalar(RK_E) : error(152);
    if (cmdcmp(sub, "matrix", 3))
        return eclass ? ret_set_matrix(RK_E) : error(152);
    if (!strcmp(sub, "post"))
        return eclass ? est_post_cmd() : error(152);
    if (!strcmp(sub, "repost"))
        return eclass ? est_repost_cmd() : error(152);
    return error(RC_SYNTAX);
}

void cleanesti()
{
    held_droplevel(RK_E, typelmac);
    hastmp_estheld = false;
}

void estirestore()
{
    char name[33];
    if (held_last(RK_E, typelmac, name) && held_restore(RK_E, name, false) == 0)
        estrestore = false;
}

