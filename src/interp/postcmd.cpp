// postfile, post, postclose, postutil: rows written one by one into a dataset file of their
// own, beside the data in memory. The file is a dataset from the start; its number of rows
// is put in when it is closed.
#include "core/bytes.h"
#include "core/files.h"
#include "core/mem.h"
#include "core/missing.h"
#include "core/rc.h"
#include "core/settings.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/dtafile.h"
#include "data/dtafmt.h"
#include "data/variables.h"
#include "expr/expr.h"
#include "expr/parse.h"
#include "expr/varlist.h"
#include "interp/dm.h"
#include "interp/interp.h"
#include "interp/messages.h"
#include "interp/programs.h"
#include "interp/syntaxpat.h"
#include "output/fmt.h"
#include "output/print.h"
#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr uint8_t post_release = 114;
constexpr size_t buffered = 65536;

struct postvar {
    uint8_t type;
    char name[33];
};
struct posting {
    std::string path;
    std::vector<postvar> vars;
    std::string rows;   // not yet written
    int32_t fd = -1, n = 0, every = 0;
    bool failed = false, done = false;

    ~posting()
    {
        if (fd >= 0)
            ov_close(fd);
        if (!done)
            ov_discard(path.c_str());
    }
};

posting *of(void *payload) { return *static_cast<posting **>(payload); }

int32_t flush(posting *p)
{
    int64_t n = int64_t(p->rows.size());
    if (!p->failed && lovata_write(p->fd, p->rows.data(), n) != n)
        p->failed = true;
    p->rows.clear();
    return p->failed ? fierr(RC_IOWRITE, p->path.c_str()) : 0;
}

int32_t put_header(posting *p)
{
    dtahdr h = {};
    h.release = post_release;
    h.K = int16_t(p->vars.size());
    h.N = p->n;
    wrinit();
    return wrhdr(p->fd, &h, false) ? fierr(RC_IOWRITE, p->path.c_str()) : 0;
}

void field(std::string *out, const char *text, size_t w)
{
    size_t n = strnlen(text, w - 1);
    out->append(text, n);
    out->append(w - n, '\0');
}

// What stands between the header and the rows.
int32_t put_dictionary(posting *p)
{
    const dtalayout *lay = dta_layout(post_release);
    for (const dtasection *s = dtasections; s->name; s++) {
        if (s->which == DS_SORT) {
            p->rows.append(2 * (p->vars.size() + 1), '\0');
            continue;
        }
        for (const postvar &v : p->vars) {
            char fmt[49];
            if (s->which == DS_TYPES)
                p->rows += char(v.type);
            else
                field(&p->rows, s->which == DS_NAMES  ? v.name
                                : s->which == DS_FMTS ? fmt_default(v.type, fmt)
                                                      : "",
                      lay->width[s->which]);
        }
    }
    p->rows.append(5, '\0');
    return flush(p);
}

void *find(const char *name)
{
    return dmfind0(name, DM_TMPNAME);
}

int32_t nopost(const char *name) { return errout(RC_NOTFOUND, "post %s not found\n", name); }

int32_t open_file(posting *p, bool replace)
{
    p->path = path_addext(path_expand(p->path), ".dta");
    p->fd = ov_open(p->path.c_str(), replace ? OV_REPLACE : OV_CREATE);
    if (p->fd >= 0)
        return 0;
    p->done = true;  // nothing of ours is there to remove
    return fierr(-p->fd, p->path.c_str());
}

// postfile NAME newvarlist using FILE [, every(#) double replace]
int32_t open_post()
{
    char name[33], file[filenamelen + 1];
    const char *tok = ti_gettok(tokinfo, prsestd);
    int32_t rc = chkname(tok, false);
    if (rc)
        return rc;
    memcpy(name, tok, strlen(tok) + 1);
    if (find(name))
        return errout(RC_EXISTS, "post %s already exists\n", name);
    pi_newtype = 0;
    if ((rc = ti_newvlist(tokinfo)))
        return rc;
    std::vector<newvar> vars(pi_new, pi_new + pi_nnew);
    if (vars.empty())
        return required("newvarlist");
    if (strcmp(ti_gettok(tokinfo, prsestd), "using"))
        return required("using");
    if ((rc = ti_gettokfn(tokinfo, file)))
        return error(rc);
    parinfo->pi_opts = PI_OK;
    parinfo->pi_nopt = 0;
    if (*ti_gettok(tokinfo, prsestd)) {
        if (*tokinfo->token != ',')
            return error(RC_SYNTAX);
        if ((rc = ti_proption(tokinfo, parinfo)))
            return rc;
    }
    bool replace = ti_pi_hasopt(tokinfo, parinfo, "replace", 7);
    bool dbl = ti_pi_hasopt(tokinfo, parinfo, "double", 6);
    int32_t every = ti_pi_findopta(tokinfo, parinfo, "every", 5, 0);
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    auto p = std::make_unique<posting>();
    p->path = file;
    p->every = every;
    uint8_t plain = dbl ? uint8_t(T_DOUBLE) : type_ofword(set_type);
    for (const newvar &v : vars) {
        postvar pv = {v.type ? v.type : plain, {}};
        memcpy(pv.name, v.name, sizeof pv.name);
        p->vars.push_back(pv);
    }
    if ((rc = open_file(p.get(), replace)) || (rc = put_header(p.get())) ||
        (rc = put_dictionary(p.get())))
        return rc;
    // Under a temporary name it goes with its program.
    void *rec = dmadd(name, DM_TMPNAME, istmpvn(name, 0) ? typelmac : 0, sizeof(posting *));
    if (!rec)
        return RC_DMMEM;
    posting *raw = p.release();
    memcpy(rec, &raw, sizeof raw);
    return 0;
}

int32_t put_value(posting *p, const postvar &v, const std::string &text)
{
    bool isstr, want = t_isstr(v.type);
    double z;
    char s[256], cell[8];
    int32_t rc = exp_text(text.c_str(), W_ANY, &isstr, &z, s);
    if (rc)
        return rc;
    if (isstr != want)
        return error(RC_TYPE);
    if (isstr) {
        size_t n = strnlen(s, v.type);
        p->rows.append(s, n);
        p->rows.append(v.type - n, '\0');
        return 0;
    }
    cell_store(z, v.type, cell);
    int32_t w = dsa_bytlenc(v.type);
    if (b_native != B_LITTLE)
        std::reverse(cell, cell + w);
    p->rows.append(cell, size_t(w));
    return 0;
}

// post NAME (exp) (exp) ...
int32_t post_row()
{
    std::string name = ti_gettok(tokinfo, prsestd);
    void *rec = find(name.c_str());
    if (!rec)
        return nopost(name.c_str());
    posting *p = of(rec);
    std::string line(ti_wheretok(tokinfo));
    const char *at = line.c_str();
    size_t had = p->rows.size(), i = 0;
    int32_t rc = 0;
    for (; !rc; i++) {
        while (*at == ' ')
            at++;
        if (!*at)
            break;
        const char *end = *at == '(' ? syn_closeparen(at) : nullptr;
        if (!end || i >= p->vars.size())
            rc = end ? errout(RC_SYNTAX, "too many expressions\n") : error(RC_SYNTAX);
        else
            rc = put_value(p, p->vars[i], std::string(at + 1, end - 1));
        at = end;
    }
    if (!rc && i < p->vars.size())
        rc = errout(RC_SYNTAX, "too few expressions\n");
    if (rc) {
        p->rows.resize(had);
        return rc;
    }
    p->n++;
    if (p->rows.size() >= buffered || (p->every > 0 && p->n % p->every == 0))
        return flush(p);
    return 0;
}

int32_t close_post(void *rec)
{
    posting *p = of(rec);
    int32_t rc = flush(p);
    if (!rc && lseek(p->fd, 0, SEEK_SET) != 0)
        rc = fierr(RC_IOWRITE, p->path.c_str());
    if (!rc)
        rc = put_header(p);
    p->done = !rc;
    dmrm(rec);
    return rc;
}

int32_t util()
{
    const char *tok = ti_gettok(tokinfo, prsestd);
    if (!strcmp(tok, "clear")) {
        dmzap(DM_TMPNAME);
        return 0;
    }
    if (!cmdcmp(tok, "dir", 1))
        return error(RC_SYNTAX);
    char name[33];
    outlev_keep level(0);
    for (void *p = nullptr; (p = dmnext(p, name, DM_TMPNAME, nullptr));)
        if (spout21f("%12s  %d\n", name, of(p)->n))
            return stopflag;
    return 0;
}

}  // namespace

void post_onremove(void *payload)
{
    delete of(payload);
}

int32_t postcmd(int32_t what)
{
    if (what == 0)
        return open_post();
    if (what == 1)
        return post_row();
    if (what == 3)
        return util();
    std::string name = ti_gettok(tokinfo, prsestd);
    void *rec = find(name.c_str());
    return rec ? close_post(rec) : nopost(name.c_str());
}
