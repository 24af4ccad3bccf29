// commands/inputcmd.cpp - input: observations typed at the keyboard or standing in a do-file,
// one a line, up to a line that says end.
#include "core/missing.h"
#include "core/numtext.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "data/variables.h"
#include "core/settings.h"
#include "expr/parse.h"
#include "interp/interp.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/print.h"
#include <cstring>
#include <string>
#include <vector>

namespace {

struct incmd {
    std::vector<int32_t> var;
    int32_t fresh;      // variables this command made
    int32_t firstnew;   // the first of them, 0 none
    int32_t had;        // observations before
    bool automatic, label;
};

// Names, each with a type in front that lasts for one name; names that exist are filled on.
int32_t names(incmd *c)
{
    uint8_t type = 0;
    for (;;) {
        const char *w = ti_gettok(tokinfo, prsevar);
        if (!*w)
            return type ? error(RC_SYNTAX) : 0;
        if (*w == ',') {
            ti_ungettok(tokinfo);
            return type ? error(RC_SYNTAX) : 0;
        }
        uint8_t t = type_ofword(w);
        if (t) {
            type = t;
            continue;
        }
        int32_t v = sysfindvar(w);
        if (v > 0 && type)
            return error2(3, w);
        if (v <= 0) {
            if (!type)
                type = type_ofword(set_type);
            if ((v = addvar(type, w)) < 0)
                return -v;
            c->fresh++;
            if (!c->firstnew)
                c->firstnew = v;
        }
        c->var.push_back(v);
        type = 0;
    }
}

int32_t parse(incmd *c)
{
    int32_t rc = names(c);
    if (rc)
        return rc;
    parinfo->pi_vlist = PI_NO;
    parinfo->pi_opts = PI_OK;
    if ((rc = ti_pi_parse(tokinfo, parinfo)))
        return rc;
    c->automatic = ti_pi_findopt(tokinfo, parinfo, "automatic", 1, 0);
    c->label = ti_pi_findopt(tokinfo, parinfo, "label", 1, 0);
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    if (c->var.empty())
        for (int32_t v = 1; v <= _i_Kvar; v++)
            c->var.push_back(v);
    return c->var.empty() ? error(104) : 0;
}

void blank_column(int32_t var)
{
    static const char empty[246] = "";
    for (int32_t obs = 1; obs <= _Nobs; obs++)
        if (t_isstr(_typlist[var - 1]))
            dsa_sstore(sysdsa, uint32_t(var), uint32_t(obs), empty);
        else
            dsa_store(misval, sysdsa, uint32_t(var), uint32_t(obs));
}

// The value a word stands for; false when it is none.
bool number_of(const incmd *c, int32_t var, const char *w, double *z)
{
    if (!cnvstoz(w, z))
        return true;
    int32_t v;
    if (!c->label || !*_lbllist[var - 1] ||
        vlfindtxt(vlfind(_lbllist[var - 1]), tok_text(w), &v))
        return false;
    *z = v;
    return true;
}

// One line into one observation. 0, or a code after which the line may be typed again.
int32_t fill(const incmd *c, int32_t obs)
{
    char text[248];
    for (int32_t var : c->var) {
        const char *w = ti_gettok(tokinfo, " ,");
        while (*w == ' ' || *w == ',')
            w = ti_gettok(tokinfo, " ,");
        if (!*w)
            break;
        if (t_isstr(_typlist[var - 1])) {
            memset(text, 0, sizeof text);
            snprintf(text, 245, "%s", tok_text(w));
            dsa_sstore(sysdsa, uint32_t(var), uint32_t(obs), text);
            continue;
        }
        double z;
        if (!number_of(c, var, w, &z))
            return errout(RC_SYNTAX, "'%s' cannot be read as a number\n", tok_text(w));
        dsa_store(z, sysdsa, uint32_t(var), uint32_t(obs));
    }
    return 0;
}

void heading(const incmd *c)
{
    newline();
    for (int32_t var : c->var) {
        char fmt[64];
        int32_t w = fmtwidth(_fmtlist[var - 1]);
        snprintf(fmt, sizeof fmt, "%s", _varlist[var - 1]);
        spout21fat(1, "%*s", w > int32_t(strlen(fmt)) + 1 ? w + 1 : int32_t(strlen(fmt)) + 2, fmt);
    }
    newline();
}

// For lines of another observation than the last: rows are added as they are filled.
int32_t one_obs(const incmd *c, int32_t obs)
{
    bool added = obs > _Nobs;
    if (added) {
        int32_t rc = dsa_add_obs(sysdsa, 1, true);
        if (rc)
            return rc;
    }
    int32_t rc = fill(c, obs);
    if (rc && added)
        dsa_truncate_obs(sysdsa, uint32_t(obs - 1));
    return rc;
}

// The next line, asked for by the number of its observation. 1 at the end of input.
int32_t next_line(int32_t obs)
{
    char prompt[16];
    snprintf(prompt, sizeof prompt, "%3d. ", obs);
    const char *was = readcons_prompt;
    readcons_prompt = prompt;
    int32_t end = getreq(true, false);
    readcons_prompt = was;
    return end;
}

// After a failure the lines left are still data, and must not be taken for commands.
void skip_to_end(int32_t obs)
{
    while (!stopflag && !next_line(++obs))
        if (!strcmp(ti_gettok(tokinfo, prsestd), "end"))
            return;
}

}  // namespace

int32_t inputcmd(int32_t);
int32_t inputcmd(int32_t)
{
    incmd c = {};
    c.had = _Nobs;
    int32_t rc = parse(&c);
    if (rc)
        return rc;
    for (int32_t i = 0; i < c.fresh; i++)
        blank_column(c.firstnew + i);
    if (out_shown(1))
        heading(&c);
    int32_t obs = c.fresh ? 1 : c.had + 1;
    for (;; obs++) {
        // A new variable beside old ones is filled over the observations there are.
        if (c.fresh && c.had && obs > c.had)
            break;
        if (next_line(obs)) {
            rc = stopflag ? stopflag : 0;
            break;
        }
        const char *w = ti_gettok(tokinfo, prsestd);
        if (!strcmp(w, "end"))
            break;
        ti_settok(tokinfo, console);
        rc = one_obs(&c, obs);
        if (rc == RC_SYNTAX && !dofilep && !nokbrd && !runprog) {
            obs--;  // at the keyboard the line is typed again
            continue;
        }
        if (rc) {
            skip_to_end(obs);
            break;
        }
        s_updata = true;
    }
    _i_Kvar = _Kvar;
    newdata = true;
    return rc;
}
