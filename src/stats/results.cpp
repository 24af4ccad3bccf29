#include "stats/results.h"
#include "core/missing.h"
#include "core/numtext.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/umat.h"
#include "data/variables.h"
#include "interp/dm.h"
#include "output/fmt.h"
#include "output/print.h"
#include <cstring>
#include <vector>

static constexpr int32_t ntable = 20;
struct fastrow {
    char name[33];
    double value;
    int32_t cat;
};
// The scalars of r() or e() that need no record.
struct fasttable {
    fastrow row[ntable];
    int32_t n;
};
static fasttable rtable, etable;
uint8_t retval_flag;
static constexpr uint8_t RF_TABLE = 1, RF_DM = 2;

bool lastest, lastest_op;
char esamplename[33];
int32_t savres_cat;
double usresult[21];

// What one store is made of. The hold's types depend on the level.
struct storetypes {
    fasttable *table;
    int32_t scalar, macro, matrix, rows, cols, aux1, aux2;
};

static storetypes types_of(int32_t kind)
{
    switch (kind) {
    case RK_R:
        return {&rtable, DM_RSCALAR, DM_RMACRO, DM_RMATRIX, DM_RMATROWS, DM_RMATCOLS, DM_RAUX1,
                DM_RAUX2};
    case RK_E:
        return {&etable, DM_ESCALAR, DM_EMACRO, DM_EMATRIX, DM_EMATROWS, DM_EMATCOLS, DM_EAUX1,
                DM_EAUX2};
    case RK_RETURN:
        return {nullptr, typelmac + DM_TO_RETSCALAR, typelmac + DM_TO_RETMACRO,
                typelmac + DM_TO_RETMATRIX, typelmac + DM_TO_RETROWS, typelmac + DM_TO_RETCOLS,
                typelmac + DM_TO_RETAUX1, typelmac + DM_TO_RETAUX2};
    default:
        return {nullptr, -1, DM_SMACRO, -1, -1, -1, -1, -1};
    }
}

// ---- the current item
enum { CI_NONE, CI_RTABLE, CI_ETABLE, CI_SCALAR, CI_MACRO, CI_MATRIX };
static struct {
    int32_t what, index;
    void *at;
} cur;

static int32_t table_find(const fasttable *t, const char *name)
{
    for (int32_t i = 0; i < t->n; i++)
        if (!strcmp(t->row[i].name, name))
            return i;
    return -1;
}

int32_t gretval_find(int32_t kind, const char *name)
{
    storetypes s = types_of(kind);
    cur = {CI_NONE, 0, nullptr};
    if (s.table && (cur.index = table_find(s.table, name)) >= 0) {
        cur.what = kind == RK_R ? CI_RTABLE : CI_ETABLE;
        return DM_SCALAR;
    }
    if (s.scalar >= 0 && (cur.at = dmfind0(name, s.scalar))) {
        cur.what = CI_SCALAR;
        return DM_SCALAR;
    }
    if ((cur.at = dmfind0(name, s.macro))) {
        cur.what = CI_MACRO;
        return DM_LOCAL;
    }
    if (s.matrix >= 0 && (cur.at = dmfind0(name, s.matrix))) {
        cur.what = CI_MATRIX;
        return DM_MATRIX;
    }
    return 0;
}

double retval_get_as_double()
{
    if (cur.what == CI_RTABLE || cur.what == CI_ETABLE)
        return (cur.what == CI_RTABLE ? rtable : etable).row[cur.index].value;
    return cur.what == CI_SCALAR ? *static_cast<double *>(cur.at) : misval;
}

const char *retval_get_strptr()
{
    return cur.what == CI_MACRO ? static_cast<const char *>(cur.at) : "";
}

void retval_get_as_string(char *buf, int32_t max)
{
    const char *p = retval_get_strptr();
    size_t n = strnlen(p, size_t(max));
    memcpy(buf, p, n);
    buf[n] = 0;
}

int32_t retval_get_as_double_any(double *out)
{
    if (cur.what == CI_MACRO)
        return cnvstoz(retval_get_strptr(), out);
    *out = retval_get_as_double();
    return cur.what == CI_NONE || cur.what == CI_MATRIX;
}

int32_t retval_get_rvcat()
{
    if (cur.what == CI_RTABLE || cur.what == CI_ETABLE)
        return (cur.what == CI_RTABLE ? rtable : etable).row[cur.index].cat;
    return cur.at ? dm_rec(cur.at)->aux : 0;
}

// ---- what the stores share

static void cut_name(char out[33], const char *name)
{
    size_t n = strnlen(name, 32);
    memcpy(out, name, n);
    out[n] = 0;
}

static bool table_add(fasttable *t, const char *name, double value, int32_t cat)
{
    if (t->n == ntable)
        return false;
    fastrow *r = &t->row[t->n++];
    cut_name(r->name, name);
    r->value = z_allexp(value) ? misval : value;
    r->cat = cat;
    return true;
}

static void table_remove(fasttable *t, int32_t i)
{
    memmove(&t->row[i], &t->row[i + 1], size_t(--t->n - i) * sizeof(fastrow));
}

static int32_t dyn_scalar(int32_t type, const char *name, double value, int32_t cat)
{
    if (z_allexp(value))
        value = misval;
    return dmsave(name, type, cat, &value, sizeof value);
}

static void erase(const storetypes &s, const char *name)
{
    if (s.table) {
        int32_t i = table_find(s.table, name);
        if (i >= 0)
            table_remove(s.table, i);
    }
    for (int32_t t : {s.scalar, s.macro, s.matrix, s.rows, s.cols, s.aux1, s.aux2})
        if (t >= 0)
            dmrm(dmfind0(name, t));
}

static void zap(const storetypes &s)
{
    for (int32_t t : {s.scalar, s.macro, s.matrix, s.rows, s.cols, s.aux1, s.aux2})
        if (t >= 0)
            dmzap(t);
    if (s.table)
        s.table->n = 0;
}

// The whole table to records, or nothing of it.
static int32_t to_dynamic(fasttable *t, int32_t type)
{
    for (int32_t i = 0; i < t->n; i++)
        if (dyn_scalar(type, t->row[i].name, t->row[i].value, t->row[i].cat)) {
            while (i-- > 0)
                dmrm(dmfind0(t->row[i].name, type));
            return RC_DMMEM;
        }
    t->n = 0;
    return 0;
}

// ---- items put by others. What is new is made under a name that nobody can have, so that the
// old one goes only when nothing can fail any more.

static constexpr char making[] = " making";

static void *made(int32_t type, int32_t cat, const void *data, size_t n)
{
    return dmsave(making, type, cat, data, n) ? nullptr : dmfind0(making, type);
}

int32_t retval_put_scalar(int32_t kind, const char *name, double z, int32_t cat)
{
    storetypes s = types_of(kind);
    if (z_allexp(z))
        z = misval;
    bool fast = s.table && (s.table->n < ntable || table_find(s.table, name) >= 0);
    void *p = fast ? nullptr : made(s.scalar, cat, &z, sizeof z);
    if (!fast && !p)
        return RC_DMMEM;
    erase(s, name);
    if (p)
        dmrename(p, name);
    else
        table_add(s.table, name, z, cat);
    if (kind == RK_R)
        retval_flag |= p ? RF_DM : RF_TABLE;
    return 0;
}

int32_t retval_put_macro(int32_t kind, const char *name, const char *text, int32_t cat)
{
    storetypes s = types_of(kind);
    void *p = *text ? made(s.macro, cat, text, strlen(text) + 1) : nullptr;
    if (*text && !p)
        return RC_DMMEM;
    erase(s, name);
    if (p)
        dmrename(p, name);
    if (p && kind == RK_R)
        retval_flag |= RF_DM;
    return 0;
}

int32_t retval_put_matrix(int32_t kind, const char *name, const char *from, int32_t cat)
{
    erase(types_of(kind), name);
    matkind to = kind == RK_E ? MK_E : kind == RK_R ? MK_R : MK_RETURN;
    if (int32_t rc = umat_rename(from, name, to))
        return rc;
    if (kind == RK_R)
        retval_flag |= RF_DM;
    dm_rec(dmfind0(name, mk_type(to)))->aux = cat;
    return 0;
}

void retval_take_away(int32_t kind, const char *name) { erase(types_of(kind), name); }

// ---- r()

void retval_zap()
{
    storetypes s = types_of(RK_R);
    if (retval_flag & RF_DM)
        zap(s);
    rtable.n = 0;
    retval_flag = 0;
}

void retval_clear() { retval_zap(); }

void retval_set_gscalar(double value, const char *name, int32_t cat)
{
    retval_flag |= RF_TABLE;
    if (table_add(&rtable, name, value, cat))
        return;
    if (!dyn_scalar(DM_RSCALAR, name, value, cat))
        retval_flag |= RF_DM;
}

void retval_reset_gscalar(double value, const char *name, int32_t cat)
{
    int32_t i = table_find(&rtable, name);
    if (i >= 0) {
        rtable.row[i].value = z_allexp(value) ? misval : value;
        rtable.row[i].cat = cat;
        return;
    }
    retval_erase(name);
    retval_set_gscalar(value, name, cat);
}

void retval_set_glocal(const char *name, const char *text, int32_t cat)
{
    if (*text && !dmsave(name, DM_RMACRO, cat, text, strlen(text) + 1))
        retval_flag |= RF_DM;
}

void retval_erase(const char *name) { erase(types_of(RK_R), name); }

int32_t retval_internal_to_dynamic()
{
    int32_t rc = to_dynamic(&rtable, DM_RSCALAR);
    if (!rc) {
        retval_flag &= uint8_t(~RF_TABLE);
        if (dm_dtyp[DM_RSCALAR])
            retval_flag |= RF_DM;
    }
    return rc;
}

// ---- e()

static void drop_s_e_names()
{
    std::vector<void *> gone;
    char name[33];
    for (int32_t t : {int32_t(DM_GLOBAL), int32_t(DM_SCALAR), int32_t(DM_MATRIX),
                      int32_t(DM_MATROWS), int32_t(DM_MATCOLS)})
        for (void *p = nullptr; (p = dmnext(p, name, t, nullptr));)
            if (!strncmp(name, "S_E_", 4))
                gone.push_back(p);
    for (void *p : gone)
        dmrm(p);
}

void estval_clear()
{
    lastest = lastest_op = false;
    zap(types_of(RK_E));
    for (int32_t t : {int32_t(DM_ESTIMATES), int32_t(DM_ESTMAT), int32_t(DM_ESTAUX1),
                      int32_t(DM_ESTAUX2)})
        dmzap(t);
    drop_s_e_names();
}

void estval_partial_clear_for_huber()
{
    etable.n = 0;
    dmzap(DM_ESCALAR);
}

void estval_partial_clear_for_post()
{
    lastest = lastest_op = false;
    for (int32_t t : {int32_t(DM_ESTIMATES), int32_t(DM_ESTMAT), int32_t(DM_ESTAUX1)})
        dmzap(t);
    for (const char *name : {"b", "V"})
        umat_rm(name, MK_E);
}

static const char *emacro(const char *name)
{
    return gretval_find(RK_E, name) == DM_LOCAL ? retval_get_strptr() : "";
}

void estval_save_vcetype(const char *text) { (void)estval_reset_glocal("vcetype", text); }
const char *estval_use_vcetype() { return emacro("vcetype"); }
void estval_save_clustvar(const char *name) { (void)estval_reset_glocal("clustvar", name); }
const char *estval_use_clustvar() { return emacro("clustvar"); }
void estval_erase_clustvar() { estval_erase("clustvar"); }
void estval_save_N_clust(double n) { (void)estval_reset_gscalar(n, "N_clust"); }
double estval_use_N_clust() { return estval_get_double("N_clust"); }
void estval_erase_N_clust() { estval_erase("N_clust"); }

void estval_set_gscalar(double value, const char *name, int32_t cat)
{
    if (!table_add(&etable, name, value, cat) && dyn_scalar(DM_ESCALAR, name, value, cat))
        return;
}

void estval_set_glocal(const char *name, const char *text, int32_t cat)
{
    if (*text && dmsave(name, DM_EMACRO, cat, text, strlen(text) + 1))
        return;
}

int32_t estval_reset_gscalar(double value, const char *name, int32_t cat)
{
    estval_erase(name);
    if (table_add(&etable, name, value, cat))
        return 0;
    return dyn_scalar(DM_ESCALAR, name, value, cat);
}

int32_t estval_reset_glocal(const char *name, const char *text, int32_t cat)
{
    estval_erase(name);
    return *text ? dmsave(name, DM_EMACRO, cat, text, strlen(text) + 1) : 0;
}

void estval_erase(const char *name) { erase(types_of(RK_E), name); }
int32_t estval_internal_to_dynamic() { return to_dynamic(&etable, DM_ESCALAR); }

double estval_get_double(const char *name)
{
    return gretval_find(RK_E, name) == DM_SCALAR ? retval_get_as_double() : misval;
}

const char *find_e_of_specialname(const char *name)
{
    if (strcmp(name, "b") && strcmp(name, "V"))
        return nullptr;
    void *p = dmfind0(name, DM_EMATRIX);
    return p ? dm_rec(p)->name : nullptr;
}

// ---- return(): the hold of this level

void myretval_clear() { zap(types_of(RK_RETURN)); }
void myretval_erase(const char *name) { erase(types_of(RK_RETURN), name); }

int32_t myretval_reset_gscalar(double value, const char *name, int32_t cat)
{
    myretval_erase(name);
    return dyn_scalar(typelmac + DM_TO_RETSCALAR, name, value, cat);
}

int32_t myretval_reset_glocal(const char *name, const char *text, int32_t cat)
{
    myretval_erase(name);
    return *text ? dmsave(name, typelmac + DM_TO_RETMACRO, cat, text, strlen(text) + 1) : 0;
}

static bool held(const char *name)
{
    storetypes s = types_of(RK_RETURN);
    return dmfind0(name, s.scalar) || dmfind0(name, s.macro) || dmfind0(name, s.matrix);
}

static void move_all(const storetypes &from, const storetypes &to)
{
    dmretypeall(from.scalar, to.scalar);
    dmretypeall(from.macro, to.macro);
    dmretypeall(from.matrix, to.matrix);
    dmretypeall(from.rows, to.rows);
    dmretypeall(from.cols, to.cols);
    dmretypeall(from.aux1, to.aux1);
    dmretypeall(from.aux2, to.aux2);
}

int32_t myretval_add()
{
    storetypes r = types_of(RK_R), h = types_of(RK_RETURN);
    // What the program set itself stays as it is. Names go first, so that a failure for lack
    // of memory leaves both stores as they were but for the doubles.
    std::vector<std::string> both;
    char name[33];
    for (int32_t i = 0; i < rtable.n; i++)
        if (held(rtable.row[i].name))
            both.emplace_back(rtable.row[i].name);
    for (int32_t t : {r.scalar, r.macro, r.matrix})
        for (void *p = nullptr; (p = dmnext(p, name, t, nullptr));)
            if (held(name))
                both.emplace_back(name);
    for (const std::string &n : both)
        retval_erase(n.c_str());
    if (retval_internal_to_dynamic())
        return RC_DMMEM;
    move_all(r, h);
    retval_zap();
    return 0;
}

void myretval_to_r()
{
    storetypes r = types_of(RK_R), h = types_of(RK_RETURN);
    retval_zap();
    if (!dm_dtyp[h.scalar] && !dm_dtyp[h.macro] && !dm_dtyp[h.matrix]) {
        for (int32_t t : {h.rows, h.cols, h.aux1, h.aux2})
            dmzap(t);
        return;
    }
    move_all(h, r);
    retval_flag = RF_DM;
}

void retval_mark_dm() { retval_flag |= RF_DM; }

// ---- s()

void sretval_clear() { dmzap(DM_SMACRO); }

int32_t sretval_reset_local(const char *name, const char *text)
{
    erase(types_of(RK_S), name);
    return *text ? dmsave(name, DM_SMACRO, 0, text, strlen(text) + 1) : 0;
}

// ---- listing

// Names of a type in the order in which they were set: chains hold the newest first.
static std::vector<void *> in_order(int32_t type)
{
    std::vector<void *> v;
    if (type >= 0)
        for (void *p = nullptr; (p = dmnext(p, nullptr, type, nullptr));)
            v.insert(v.begin(), p);
    return v;
}

static constexpr const char *prefixes[] = {"r", "return", "e", "s"};

static bool shown(int32_t cat, bool all) { return all || cat != 1; }

static void head(const char *text, bool *any)
{
    if (!*any)
        spout21f("\n%s:\n", text);
    *any = true;
}

static void row(const char *prefix, const char *name, const char *sign)
{
    char label[64];
    snprintf(label, sizeof label, "%s(%s)", prefix, name);
    spout21f("%22s %s  ", label, sign);
}

static void scalar_row(const char *prefix, const char *name, double value)
{
    char num[40];
    fmtnumtrim(num, sizeof num, value, "%18.0g");
    row(prefix, name, "=");
    spout21(num);
    spout21("\n");
}

int32_t retvals_dir(int32_t kind)
{
    storetypes s = types_of(kind);
    const char *prefix = prefixes[kind - RK_R];
    outlev_keep level(0);
    bool any = false;
    for (int32_t i = 0; s.table && i < s.table->n; i++)
        if (shown(s.table->row[i].cat, false)) {
            head("scalars", &any);
            scalar_row(prefix, s.table->row[i].name, s.table->row[i].value);
        }
    for (void *p : in_order(s.scalar))
        if (shown(dm_rec(p)->aux, false)) {
            head("scalars", &any);
            scalar_row(prefix, dm_rec(p)->name, *static_cast<double *>(p));
        }
    any = false;
    for (void *p : in_order(s.macro))
        if (shown(dm_rec(p)->aux, false)) {
            head("macros", &any);
            row(prefix, dm_rec(p)->name, ":");
            spout21("\"");
            spout21(static_cast<char *>(p));
            spout21("\"\n");
        }
    any = false;
    for (void *p : in_order(s.matrix))
        if (shown(dm_rec(p)->aux, false)) {
            auto m = static_cast<umat *>(p);
            head("matrices", &any);
            row(prefix, dm_rec(p)->name, ":");
            spout21f("%d x %d\n", m->rows, m->cols);
        }
    if (kind == RK_E && *esamplename) {
        any = false;
        head("functions", &any);
        spout21f("%22s   \n", "e(sample)");
    }
    return stopflag;
}

int32_t retval_names(int32_t kind, int32_t sort, std::string *out)
{
    storetypes s = types_of(kind);
    auto add = [out](const char *name) {
        if (!out->empty())
            *out += ' ';
        *out += name;
    };
    if (sort == 0) {
        if (kind == RK_E && *esamplename)
            add("sample");
        return 0;
    }
    if (sort == DM_SCALAR && s.table)
        for (int32_t i = 0; i < s.table->n; i++)
            add(s.table->row[i].name);
    for (void *p : in_order(sort == DM_SCALAR ? s.scalar : sort == DM_LOCAL ? s.macro : s.matrix))
        add(dm_rec(p)->name);
    return 0;
}
