// tests/fuzz/fuzz_mlib.cpp - library files of any making: opened, described, searched; every
// member is loaded, looked at as what it says it is, turned into the other byte order and back,
// and added to another library.
#include "../session.h"
#include "core/settings.h"
#include "mosa/classdef.h"
#include "mosa/image.h"
#include "mosa/mlib.h"
#include "mosa/vm.h"
#include <vector>

static void setup()
{
    session();
    if (mosastakinit(1))
        abort();
    s_outlev = 5;
}

static void spill(const char *path, const uint8_t *p, size_t n)
{
    int32_t fd = ov_open(path, OV_REPLACE);
    if (fd < 0 || lovata_write(fd, p, int64_t(n)) != int64_t(n))
        abort();
    ov_close(fd);
}

static void use(matobj *f, mlib_header *other, int32_t fd)
{
    int32_t *code = mo_code(f);
    const char *why = f->cols == MT_STRUCTDEF  ? sd_check(code, f->rows)
                      : f->cols == MT_CLASSDEF ? cls_check(code, f->rows)
                                               : m_checkcode(code, f->rows);
    int32_t added;
    if (!mlib_fancyadd(fd, other, f, false, &added) && why)
        abort(); // what is unfit has no place in a library
    if (!why && f->cols != MT_CLASSDEF) {
        std::vector<int32_t> there(code, code + f->rows);
        if (f->cols != MT_STRUCTDEF)
            m_cleanpgm(there.data(), f->rows);
        std::vector<int32_t> was = there;
        if (!m_revimage(there.data(), f->rows, f->cols, false) &&
            (m_revimage(there.data(), f->rows, f->cols, true) || there != was))
            abort();
    }
    if (f->cols == MT_STRUCTDEF) {
        if (matobj *m = m_mkstructarray(f, 1, 1))
            mo_free(m);
    } else if (f->cols == MT_CLASSDEF) {
        if (!m_rt_prepareclassdef(f))
            m_rt_freeclassdef(f);
    } else
        m_disasm(code, f->rows);
    m_xrc = 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *p, size_t n)
{
    static const bool ready = (setup(), true);
    static mlib_header h, other;
    if (!ready)
        return 0;
    spill("lfuzz.mlib", p, n);
    int32_t fd = mlib_init(&h, "lfuzz.mlib", ML_READ, false);
    if (fd < 0)
        return 0;
    ov_discard("lout.mlib");
    if (mlib_create("lout.mlib", 60))
        abort();
    int32_t out = mlib_init(&other, "lout.mlib", ML_WRITE, false);
    if (run("mosa describe using lfuzz.mlib") < 0)
        abort();
    strcpy(set_mosalibs, "lfuzz");
    mlib_info info;
    for (int32_t k = 0; k < h.nmembers && k < 50; k++) {
        if (mlib_nmbr(fd, &h, k, &info))
            continue;
        matobj *f = m_autoload(h.cls[k], h.name[k]);
        if (!f)
            continue;
        if (f->rows < 3 || int64_t(f->rows) * 4 != f->alloc)
            abort();
        use(f, &other, out);
    }
    ov_close(fd);
    ov_close(out);
    for (matobj *f; (f = mo_nextfcn(nullptr));)
        mo_freefcn(f);
    m_newstatement();
    m_freeunlinkedmats();
    if (mo_nextmat(nullptr) || m_albytes)
        abort();
    return 0;
}
