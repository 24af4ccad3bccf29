// The commands that define, list and remove macros.
#include "core/files.h"
#include "core/mem.h"
#include "core/numtext.h"
#include "core/rc.h"
#include "core/settings.h"
#include "core/state.h"
#include "data/variables.h"
#include "expr/expr.h"
#include "interp/dm.h"
#include "interp/interp.h"
#include "interp/macros.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/print.h"
#include "stats/results.h"
#include <charconv>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

// The name of a definition into name, as the store knows it. op is set by ++ and --.
static int32_t read_name(int32_t mode, char name[64], char *op)
{
    const char *tok = ti_gettok(tokinfo, prsestd);
    *op = 0;
    if (*tok == '+' || *tok == '-') {
        char c = *tok;
        tok = ti_gettok(tokinfo, prsestd);
        if (mode != MG_LOCAL || tok[0] != c || tok[1])
            return error(RC_SYNTAX);
        *op = c;
        tok = ti_gettok(tokinfo, prsestd);
    }
    if (!*tok || *tok == '"')
        return error(RC_SYNTAX);
    bool local = mode == MG_LOCAL || mode == MG_CLOCAL;
    if (mode == MG_GLOBAL && *tok == '_')
        return error(RC_SYNTAX);
    size_t n = strnlen(tok, 60);
    name[0] = '_';
    memcpy(name + local, tok, n);
    name[n + local] = 0;
    if (mac_goodname(name, n + local))
        return 0;
    if (n > 31 && local)
        return invalid(tok);
    int32_t rc = chkname(name, false);
    return rc ? rc : error(RC_SYNTAX);
}

static int32_t keep(int32_t mode, const char *name, const char *value)
{
    switch (mode) {
    case MG_RETURN:
        return myretval_reset_glocal(name, value, savres_cat);
    case MG_ERETURN:
        return estval_reset_glocal(name, value, savres_cat);
    case MG_SRETURN:
        return sretval_reset_local(name, value);
    case MG_CLOCAL:
        return macresave_c(name, value);
    default:
        return macresave(name, value);
    }
}

static int32_t keep_expression(int32_t mode, const char *name, const char *text)
{
    bool isstr;
    double z;
    char str[256], num[40];
    int32_t rc = exp_text(text, W_ANY, &isstr, &z, str);
    if (rc)
        return rc;
    if (isstr)
        return keep(mode, name, str);
    if (vernum >= 220)
        mac_numtext(z, num);
    else {
        bool dpc = ovata_dpc;
        ovata_dpc = false;
        fmtnumtrim(num, sizeof num, z, "%9.0g");
        ovata_dpc = dpc;
    }
    num[strcspn(num, " ")] = 0;
    return keep(mode, name, num);
}

int32_t macgen(int32_t mode)
{
    char name[64], op;
    int32_t rc = read_name(mode, name, &op);
    if (rc)
        return rc;
    if (op) {
        char buf[64];
        if (ti_peektok_chr(tokinfo))
            return error(RC_SYNTAX);
        return macincr(name, op, buf, 0);
    }
    char c = ti_peektok_chr(tokinfo);
    if (c == '=' || c == ':') {
        char *text = strchr(ti_wheretok(tokinfo), c) + 1;
        if (c == '=')
            return keep_expression(mode, name, text);
        std::string value;
        ti_gettok(tokinfo, prsestd);
        rc = macexfcn(&value);
        if (!rc && value.size() >= size_t(macrolen))
            value.resize(macrolen - 1);
        return rc ? rc : keep(mode, name, value.c_str());
    }
    char *text = ti_wheretok(tokinfo);
    while (*text == ' ')
        text++;
    size_t n = strlen(text);
    while (n && text[n - 1] == ' ')
        n--;
    text[n] = 0;
    if ((rc = mac_unquote(&text, &n)))
        return rc;
    if (n >= size_t(macrolen))
        text[macrolen - 1] = 0;
    return keep(mode, name, text);
}

// ---- macro dir, list, drop, shift

static int32_t show(const char *name, const char *text)
{
    constexpr int32_t indent = 16;
    int32_t width = set_linesize > indent + 20 ? set_linesize - indent : 64;
    char head[64];
    snprintf(head, sizeof head, "%s:", name);
    spout21f("%-*s", indent, head);
    if (strlen(head) >= indent)
        spout21f("\n%*s", indent, "");
    size_t n = strlen(text);
    while (n > size_t(width)) {
        spout21f("%.*s\n%*s", width, text, indent, "");
        text += width;
        n -= size_t(width);
    }
    spout21(text);
    return spout21("\n");
}

static int32_t mac_dir()
{
    outlev_keep level(0);
    char name[33];
    for (int32_t type : {int32_t(DM_GLOBAL), typelmac}) {
        void *p = nullptr;
        while ((p = dmnext(p, name, type, nullptr)))
            if (!mac_hidden(name) && show(name, static_cast<char *>(p)))
                return stopflag;
    }
    return 0;
}

static int32_t mac_list()
{
    if (!ti_peektok_chr(tokinfo))
        return mac_dir();
    outlev_keep level(0);
    while (*ti_gettok(tokinfo, prsestd)) {
        const char *tok = tok_text(tokinfo->token);
        if (!strcmp(tok, "_all")) {
            int32_t rc = mac_dir();
            if (rc)
                return rc;
            continue;
        }
        const char *text = macptr(tok);
        if (!text)
            return macnotfound(tok);
        if (show(tok, text))
            return stopflag;
    }
    return 0;
}

// Those that the rest of the system reads.
static bool stays(const char *name)
{
    static const char *const names[] = {"S_ADO",   "S_OS",    "S_FLAVOR", "S_MACH",    "S_OSDTL",
                                        "S_MODE",  "S_level", "S_SHELL",  "S_OTB",     "S_XSHELL2",
                                        "S_XSHELL", "S_CONSOLE"};
    for (const char *s : names)
        if (!strcmp(s, name))
            return true;
    return false;
}

static void drop_matching(const char *prefix, size_t n, int32_t type)
{
    std::vector<void *> gone;
    char name[33];
    void *p = nullptr;
    while ((p = dmnext(p, name, type, nullptr)))
        if (!strncmp(name, prefix, n) && !mac_hidden(name) &&
            !(type == DM_GLOBAL && stays(name)))
            gone.push_back(p);
    for (void *q : gone)
        dmrm(q);
}

static int32_t mac_drop()
{
    char word[macrolen];
    const char *at = ti_wheretok(tokinfo);
    if (!ti_peektok_chr(tokinfo))
        return error(RC_SYNTAX);
    while ((at = mac_item(at, word, macrolen, nullptr))) {
        size_t n = strlen(word);
        if (!strcmp(word, "_all")) {
            drop_matching("", 0, DM_GLOBAL);
            drop_matching("", 0, typelmac);
        } else if (n && word[n - 1] == '*') {
            if (n > 1 && !mac_goodname(word, n - 1))
                return invalid(word);
            drop_matching(word, n - 1, *word == '_' ? typelmac : int32_t(DM_GLOBAL));
        } else if (!mac_goodname(word, n)) {
            return invalid(word);
        } else {
            macerase(word);
        }
    }
    return 0;
}

static int32_t mac_shift()
{
    int32_t n = 1;
    const char *tok = ti_gettok(tokinfo, prsenum);
    if (*tok && (cnvstoint4(tok, &n) || n < 0))
        return invalid(tok);
    if (*tok && *ti_gettok(tokinfo, prsenum))
        return error(RC_SYNTAX);
    char from[16] = "_", to[16] = "_";
    for (; n > 0; n--) {
        if (fault_poll())
            return stopflag;
        macerase("_1");
        int32_t i = 2;
        for (;; i++) {
            *std::to_chars(from + 1, from + 15, i).ptr = 0;
            void *p = macptr(from);
            if (!p)
                break;
            *std::to_chars(to + 1, to + 15, i - 1).ptr = 0;
            dmrename(p, to);
        }
        if (i == 2)
            break;  // nothing is left to move
    }
    return 0;
}

int32_t macro(int32_t)
{
    const char *tok = ti_gettok(tokinfo, prsestd);
    if (cmdcmp(tok, "define", 2))
        return macgen(MG_DEFINE);
    if (cmdcmp(tok, "dir", 2))
        return *ti_gettok(tokinfo, prsestd) ? error(RC_SYNTAX) : mac_dir();
    if (cmdcmp(tok, "drop", 4))
        return mac_drop();
    if (cmdcmp(tok, "list", 1))
        return mac_list();
    if (cmdcmp(tok, "shift", 1))
        return mac_shift();
    return error(RC_SYNTAX);
}

// ---- temporary names: each local named on the line holds a fresh one

int32_t tmpvcmd(int32_t kind)
{
    if (!ti_peektok_chr(tokinfo))
        return required(kind == 2 ? "tempfile name" : "name");
    while (*ti_gettok(tokinfo, prsestd)) {
        char name[64] = "_";
        size_t n = strnlen(tokinfo->token, 60);
        memcpy(name + 1, tokinfo->token, n);
        name[n + 1] = 0;
        if (!mac_goodname(name, n + 1))
            return invalid(tok_text(tokinfo->token));
        int32_t rc;
        if (kind == 2)
            rc = macresave(name, mktmpfn().c_str());
        else {
            char fresh[16];
            mktmpvn(fresh);
            rc = macresave(name, fresh);
        }
        if (rc)
            return rc;
    }
    return 0;
}
