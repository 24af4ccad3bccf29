// Regressors that tell a two-valued outcome: one pass over the data for each that is found.
#include "stats/perfect.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/variables.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "stats/rows.h"
#include "varlist/terms.h"
#include <cmath>

namespace
{

// What one regressor looks like by outcome, failure 0 and success 1.
struct spread {
    int32_t values = 0; // distinct ones: 0, 1, 2, or 3 for more
    double value[2];
    bool seen[2][2] = {}; // value, outcome
    double lo[2] = {HUGE_VAL, HUGE_VAL}, hi[2] = {-HUGE_VAL, -HUGE_VAL};
};

void add(spread *s, double x, int outcome)
{
    if (x < s->lo[outcome])
        s->lo[outcome] = x;
    if (x > s->hi[outcome])
        s->hi[outcome] = x;
    int32_t v = 0;
    while (v < s->values && v < 2 && s->value[v] != x)
        v++;
    if (v == s->values && v < 2) {
        s->value[v] = x;
        s->values++;
    }
    if (v < 2)
        s->seen[v][outcome] = true;
    else
        s->values = 3;
}

template <class Each> int32_t each_row(datarows *d, const std::vector<uint8_t> &out, Each each)
{
    dr_rewind(d);
    for (;;) {
        int32_t rc = dr_next(d);
        if (rc || !d->n)
            return rc;
        for (int32_t i = 0; i < d->n; i++)
            if (!out[size_t(d->obs[i])])
                each(d->x + int64_t(i) * d->ld, d->obs[i]);
    }
}

int32_t told_everywhere(int32_t var, bool greater, double at)
{
    char text[64];
    fmtnumtrim(text, sizeof text, at, "%9.0g");
    return errout(RC_NOOBS, "outcome = %s %s %s predicts data perfectly\n", fv_name(var),
                  greater ? ">" : "<", text);
}

// A dummy that has one outcome on one of its sides. True when found; *rc when on both.
bool dummy_tells(const spread &s, perfectrow *row, int32_t *rc)
{
    int lower = s.value[0] < s.value[1] ? 0 : 1;
    bool told[2];
    for (int v : {0, 1})
        told[v] = s.seen[v][0] != s.seen[v][1];
    if (!told[0] && !told[1])
        return false;
    if (told[0] && told[1]) { // both outcomes occur, so the sides differ
        *rc = told_everywhere(row->var, s.seen[1 - lower][1], s.value[lower]);
        return true;
    }
    int side = told[1 - lower] ? 1 - lower : lower;
    row->isdummy = true;
    row->at = s.value[1 - side]; // the side that stays
    row->success = s.seen[side][1];
    return true;
}

// One whose outcomes lie on two sides of a bound that they share at most.
bool bound_tells(const spread &s, perfectrow *row, int32_t *rc)
{
    for (int up : {1, 0}) { // successes above, or below
        double end = s.hi[1 - up], start = s.lo[up];
        if (end > start)
            continue;
        row->greater = up;
        row->at = end;
        if (end < start) {
            *rc = told_everywhere(row->var, up, up ? end : start);
            return true;
        }
        row->tie = true;
        return true;
    }
    return false;
}

bool takes_out(const perfectrow &row, double x)
{
    return x != row.at; // the side told, or all that is off the bound
}

} // namespace

int32_t perfect_search(const std::vector<int32_t> &vars, std::vector<uint8_t> *gone,
                       std::vector<uint8_t> *out, std::vector<perfectrow> *rows)
{
    size_t k = vars.size();
    datarows d;
    int32_t rc = dr_open(&d, vars.data(), int32_t(k));
    if (rc)
        return rc;
    std::vector<spread> all(k);
    for (;;) {
        std::fill(all.begin(), all.end(), spread());
        bool both[2] = {false, false};
        rc = each_row(&d, *out, [&](const double *x, int32_t) {
            int outcome = x[0] != 0;
            both[outcome] = true;
            for (size_t j = 1; j < k; j++)
                if (!(*gone)[j])
                    add(&all[j], x[j], outcome);
        });
        if (rc || !both[0] || !both[1])
            return rc; // one outcome alone is no matter of regressors
        size_t found = 0;
        perfectrow row;
        for (size_t j = 1; j < k && !found; j++) {
            if ((*gone)[j] || all[j].values < 2)
                continue;
            row = perfectrow();
            row.var = vars[j];
            bool tells = all[j].values == 2 ? dummy_tells(all[j], &row, &rc)
                                            : bound_tells(all[j], &row, &rc);
            if (rc)
                return rc;
            if (tells)
                found = j;
        }
        if (!found)
            return 0;
        rc = each_row(&d, *out, [&](const double *x, int32_t obs) {
            if (takes_out(row, x[found])) {
                (*out)[size_t(obs)] = 1;
                row.nout++;
            }
        });
        if (rc)
            return rc;
        (*gone)[found] = 1;
        rows->push_back(row);
    }
}
