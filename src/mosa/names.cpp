// Finding values and functions by name, and accounting for them.
#include "core/mem.h"
#include "core/settings.h"
#include "core/text.h"
#include "mosa/mtypes.h"
#include "mosa/values.h"
#include "mosa/vm.h"
#include "output/print.h"
#include <cstdio>

const char *mo_name(const matobj *m)
{
    return m->info ? m->info->name : "";
}

// ---- functions

void mo_dmnamingconvention(const char *cls, const char *name, const char *subname, char *key,
                           char *rest)
{
    snprintf(key, 33, "%.32s", *cls ? cls : name);
    snprintf(rest, 70, "%.32s%s%.32s", *cls ? name : "", *subname ? "::" : "", subname);
}

matobj *mo_allocfcn(const char *cls, const char *name, const char *subname, int64_t bytes)
{
    char key[33], rest[70];
    mo_dmnamingconvention(cls, name, subname, key, rest);
    auto *info = static_cast<matinfo *>(safecalloc(sizeof(matinfo)));
    void *code = info ? safecalloc(size_t(bytes)) : nullptr;
    auto *f = code ? static_cast<matobj *>(dmadd(key, DM_MOSAFCN, 0, sizeof(matobj))) : nullptr;
    if (!f) {
        safefree(info);
        safefree(code);
        return nullptr;
    }
    memcpy(info->name, name, strnlen(name, 32));
    memcpy(info->subname, subname, strnlen(subname, 32));
    info->inclass = *cls != 0;
    info->stamp = m_sysclock;
    f->data = code;
    f->info = info;
    f->alloc = bytes;
    f->links = 1;
    f->level = -1;
    f->status = 1;
    return f;
}

static matobj *find_in(const char *key, bool inclass, const char *name, const char *subname)
{
    void *p = dmfind0(key, DM_MOSAFCN);
    for (; p; p = dmnamenext(p, DM_MOSAFCN)) {
        auto *f = static_cast<matobj *>(p);
        if ((f->info->inclass != 0) == inclass && !strcmp(f->info->name, name) &&
            !strcmp(f->info->subname, subname))
            return f;
    }
    return nullptr;
}

static matobj *first_in(const char *cls)
{
    void *p = dmfind0(cls, DM_MOSAFCN);
    while (p && !static_cast<matobj *>(p)->info->inclass)
        p = dmnamenext(p, DM_MOSAFCN);
    return static_cast<matobj *>(p);
}

matobj *mo_findfcn(const char *cls, const char *name, const char *subname)
{
    if (*cls)
        if (matobj *f = find_in(cls, true, name, subname))
            return f;
    return *name ? find_in(name, false, name, subname) : nullptr;
}

bool fcnnameavbl(const char *cls, const char *name, const char *subname, char *buffer)
{
    matobj *f = mo_findfcn(cls, name, subname);
    if (!f || (*cls && !f->info->inclass))
        return true;
    snprintf(buffer, 110, "%s%s%s%s%s", cls, *cls ? "." : "", name, *subname ? "::" : "", subname);
    return false;
}

void mo_dropclass(const char *cls)
{
    if (!*cls)
        return;
    for (matobj *f; (f = first_in(cls));)
        m_rmobject(f);
}

void mo_renamefcn(matobj *f, const char *name)
{
    strcut(f->info->name, sizeof f->info->name, name);
    if (!f->info->inclass)
        dmrename(f, f->info->name);
}

// ---- matrices

matobj *findlvl0mat(const char *name)
{
    for (matobj *m = mo_nextmat(nullptr); m; m = mo_nextmat(m))
        if (m->level <= 0 && m->info && !strcmp(m->info->name, name))
            return m;
    return nullptr;
}

matobj *findglobalmat(const char *name)
{
    for (matobj *m = mo_nextmat(nullptr); m; m = mo_nextmat(m))
        if (m->level == -1 && m->info && !strcmp(m->info->name, name))
            return m;
    return nullptr;
}

double findglobalrs(const char *name, double dflt)
{
    const matobj *m = findglobalmat(name);
    return m && m->eltype == MO_REAL && m->view == 0 && mo_is1by1(m) ? *mo_re(m) : dflt;
}

bool m_isvisible(const matobj *m)
{
    return m->level < 1 && *mo_name(m);
}
bool m_isglobal(const matobj *m)
{
    return m->level < 0 && *mo_name(m);
}

void m_makeinvisible(matobj *m)
{
    int32_t type = dm_rec(m)->type;
    if (type != DM_MOSA && type != DM_MOSAFCN) {
        spout21at(3, "object not function or matrix\n");
        return;
    }
    if (m->info)
        m->info->name[0] = '\0';
    if (type == DM_MOSAFCN)
        dmrename(m, "");
}

bool m_rmobject(matobj *m)
{
    if (!m_isvisible(m))
        return false;
    if (m->links < 2) {
        mo_free(m);
        return true;
    }
    m->links--;
    m_makeinvisible(m);
    return false;
}

bool m_rmglobalmat(const char *name)
{
    matobj *m = findglobalmat(name);
    return m && m_rmobject(m);
}

int32_t mo_renamemat(matobj *m, const char *name)
{
    if (!m->info && !(m->info = static_cast<matinfo *>(safecalloc(sizeof(matinfo))))) {
        m_xrc = 3900;
        return 1;
    }
    strcut(m->info->name, sizeof m->info->name, name);
    return 0;
}

// ---- walking and counting

static matobj *next_of(matobj *m, int32_t type)
{
    dmrec *r = m ? dm_rec(m)->tnext : dm_dtyp[type];
    return r ? static_cast<matobj *>(dm_payload(r)) : nullptr;
}

matobj *mo_nextfcn(matobj *f)
{
    return next_of(f, DM_MOSAFCN);
}

matobj *mo_nextmat(matobj *m)
{
    do
        m = next_of(m, DM_MOSA);
    while (m && !m->status);
    return m;
}

int32_t mo_cnt()
{
    m_sums s = m_getsum();
    return s.nfcn + s.nauto + s.nclass + s.nmat + 1;
}

int64_t m_objsize(const matobj *m)
{
    if (mo_isfcn(m) || m->eltype != MO_STRING || m->view)
        return m->alloc;
    int64_t bytes = 0;
    for (int64_t i = 0, n = mo_count(m); i < n; i++)
        bytes += sel_len(mo_sel(m)[i]);
    return bytes;
}

m_sums m_getsum()
{
    m_sums s{};
    for (matobj *f = mo_nextfcn(nullptr); f; f = mo_nextfcn(f)) {
        bool inclass = f->info->inclass;
        (inclass ? s.nclass : f->view ? s.nauto : s.nfcn)++;
        (inclass ? s.inclass : f->view ? s.autos : s.fcn) += m_objsize(f);
    }
    for (matobj *m = mo_nextmat(nullptr); m; m = mo_nextmat(m)) {
        s.nmat++;
        s.mat += m_objsize(m);
    }
    return s;
}

int64_t mosa_extra()
{
    m_sums s = m_getsum();
    return s.fcn + s.autos + s.inclass + s.mat;
}

bool mosa_has_any_memory()
{
    if (mo_nextmat(nullptr))
        return true;
    for (matobj *f = mo_nextfcn(nullptr); f; f = mo_nextfcn(f))
        if (!f->info->inclass)
            return true;
    if (!dm_dtyp[DM_MOSAFCN])
        mo_reinit();
    return false;
}

void m_resetclock()
{
    m_sysclock = 2;
    for (matobj *f = mo_nextfcn(nullptr); f; f = mo_nextfcn(f)) {
        if (mo_clearlinks)
            mo_clearlinks(f);
        if (f->view)
            f->info->stamp = 1;
    }
}

void m_dropoldfcns()
{
    while (m_albytes > int64_t(set_mosacache) * 1024) {
        matobj *oldest = nullptr;
        for (matobj *f = mo_nextfcn(nullptr); f; f = mo_nextfcn(f))
            if (f->view == 1 && f->links == 1 && (!oldest || f->info->stamp <= oldest->info->stamp))
                oldest = f;
        if (!oldest)
            return;
        mo_freefcn(oldest);
    }
}
