// The symbols of the function being built, and the notes about how they are used.
#include "core/settings.h"
#include "core/text.h"
#include "mosa/cc_int.h"
#include "output/print.h"
#include <cstring>

static int32_t new_symbol(const char *name, int32_t cls, int32_t kind, int32_t type)
{
    if (m_cc->nsym >= cc_maxsym)
        cc_err("no room to add more symbols\n");
    cc_sym &s = m_cc->sym[m_cc->nsym];
    s = {};
    strcut(s.name, sizeof s.name, name);
    s.cls = int8_t(cls);
    s.kind = int8_t(kind);
    s.type = type;
    return m_cc->nsym++;
}

int32_t st_find(const char *name, int32_t kind)
{
    for (int32_t i = 0; i < m_cc->nsym; i++)
        if ((m_cc->sym[i].kind & kind) && !strcmp(m_cc->sym[i].name, name))
            return i;
    return -1;
}

int32_t st_add(const char *name, int32_t cls, int32_t kind, int32_t type)
{
    if (cls < SC_LOCAL || cls > SC_PARAM)
        cc_err("system failure:  illegal storage class\n");
    if (st_find(name, kind) >= 0)
        cc_err("symbol %s multiply defined\n", name);
    int32_t i = new_symbol(name, cls, kind, type);
    m_cc->sym[i].declared = true;
    return i;
}

// Scalars of structs and classes are built when the function begins.
static bool is_constructed(const cc_sym &s)
{
    const mtyp_entry &e = ty_of(s.type);
    return s.declared && (e.eltype == MT_STRUCT || e.eltype == MT_CLASS) && e.orgtype == OT_SCALAR;
}

void st_mark(int32_t sym, int32_t mode)
{
    cc_sym &s = m_cc->sym[sym];
    if (mode == ST_READ && !s.assigned && !is_constructed(s))
        s.beforeset = true;
    // In a statement what is handed over must be there; in a function it begins empty.
    if (mode == ST_REF && !s.assigned && !m_pgm.isfunc)
        s.beforeset = true;
    if (mode & ST_READ)
        s.read = true;
    if (mode & ST_SET) {
        s.symiscr |= !s.beforeset;
        s.assigned = true;
    }
}

int32_t st_findoradd(const char *name, int32_t kind, int32_t mode)
{
    int32_t i = st_find(name, kind);
    if (i < 0)
        i = new_symbol(name, SC_EXTERNAL, kind, ty(MT_TRANSMORPHIC, OT_MATRIX));
    st_mark(i, mode);
    return i;
}

void st_undeclared()
{
    bool any = false;
    for (int32_t i = m_pgm.nargs; i < m_cc->nsym; i++) {
        cc_sym &s = m_cc->sym[i];
        if (s.kind != SK_VAR || s.cls != SC_EXTERNAL || s.declared)
            continue;
        if (set_mosastrict) {
            spout21fat(3, "variable %s undeclared\n", s.name);
            any = true;
        } else
            s.cls = SC_LOCAL;
    }
    if (any)
        throw cc_abort{};
}

static void note(const char *what, const char *name, const char *rest)
{
    spout21fat(1, "note: %s%s%s\n", what, name, rest);
}

static void note_of(const cc_sym &s)
{
    if (s.cls == SC_PARAM) {
        if (s.read || s.assigned)
            return;
        if (s.kind == SK_FCN)
            note("function ", s.name, "() unused");
        else
            note("argument ", s.name, " unused");
        return;
    }
    if (s.kind != SK_VAR)
        return;
    if (!s.read && !s.assigned)
        note("variable ", s.name, " unused");
    else if (s.cls == SC_EXTERNAL)
        return;
    else if (s.beforeset)
        note("variable ", s.name, " may be used before set");
    else if (!s.read)
        note("variable ", s.name, " set but not used");
}

void st_notes()
{
    for (int32_t i = m_pgm.isnonstatic; i < m_cc->nsym; i++)
        note_of(m_cc->sym[i]);
    bool special = !strcmp(m_pgm.name, "new") || !strcmp(m_pgm.name, "destroy");
    if (m_pgm.isnonstatic && !m_pgm.thisused && !m_pgm.isvirtual && !special)
        spout21at(1, "note: this function could be static\n");
}
