// mosa/ov_index.h - which cells of the dataset a call means: observations, variables, selection.
//
//   i   a real array; each row one observation, or with two columns a first and a last. Missing
//       means 1 or _N, and alone all of them.
//   j   a real row of variable numbers, or a row of names (an element may hold several); a
//       missing scalar means all variables the user sees.
//       Where it says so the names may have operators of factors and time series.
//   s   nothing ("" or .), a variable whose zeros are left out, or 0: rows with a missing value
//       in the variables j are left out.
//
// What fails has set m_xrc: 3255, 3202, 3253, 3203, 3204, 3300, 3500, 3900, 1.
#pragma once
#include "data/dsa.h"
#include "mosa/bi_int.h"
#include "output/print.h"
#include <string>

// A growing array of plain things that survives a refusal of memory.
template <class T> struct ov_list {
    T *at = nullptr;
    int64_t n = 0, room = 0;
    ov_list() = default;
    ov_list(const ov_list &) = delete;
    ov_list &operator=(const ov_list &) = delete;
    ~ov_list();
    [[nodiscard]] bool add(T x); // false with 3900 in m_xrc
    T &operator[](int64_t k) { return at[k]; }
    const T &operator[](int64_t k) const { return at[k]; }
};
struct ov_run {
    int32_t first, last;
};
struct ov_cells {
    ov_list<int32_t> vars;
    ov_list<ov_run> runs;      // observations in order, one behind the other
    int64_t nobs = 0;          // in all runs
    bool whole = false;        // one range, no selection
    fvhandle *terms = nullptr; // of names with operators: -k in vars is its column k
    ov_cells() = default;
    ov_cells(const ov_cells &) = delete;
    ov_cells &operator=(const ov_cells &) = delete;
    ~ov_cells()
    {
        if (terms)
            v_fvlet(terms);
    }
};
inline constexpr int32_t ov_selnone = -1, ov_selnomissing = 0; // else the number of a variable

// Arguments i and j, and s unless it is null.
bool ov_readcells(const matobj *i, const matobj *j, const matobj *s, ov_cells *out);
// The same where j may hold operators of factors and time series; their levels are those of the
// observations meant.
bool ov_readterms(const matobj *i, const matobj *j, const matobj *s, ov_cells *out);
bool ov_makeview(matobj *v, int16_t eltype, const ov_cells &c); // v becomes a view of them
bool ov_readvars(const matobj *j, ov_list<int32_t> *vars);
bool ov_readruns(const matobj *i, ov_list<ov_run> *runs);
// A row of names or numbers with two columns for a range does not count: one variable.
bool ov_readvar(const matobj *m, int32_t *var);
bool ov_findvar(const std::string &name, int32_t *var);     // by its name or an abbreviation
int32_t ov_varnumber(const std::string &name, bool abbrev); // quiet: 0 when there is none
// All variables are texts (or all are numbers), else 3254 (3253).
bool ov_allof(const ov_list<int32_t> &vars, bool strings);
inline bool ov_isstring(int32_t var)
{
    return t_isstr(_typlist[var - 1]);
}

// The operated variable that one of ov_tsrevar()'s stands for, else its own name.
std::string ov_operated(int32_t var);

// ---- what the ov_ handlers share

// The result, made before anything is changed, so that want of memory comes first.
struct ov_end {
    matobj *result; // null with 3900 reported
    explicit ov_end(int32_t rows = 0, int32_t cols = 0) : result(m_mktmat(MO_REAL, rows, cols)) {}
    ~ov_end()
    {
        if (result)
            mo_freemat(result);
    }
    ov_end(const ov_end &) = delete;
    ov_end &operator=(const ov_end &) = delete;
    explicit operator bool() const { return result; }
    void done(int32_t argc)
    {
        m_result(argc, result);
        result = nullptr;
    }
};
// Where a code speaks for a failure, the words of the console are left out.
struct ov_hush {
    uint8_t was = s_outlev;
    explicit ov_hush(bool hush)
    {
        if (hush)
            s_outlev = 5;
    }
    ~ov_hush() { s_outlev = was; }
    ov_hush(const ov_hush &) = delete;
    ov_hush &operator=(const ov_hush &) = delete;
};
void ov_void(int32_t argc);           // ends in a void result
void ov_real(int32_t argc, double z); // in a real scalar
void ov_text(int32_t argc, const std::string &text);
bool ov_failed(int32_t rc); // a code of the host becomes 1, 3900 or 3598 in m_xrc; false for 0
// A string scalar, cut at its first zero byte.
bool ov_string(const matobj *m, std::string *out);
// An element of a string matrix, array or view.
std::string ov_element(const matobj *m, int64_t k);
