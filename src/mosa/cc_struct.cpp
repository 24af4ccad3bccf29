// Definitions of structs, and the images that definitions of structs and classes share.
#include "core/text.h"
#include "mosa/cc_int.h"
#include "mosa/classdef.h"
#include <cstring>

// ---- laying out

cc_image *ci_new()
{
    return static_cast<cc_image *>(cc_alloc(sizeof(cc_image)));
}

int32_t ci_add(cc_image *im, int32_t word)
{
    if (im->n >= m_maxpgmsize)
        cc_err("program too long\n");
    im->w[im->n] = word;
    return im->n++;
}

int32_t ci_text(cc_image *im, const char *text, bool isclass)
{
    size_t len = strlen(text);
    auto words = int32_t(len / 4) + 1;
    int32_t at = ci_add(im, isclass ? int32_t(CR_TEXT) : 2);
    ci_add(im, isclass ? words : words + 1);
    for (int32_t i = 0; i < words; i++) {
        int32_t word = 0;
        size_t from = size_t(i) * 4;
        memcpy(&word, text + from, len - from < 4 ? len - from : 4);
        ci_add(im, word);
    }
    return at;
}

int32_t ci_type(cc_image *im, int32_t type, bool isclass)
{
    const mtyp_entry e = ty_of(type);
    const char *name = mtyp_name(&m_cc->types, type);
    int32_t target = e.eltype == MT_POINTER && e.ptrto >= 0 ? ci_type(im, e.ptrto, isclass) : -1;
    int32_t text = *name ? ci_text(im, name, isclass) : -1;
    int32_t at = ci_add(im, isclass ? int32_t(CR_TYPE) : 1);
    ci_add(im, e.eltype);
    ci_add(im, e.orgtype);
    ci_add(im, e.isfcn);
    ci_add(im, text);
    ci_add(im, target);
    return at;
}

void ci_store(const cc_image *im, const char *name, int32_t eltype)
{
    matobj *f = m_mkfcn(sys_pgmclass, name, "", im->n, eltype, 0);
    if (!f)
        throw cc_abort{};
    memcpy(mo_code(f), im->w, size_t(im->n) * 4);
}

// ---- struct NAME { type name, ...  ... }

static void get_members()
{
    for (;;) {
        m_skiplines();
        if (m_tokenis('}'))
            return;
        if (!cc_istypeword(m_tok))
            cc_err("type declaration required\n");
        int32_t type = match_type(false);
        for (;;) {
            if (m_tok != T_NAME)
                m_nottoken(T_NAME);
            st_add(m_toktext, SC_LOCAL, SK_VAR, type);
            m_gettok();
            if (!m_tokenis(','))
                break;
            m_skiplines();
        }
        cc_stmtend();
    }
}

void cc_structdef()
{
    char name[33];
    m_gettok();
    strcut(name, sizeof name, m_toktext);
    m_gettok();
    cc_refuse_existing(name, "");
    m_skiplines();
    m_match('{');
    get_members();
    cc_image *im = ci_new();
    ci_add(im, m_format);
    ci_add(im, vernum < 900 ? 900 : vernum);
    ci_add(im, sd_mark);
    ci_add(im, m_cc->nsym);
    for (int32_t i = 0; i < 3 * m_cc->nsym; i++)
        ci_add(im, 0);
    for (int32_t i = 0; i < m_cc->nsym; i++) {
        int32_t *member = im->w + SD_FIRST + 3 * i;
        member[1] = ci_type(im, m_cc->sym[i].type, false);
        member[2] = ci_text(im, m_cc->sym[i].name, false);
    }
    ci_add(im, 3);
    ci_store(im, name, MT_STRUCTDEF);
}

// ---- looking into definitions

// Images that come from files are looked at before they are believed.
static bool is_sound(const matobj *def, bool isclass)
{
    if (dm_rec(def)->a == 1)
        return true;
    if (int64_t(def->rows) * 4 > def->alloc)
        return false;
    return !(isclass ? cls_check(mo_code(def), def->rows) : sd_check(mo_code(def), def->rows));
}

matobj *ce_finddef(const char *name, bool isclass)
{
    const char *what = isclass ? "class" : "struct";
    matobj *def = emo_find(sys_pgmclass, name, "");
    if (!def)
        cc_err("%s %s undefined\n", what, name);
    if (def->cols != (isclass ? MT_CLASSDEF : MT_STRUCTDEF) || !is_sound(def, isclass))
        cc_err("function %s() is not a %s\n", name, what);
    return def;
}

static int32_t import_type(const int32_t *code, int32_t word, bool isclass, int32_t depth)
{
    const int32_t *r = code + word;
    const char *name = r[4] < 0 ? "" : isclass ? cls_text(code, r[4]) : sd_text(code, r[4]);
    if (depth > ce_maxdepth)
        cc_err("no room to add more types\n");
    int32_t type = r[1] == MT_POINTER
                       ? ty_ptr(r[2], r[5] < 0 ? ty(MT_TRANSMORPHIC, OT_MATRIX)
                                               : import_type(code, r[5], isclass, depth + 1))
                       : ty_named(r[1], r[2], name);
    if (r[3] && (type = mtyp_refcn(&m_cc->types, type)) < 0)
        throw cc_abort{};
    return type;
}

int32_t ce_import(const int32_t *code, int32_t word, bool isclass)
{
    return import_type(code, word, isclass, 0);
}

bool ce_structlookup(const matobj *def, const char *name, int32_t *row, int32_t *type)
{
    const int32_t *code = mo_code(def);
    for (int32_t k = 0; k < code[SD_N]; k++) {
        const int32_t *member = code + SD_FIRST + 3 * k;
        if (strcmp(sd_text(code, member[2]), name) != 0)
            continue;
        *row = k;
        *type = ce_import(code, member[1], false);
        return true;
    }
    return false;
}
