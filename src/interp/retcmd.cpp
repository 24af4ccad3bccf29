// return, sreturn, ereturn, _return, _estimates and scalar.
#include "core/mem.h"
#include "core/missing.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/scalars.h"
#include "data/umat.h"
#include "data/variables.h"
#include "expr/expr.h"
#include "interp/dm.h"
#include "interp/interp.h"
#include "interp/macros.h"
#include "interp/messages.h"
#include "interp/programs.h"
#include "interp/retparse.h"
#include "output/fmt.h"
#include "output/print.h"
#include "stats/results.h"
#include <cstring>
#include <string>
#include <vector>

bool hastmp_hreturn;

int32_t ret_at_end()
{
    const char *tok = ti_gettok(tokinfo, prsestd);
    return *tok ? notalow(tok_text(tok)) : 0;
}

// An item may be kept out of the listing, or marked as of older versions.
void ret_category()
{
    static const struct {
        const char *word;
        int32_t cat;
    } words[] = {{"visible", 0}, {"hidden", 1}, {"historical", 2}};
    savres_cat = 0;
    const char *tok = ti_gettok(tokinfo, prsestd);
    for (const auto &w : words)
        if (!strcmp(tok, w.word)) {
            savres_cat = w.cat;
            ti_gettok(tokinfo, prsestd);
            if (w.cat == 2 && ti_peektok_chr(tokinfo) == '(')
                while (*ti_gettok(tokinfo, prsestd) && *tokinfo->token != ')')
                    ;
            return;
        }
}

int32_t ret_result_name(char name[33])
{
    const char *tok = ti_gettok(tokinfo, prsestd);
    if (!*tok || *tok == '"')
        return error(RC_SYNTAX);
    if (!mac_goodname(tok, strlen(tok)))
        return invalid(tok);
    memcpy(name, tok, strlen(tok) + 1);
    return 0;
}

int32_t ret_set_scalar(int32_t kind)
{
    char name[33], str[256];
    int32_t rc = ret_result_name(name);
    if (rc || (rc = ti_gtokis(tokinfo, '=')))
        return rc;
    double z;
    bool isstr;
    if ((rc = exp_text(ti_wheretok(tokinfo), W_NUM, &isstr, &z, str)))
        return rc;
    if (kind == RK_RETURN)
        return myretval_reset_gscalar(z, name, savres_cat);
    return estval_reset_gscalar(z, name, savres_cat);
}

static void cut_option(std::string *text, bool *copy)
{
    *copy = false;
    size_t at = text->rfind(',');
    if (at == std::string::npos)
        return;
    std::string opt = text->substr(at + 1);
    while (!opt.empty() && opt.back() == ' ')
        opt.pop_back();
    size_t b = opt.find_first_not_of(' ');
    if (b != std::string::npos && opt.substr(b) == "copy") {
        *copy = true;
        text->resize(at);
    }
}

// NAME = MATRIX or a matrix expression. A matrix named alone moves into the results unless
// copy is asked for.
int32_t ret_set_matrix(int32_t kind)
{
    char name[33];
    int32_t rc = ret_result_name(name);
    if (rc)
        return rc;
    matkind to = kind == RK_E ? MK_E : MK_RETURN;
    if (ti_peektok_chr(tokinfo) == '=')
        ti_gettok(tokinfo, prsestd);
    std::string text(ti_wheretok(tokinfo));
    bool copy;
    cut_option(&text, &copy);
    while (!text.empty() && text.back() == ' ')
        text.pop_back();
    text.erase(0, text.find_first_not_of(' '));
    if (text.empty())
        return error(RC_SYNTAX);
    if (mac_goodname(text.c_str(), text.size()) && ismatrixname(text.c_str())) {
        kind == RK_E ? estval_erase(name) : myretval_erase(name);
        return copy ? umat_copy(text.c_str(), MK_MAT, name, to)
                    : umat_rename(text.c_str(), name, to);
    }
    toktype saved;
    ti_borrow_gettok(tokinfo, &saved);
    ti_settok(tokinfo, text.data());
    static xeqpgm pgm;
    initialize_compexp_shared();
    rc = compmatexp(&pgm, W_NUMMAT, false, false, true);
    if (!rc && *ti_gettok(tokinfo, prsestd))
        rc = error(RC_SYNTAX);
    ti_return_gettok(tokinfo, &saved);
    static const char work[] = "__return_work";
    if (!rc)
        rc = xeqmat_mat(&pgm, work, MK_MAT);
    if (rc)
        return rc;
    kind == RK_E ? estval_erase(name) : myretval_erase(name);
    return umat_rename(work, name, to);
}

// The heading-less listing of one store.
int32_t ret_list_store(int32_t kind)
{
    int32_t rc = ret_at_end();
    return rc ? rc : retvals_dir(kind);
}

int32_t retcmd(int32_t)
{
    ret_category();
    const char *sub = tokinfo->token;
    bool rclass = program_class == 1;
    if (cmdcmp(sub, "list", 2))
        return ret_list_store(RK_R);
    if (!rclass)
        return error(151);
    if (!*sub)
        return RC_BARERETURN;
    if (cmdcmp(sub, "clear", 3)) {
        int32_t rc = ret_at_end();
        if (!rc)
            myretval_clear();
        return rc;
    }
    if (cmdcmp(sub, "add", 3)) {
        int32_t rc = ret_at_end();
        return rc ? rc : myretval_add();
    }
    if (cmdcmp(sub, "local", 3))
        return macgen(MG_RETURN);
    if (cmdcmp(sub, "scalar", 3))
        return ret_set_scalar(RK_RETURN);
    if (cmdcmp(sub, "matrix", 3))
        return ret_set_matrix(RK_RETURN);
    return error(RC_SYNTAX);
}

int32_t sretcmd(int32_t)
{
    const char *sub = ti_gettok(tokinfo, prsestd);
    if (cmdcmp(sub, "list", 2))
        return ret_list_store(RK_S);
    if (cmdcmp(sub, "clear", 3)) {
        int32_t rc = ret_at_end();
        if (!rc)
            sretval_clear();
        return rc;
    }
    if (cmdcmp(sub, "local", 3))
        return program_class == 2 ? macgen(MG_SRETURN) : error(153);
    return error(RC_SYNTAX);
}

// ---- _return

// Names on the rest of the line, or _all.
int32_t ret_drop_held(int32_t kind)
{
    if (!ti_peektok_chr(tokinfo))
        return error(RC_SYNTAX);
    while (*ti_gettok(tokinfo, prsestd)) {
        int32_t rc = held_drop(kind, tokinfo->token);
        if (rc)
            return notfound(tokinfo->token);
    }
    return 0;
}


int32_t usreturn(int32_t)
{
    char name[33];
    std::string sub = ti_gettok(tokinfo, prsestd);
    if (cmdcmp(sub.c_str(), "dir", 3))
        return held_dir(RK_R);
    if (cmdcmp(sub.c_str(), "drop", 4))
        return ret_drop_held(RK_R);
    int32_t rc = ret_result_name(name);
    if (rc)
        return rc;
    if (cmdcmp(sub.c_str(), "hold", 4)) {
        if ((rc = ret_at_end()))
            return rc;
        rc = held_hold(RK_R, name);
        if (rc == RC_EXISTS)
            return error2(3, name);
        hastmp_hreturn = true;
        return rc ? error(rc) : 0;
    }
    if (!cmdcmp(sub.c_str(), "restore", 3))
        return error(RC_SYNTAX);
    bool keep = false;
    if (*ti_gettok(tokinfo, prsestd) == ',') {
        keep = !strcmp(ti_gettok(tokinfo, prsestd), "hold");
        if (!keep && *tokinfo->token)
            return notalow(tok_text(tokinfo->token));
    } else if (*tokinfo->token)
        return error(RC_SYNTAX);
    rc = held_restore(RK_R, name, keep);
    return rc == RC_NOTFOUND ? notfound(name) : rc;
}

void cleanhret()
{
    held_droplevel(RK_R, typelmac);
    hastmp_hreturn = false;
}

void rmtmpdyn(uint8_t pgmclass)
{
    dmzap(typelmac);
    if (pgmclass == 1)
        myretval_to_r();
    else
        myretval_clear();
    // Temporary names carry their level.
    for (dmrec *r = dm_dtyp[DM_TMPNAME], *next; r; r = next) {
        next = r->tnext;
        if (r->aux >= typelmac)
            dmrm(dm_payload(r));
    }
}

// ---- scalar

static int32_t show_scalar(const char *name, void *p)
{
    char num[40];
    spout21f("%10s = ", name);
    if (dm_rec(p)->aux == 1)
        spout21(static_cast<char *>(p));
    else {
        fmtnumtrim(num, sizeof num, *static_cast<double *>(p), "%10.0g");
        spout21(num);
    }
    return spout21("\n");
}

static int32_t scalar_list()
{
    outlev_keep level(0);
    bool all = true;
    while (*ti_gettok(tokinfo, prsestd)) {
        if (!strcmp(tokinfo->token, "_all"))
            break;
        all = false;
        void *p = dmfind0(tokinfo->token, DM_SCALAR);
        if (!p)
            return errout(RC_NOTFOUND, "scalar %s not found\n", tok_text(tokinfo->token));
        if (show_scalar(tokinfo->token, p))
            return stopflag;
    }
    char name[33];
    for (void *p = nullptr; all && (p = dmnext(p, name, DM_SCALAR, nullptr));)
        if (show_scalar(name, p))
            return stopflag;
    return 0;
}

static int32_t scalar_drop()
{
    if (!ti_peektok_chr(tokinfo))
        return error(RC_SYNTAX);
    while (*ti_gettok(tokinfo, prsestd)) {
        if (!strcmp(tokinfo->token, "_all"))
            dmzap(DM_SCALAR);
        else if (!sclrrm(tokinfo->token))
            return errout(RC_NOTFOUND, "scalar %s not found\n", tok_text(tokinfo->token));
    }
    return 0;
}

int32_t scalarcmd(int32_t)
{
    const char *tok = ti_gettok(tokinfo, prsestd);
    if (ti_peektok_chr(tokinfo) != '=') {
        if (!*tok || cmdcmp(tok, "dir", 1) || cmdcmp(tok, "list", 1))
            return scalar_list();
        if (cmdcmp(tok, "drop", 4))
            return scalar_drop();
        if (cmdcmp(tok, "define", 3))
            tok = ti_gettok(tokinfo, prsestd);
    }
    char name[33];
    int32_t rc = chksinglename(tok, false);
    if (rc)
        return rc;
    memcpy(name, tok, strnlen(tok, 32) + 1);
    if (ismatrixname(name))
        return errout(507, "%s already defined as a matrix\n", name);
    if ((rc = ti_gtokis(tokinfo, '=')))
        return rc;
    double z;
    bool isstr;
    char str[256];
    if ((rc = exp_text(ti_wheretok(tokinfo), W_ANY, &isstr, &z, str)))
        return rc;
    return isstr ? ssclrsv(name, str) : sclrsv(name, z);
}
