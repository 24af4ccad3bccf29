// preserve and restore: the whole dataset set aside and brought back, by command or by itself
// when the program that preserved it ends. The rows are kept in memory when they fit, else in
// a temporary file.
#include "core/files.h"
#include "core/mem.h"
#include "core/progress.h"
#include "core/rc.h"
#include "core/state.h"
#include "interp/preserve.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "data/variables.h"
#include "interp/dm.h"
#include "interp/interp.h"
#include "interp/macros.h"
#include "interp/messages.h"
#include "interp/programs.h"
#include "output/print.h"
#include <cstring>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

int32_t psvfctr = -1;

// Above this many bytes of rows the disk is used.
constexpr uint64_t memory_limit = uint64_t{1} << 31;

namespace {
struct keptvar {
    uint8_t type;
    char name[33], fmt[49], lbl[33];
};
}  // namespace
struct keptdata {
    std::vector<keptvar> vars;
    std::vector<int16_t> sorted;
    std::vector<void *> objects;  // copies of the dm records of the dataset, oldest first
    std::string fn, fndate, path;
    char label[81];
    char sample[33];
    bool changed;
    int32_t N;
    uint64_t lrec;
    char *rows = nullptr;  // null when they are in the file
    bool memory_only = false;
    ~keptdata();
    keptdata() = default;
    keptdata(const keptdata &) = delete;
    keptdata &operator=(const keptdata &) = delete;
};
keptdata::~keptdata()
{
    safefree(rows);
    for (void *o : objects)
        safefree(o);
    if (!path.empty())
        unlink(path.c_str());
}

static std::vector<std::unique_ptr<keptdata>> stack;

namespace {

// Types of records that belong to the dataset: value labels, variable labels, characteristics.
constexpr int32_t owned[] = {DM_VALLABEL, DM_VARLABEL, DM_CHAR};

// A copy of a record outside the store.
void *copy_of(const dmrec *r)
{
    void *p = safemalloc(dm_hdrsize + r->len);
    if (p)
        memcpy(p, r, dm_hdrsize + r->len);
    return p;
}

int32_t keep_objects(keptdata *k)
{
    for (int32_t type : owned) {
        std::vector<const dmrec *> found;
        for (const dmrec *r = dm_dtyp[type]; r; r = r->tnext)
            found.push_back(r);
        for (size_t i = found.size(); i-- > 0;) {
            void *c = copy_of(found[i]);
            if (!c)
                return error(RC_NOMEM);
            k->objects.push_back(c);
        }
    }
    return 0;
}

int32_t rows_to_memory(keptdata *k, uint64_t bytes)
{
    k->rows = static_cast<char *>(safemalloc(bytes));
    if (!k->rows)
        return RC_NOMEM;
    for (int32_t i = 1; i <= k->N; i++) {
        dsa_getdtaobs(sysdsa, k->rows + uint64_t(i - 1) * k->lrec, uint32_t(i), -1);
        if (progress_poll("preserving", i, k->N))
            return RC_BREAK;
    }
    return 0;
}

int32_t rows_to_disk(keptdata *k)
{
    k->path = mktmpfn();
    int32_t fd = ov_open(k->path.c_str(), OV_REPLACE);
    if (fd < 0)
        return fierr(-fd, k->path.c_str());
    std::unique_ptr<char[]> row(new (std::nothrow) char[k->lrec + 1]);
    int32_t rc = row ? 0 : error(RC_NOMEM);
    wrinit();
    for (int32_t i = 1; i <= k->N && !rc; i++) {
        dsa_getdtaobs(sysdsa, row.get(), uint32_t(i), -1);
        if (wr(fd, row.get(), int64_t(k->lrec)))
            rc = fierr(RC_IOWRITE, k->path.c_str());
        else
            rc = progress_poll("preserving", i, k->N);
    }
    ov_close(fd);
    return rc;
}

int32_t keep_rows(keptdata *k)
{
    uint64_t bytes = uint64_t(k->N) * k->lrec;
    if (!bytes)
        return 0;
    bool memory = bytes <= memory_limit || k->memory_only;
    int32_t rc = memory ? rows_to_memory(k, bytes) : RC_NOMEM;
    if (rc != RC_NOMEM)
        return rc;
    return k->memory_only ? error(RC_NOMEM) : rows_to_disk(k);
}

int32_t keep(keptdata *k)
{
    k->rows = nullptr;
    k->N = _Nobs;
    k->lrec = dsa_lrec(sysdsa);
    for (int32_t i = 0; i < _Kvar; i++) {
        keptvar v = {};
        v.type = _typlist[i];
        memcpy(v.name, _varlist[i], sizeof v.name);
        memcpy(v.fmt, _fmtlist[i], sizeof v.fmt);
        memcpy(v.lbl, _lbllist[i], sizeof v.lbl);
        k->vars.push_back(v);
        k->sorted.push_back(_srtlist ? _srtlist[i] : int16_t(0));
    }
    memcpy(k->label, datalbl, sizeof k->label);
    k->changed = s_updata;
    if (const char *p = macptr("S_FN"))
        k->fn = p;
    if (const char *p = macptr("S_FNDATE"))
        k->fndate = p;
    int32_t rc = keep_objects(k);
    return rc ? rc : keep_rows(k);
}

int32_t bring_rows(keptdata *k)
{
    if (!k->N || !k->lrec)
        return 0;
    if (k->rows) {
        for (int32_t i = 1; i <= k->N; i++)
            dsa_putdtaobs(sysdsa, k->rows + uint64_t(i - 1) * k->lrec, uint32_t(i), -1);
        return 0;
    }
    int32_t fd = ov_open(k->path.c_str(), OV_READ);
    if (fd < 0)
        return fierr(-fd, k->path.c_str());
    std::unique_ptr<char[]> row(new (std::nothrow) char[k->lrec + 1]);
    int32_t rc = row ? 0 : error(RC_NOMEM);
    for (int32_t i = 1; i <= k->N && !rc; i++) {
        if (lovata_read(fd, row.get(), int64_t(k->lrec)) != int64_t(k->lrec))
            rc = fierr(RC_IOREAD, k->path.c_str());
        else
            dsa_putdtaobs(sysdsa, row.get(), uint32_t(i), -1);
    }
    ov_close(fd);
    return rc;
}

int32_t bring_objects(keptdata *k)
{
    for (int32_t type : owned)
        dmzap(type);
    for (void *o : k->objects) {
        auto r = static_cast<dmrec *>(o);
        int32_t rc = dmsave23(r->name, r->type, r->aux, r->a, r->b, dm_payload(r), r->len);
        if (rc)
            return rc;
    }
    return 0;
}

int32_t bring_vars(keptdata *k)
{
    for (const keptvar &v : k->vars) {
        int32_t rc = dsa_add_var(sysdsa, v.type, v.name, v.fmt);
        if (rc)
            return rc;
        memcpy(_lbllist[_Kvar - 1], v.lbl, sizeof v.lbl);
    }
    return k->N ? dsa_add_obs(sysdsa, k->N, false) : 0;
}

int32_t bring(keptdata *k)
{
    drop_all();
    int32_t rc = bring_vars(k);
    _i_Kvar = _Kvar;
    if (!rc)
        rc = bring_rows(k);
    if (!rc)
        rc = bring_objects(k);
    if (rc)
        return rc;
    for (size_t i = 0; i < k->sorted.size(); i++)
        _srtlist[i] = k->sorted[i];
    memcpy(datalbl, k->label, sizeof k->label);
    s_updata = k->changed;
    newDtaset = upSort = upFormat = upValLabel = true;
    rc = macresave("S_FN", k->fn.c_str());
    return rc ? rc : macresave("S_FNDATE", k->fndate.c_str());
}

void forget()
{
    stack.pop_back();
    psvfctr = -1;
}

// Reads `, word [word]`; each word may be cut to three letters.
int32_t options(bool *no, bool *again)
{
    const char *tok = ti_gettok(tokinfo, prsestd);
    if (!*tok)
        return 0;
    if (*tok != ',')
        return error(RC_SYNTAX);
    while (*(tok = ti_gettok(tokinfo, prsestd))) {
        if (no && !strcmp(tok, "not"))
            *no = true;
        else if (again && cmdcmp(tok, "preserve", 3))
            *again = true;
        else
            return errout(RC_SYNTAX, "option %s not allowed\n", tok_text(tok));
    }
    return 0;
}

}  // namespace

keptdata *data_keep(int32_t *rc)
{
    auto k = std::make_unique<keptdata>();
    k->memory_only = true;
    *rc = keep(k.get());
    return *rc ? nullptr : k.release();
}

int32_t data_bring(keptdata *k) { return bring(k); }
void data_forget(keptdata *k) { delete k; }

int32_t preservecmd(int32_t)
{
    int32_t rc = options(nullptr, nullptr);
    if (rc)
        return rc;
    if (psvfctr != -1)
        return error(621);
    auto k = std::make_unique<keptdata>();
    if ((rc = keep(k.get())))
        return rc;
    psvfctr = int32_t(stack.size());
    stack.push_back(std::move(k));
    return 0;
}

int32_t restorecmd(int32_t)
{
    bool no = false, again = false;
    int32_t rc = options(&no, &again);
    if (rc)
        return rc;
    if (no && again)
        return error(184);
    if (psvfctr == -1)
        return error(622);
    if (!no)
        rc = bring(stack.back().get());
    if (!again)
        forget();
    return rc;
}

int32_t restore_atend(int32_t rc)
{
    if (psvfctr == -1)
        return rc;
    // A break that ended the program may not keep the data from coming back.
    int32_t was = stopflag;
    stopflag = 0;
    int32_t rc2 = bring(stack.back().get());
    forget();
    stopflag = was;
    return rc ? rc : rc2;
}

void preserve_shutdown()
{
    stack.clear();
    psvfctr = -1;
}
