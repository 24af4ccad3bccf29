// Value labels.
#include "core/state.h"
#include "data/labels.h"
#include "data/variables.h"
#include "interp/dm.h"
#include "mosa/bihandlers.h"
#include "mosa/ov_index.h"
#include <cmath>
#include <cstring>
#include <map>
#include <vector>

namespace
{

double element(const matobj *m, int64_t k)
{
    return m->view ? v_el1(m, k) : mo_re(m)[k];
}

// The stored form of a value that may be labelled: a whole number or a letter of missing.
bool labelled(double z, int32_t *value)
{
    if (z < misval ? z != std::trunc(z) || z < min_ovlong || z > max_ovlong : z == misval)
        return false;
    *value = ovlong_of_ovdouble(z);
    return true;
}

bool put_text(matobj *m, int64_t k, const char *text)
{
    return !selreplace(m, k, text, int64_t(strlen(text)));
}

// Pairs of the two matrices into a table, an empty text taking its value out.
bool merge(const matobj *values, const matobj *texts, std::map<int32_t, std::string> *table)
{
    for (int64_t k = 0; k < mo_count(values); k++) {
        int32_t value;
        if (!labelled(element(values, k), &value))
            return bi_fail(3300);
        std::string text = ov_element(texts, k);
        if (text.empty())
            table->erase(value);
        else
            (*table)[value] = text.substr(0, size_t(vl_maxtext));
    }
    return true;
}

// The table takes the place of the one of that name; an empty one takes it away.
bool replace_table(const std::string &name, const std::map<int32_t, std::string> &table)
{
    vltable *old = vlfind(name.c_str());
    std::vector<vlpair> pairs;
    for (const auto &p : table)
        pairs.push_back({p.first, p.second.c_str()});
    if (!pairs.empty() && !vlbuild(name.c_str(), pairs.data(), int32_t(pairs.size())))
        return !ov_failed(vlwhy());
    dmrm(old); // the new one stands in front of it
    s_updata = upValLabel = true;
    return true;
}

} // namespace

void biov_vlexists(int32_t argc)
{
    m_xeqerrid = "ov_vlexists()";
    std::string name;
    if (ov_string(m_arg(0), &name))
        ov_real(argc, vlfind(name.c_str()) != nullptr);
}

// A label that does not exist is dropped already.
void biov_vldrop(int32_t argc)
{
    m_xeqerrid = "ov_vldrop()";
    std::string name;
    ov_end end;
    if (!end || !ov_string(m_arg(0), &name))
        return;
    if (vlfind(name.c_str())) {
        if (ov_failed(vldrop(name.c_str())))
            return;
        s_updata = true;
    }
    end.done(argc);
}

// ov_vlmap(name, values): the texts, empty for what has none.
void biov_vlmap(int32_t argc)
{
    m_xeqerrid = "ov_vlmap()";
    std::string name;
    const matobj *values = m_arg(0);
    if (!ov_string(m_arg(1), &name) || !bi_isreal(values))
        return;
    matobj *r = m_mktmat(MO_STRING, values->rows, values->cols);
    const vltable *table = vlfind(name.c_str());
    bool good = r;
    for (int64_t k = 0; good && table && k < mo_count(values); k++) {
        int32_t value, at;
        const char *text;
        double z = element(values, k);
        if (!labelled(z, &value) || (at = vlfindval(table, z, nullptr, 0)) < 0)
            continue;
        vlgetofi(table, at, &text, nullptr);
        good = put_text(r, k, text);
    }
    if (good)
        m_result(argc, r);
    else if (r)
        mo_freemat(r);
}

// ov_vlsearch(name, texts): the values, missing for what is no text of the label.
void biov_vlsearch(int32_t argc)
{
    m_xeqerrid = "ov_vlsearch()";
    std::string name;
    const matobj *texts = m_arg(0);
    if (!ov_string(m_arg(1), &name) || !bi_isstring(texts))
        return;
    ov_end end(texts->rows, texts->cols);
    const vltable *table = vlfind(name.c_str());
    for (int64_t k = 0; end && k < mo_count(texts); k++) {
        int32_t value;
        bool found = table && !vlfindtxt(table, ov_element(texts, k).c_str(), &value);
        mo_re(end.result)[k] = found ? ovdouble_of_ovlong(value) : misval;
    }
    if (end)
        end.done(argc);
}

// ov_vlload(name, values, texts): the arguments become columns with all of the label.
void biov_vlload(int32_t argc)
{
    m_xeqerrid = "ov_vlload()";
    std::string name;
    matobj *values = m_arg(1), *texts = m_arg(0);
    if (!ov_string(m_arg(2), &name) || !bi_ismatrix(values) || !bi_ismatrix(texts) ||
        !bi_distinct(argc))
        return;
    const vltable *table = vlfind(name.c_str());
    int32_t n = vlgetcount(table);
    ov_end end, v(n, 1);
    matobj *t = end && v ? m_mktmat(MO_STRING, n, 1) : nullptr;
    bool good = t;
    for (int32_t k = 0; good && k < n; k++) {
        const char *text;
        int32_t value;
        vlgetofi(table, k, &text, &value);
        mo_re(v.result)[k] = ovdouble_of_ovlong(value);
        good = put_text(t, k, text);
    }
    if (good && !cpymat(values, v.result, false) && !cpymat(texts, t, false))
        end.done(argc);
    if (t)
        mo_freemat(t);
}

// ov_vlmodify(name, values, texts): pairs added or changed; an empty text takes one away. All
// of them or none.
void biov_vlmodify(int32_t argc)
{
    m_xeqerrid = "ov_vlmodify()";
    std::string name;
    const matobj *values = m_arg(1), *texts = m_arg(0);
    if (!ov_string(m_arg(2), &name) || !bi_isreal(values) || !bi_isstring(texts))
        return;
    if (values->rows != texts->rows || values->cols != texts->cols) {
        m_xrc = 3200;
        return;
    }
    ov_end end;
    if (!end || ov_failed(chksinglename(name.c_str(), false)))
        return;
    std::map<int32_t, std::string> table;
    const vltable *old = vlfind(name.c_str());
    for (int32_t k = 0; k < vlgetcount(old); k++) {
        const char *text;
        int32_t value;
        vlgetofi(old, k, &text, &value);
        table[value] = text;
    }
    if (merge(values, texts, &table) && replace_table(name, table))
        end.done(argc);
}
