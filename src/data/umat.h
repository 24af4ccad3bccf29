// data/umat.h - the interpreter's matrices: named numbers with named rows and columns.
//
// A matrix is three dm records of one name: the numbers (type 9, payload umat), the row
// stripe (10) and the column stripe (11). A stripe is one entry a row or column: the equation
// name, the name (a variable or a term, see data/termname.h) and a byte of what is known of the
// column; "_" is no equation. The same triple stands
// under other types for r(), e() and return(): MK_ says which. Numbers are stored by rows.
//
// Codes: 0; 111 not found; 198 bad name; 503 conformability; 504 missing values; 505 not
// symmetric; 506 not positive definite; 507 name conflict; 508 zero on the diagonal;
// 908 larger than matsize; 950 memory. Words are printed here.
#pragma once
#include "data/termname.h"
#include <cstdint>

struct umat {
    int32_t rows, cols;
    double el[1];  // rows * cols of them
};
struct umatname {
    char eq[33], name[term_maxname + 1];
    uint8_t info;  // UN_ bits
};
enum : uint8_t { UN_EMPTY = 1 };  // a cell without observations
enum matkind : char { MK_MAT = 'm', MK_E = 'e', MK_R = 'r', MK_RETURN = 'R' };
struct matref {
    umat *m;
    umatname *row, *col;
};

int32_t mk_type(matkind kind);  // dm type of the numbers; rows are +1, columns +2 (or the hold's)
bool umat_get(const char *name, matkind kind, matref *out);
bool ismatrixname(const char *name);
// A new matrix of zeros with stripes r1, r2... and c1, c2..., replacing one of that name.
[[nodiscard]] int32_t umat_new(const char *name, matkind kind, int32_t rows, int32_t cols,
                               matref *out);
bool umat_rm(const char *name, matkind kind);
[[nodiscard]] int32_t umat_rename(const char *from, const char *to, matkind tokind);
[[nodiscard]] int32_t umat_copy(const char *from, matkind fromkind, const char *to,
                                matkind tokind);
inline double umat_el(const umat *m, int32_t i, int32_t j)  // 1-based
{
    return m->el[int64_t(i - 1) * m->cols + (j - 1)];
}
// Position of a name ("eq:name", "name", "eq:") in a stripe, 0 when absent; last gives the
// last match of an equation instead of the first. A term is also found without its marks and
// with its parts in another order.
int32_t umat_findname(const umatname *stripe, int32_t n, const char *text, bool last);
// The entries of one equation, first to last from 0: by its name, as #2 for the second there
// is, or the first of all when text is empty. False when there is none.
bool umat_eqspan(const umatname *stripe, int32_t n, const char *text, int32_t *first,
                 int32_t *last);
void umat_defstripe(umatname *stripe, int32_t n, char letter);

// Room for matsize by matsize numbers that operations use for their result while it stands
// here; else each takes its own.
extern double *umat_scratch;

// Operations into a destination, which may be an operand. Names follow the usual rules: a sum
// and a scaling keep the left (first) operand's, a product takes rows from the left and
// columns from the right, a transpose and an inverse exchange them.
enum umat_op : uint8_t {
    UM_ADD, UM_SUB, UM_MUL, UM_KRON, UM_HADAMARD, UM_ROWJOIN, UM_COLJOIN,
};
[[nodiscard]] int32_t umat_binary(umat_op op, const char *a, matkind ka, const char *b, matkind kb,
                                  const char *dst);
enum umat_uop : uint8_t {
    UM_NEG, UM_TRANSPOSE, UM_SYMINV, UM_INV, UM_CHOLESKY, UM_CORR, UM_DIAG, UM_VECDIAG, UM_VEC,
};
[[nodiscard]] int32_t umat_unary(umat_uop op, const char *a, matkind ka, const char *dst);
[[nodiscard]] int32_t umat_scale(const char *a, matkind ka, double s, const char *dst);
[[nodiscard]] int32_t umat_sweep(const char *a, matkind ka, double k, const char *dst);
[[nodiscard]] int32_t umat_sub(const char *a, matkind ka, int32_t r1, int32_t r2, int32_t c1,
                               int32_t c2, const char *dst);
[[nodiscard]] int32_t umat_ident(const char *dst, double n);
[[nodiscard]] int32_t umat_const(const char *dst, double r, double c, double z);
// Numbers from matrices; misval where not defined (det and trace of a matrix that is not square
// give 503 through rc).
double umat_trace(const matref *a, int32_t *rc);
double umat_det(const matref *a, int32_t *rc);
double umat_mreldif(const matref *a, const matref *b, int32_t *rc);
double umat_diag0cnt(const matref *a, int32_t *rc);
double umat_missing(const matref *a);
double umat_issym(const matref *a);
