// commands/snapshotcmd.cpp - snapshots: copies of the dataset with a number and a label, kept
// until they are erased or the session ends.
//
//   snapshot save [, label(text)]      snapshot restore #
//   snapshot label # "text"            snapshot list [# ...]
//   snapshot erase _all | # ...
#include "core/clock.h"
#include "core/rc.h"
#include "core/state.h"
#include "core/text.h"
#include "data/dsa.h"
#include "expr/parse.h"
#include "interp/interp.h"
#include "interp/messages.h"
#include "interp/preserve.h"
#include "output/print.h"
#include "stats/results.h"
#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

int32_t snapshotcmd(int32_t);

namespace {

constexpr size_t most = 1000;

struct forget {
    void operator()(keptdata *k) const { data_forget(k); }
};
struct snapshot {
    int32_t number;
    std::string label, when;
    std::unique_ptr<keptdata, forget> data;
};
std::vector<snapshot> shots;

snapshot *find(int32_t n)
{
    for (snapshot &s : shots)
        if (s.number == n)
            return &s;
    return nullptr;
}

int32_t none(int32_t n) { return errout(RC_NOTFOUND, "snapshot %d not found\n", n); }

// The numbers typed, each of a snapshot; with all, _all and nothing mean every one.
int32_t numbers(std::vector<int32_t> *list, bool nothing)
{
    for (;;) {
        std::string w = ti_gettok(tokinfo, prsestd);
        if (w == "_all" || (w.empty() && list->empty() && nothing)) {
            for (const snapshot &s : shots)
                list->push_back(s.number);
            return *ti_gettok(tokinfo, prsestd) ? error(RC_SYNTAX) : 0;
        }
        if (w.empty())
            return list->empty() ? required("snapshot number") : 0;
        int32_t n = atoi(w.c_str());
        if (w.find_first_not_of("0123456789") != std::string::npos || w.size() > 9)
            return error(RC_SYNTAX);
        if (!find(n))
            return none(n);
        list->push_back(n);
    }
}

int32_t save()
{
    char label[81] = "";
    parinfo->pi_vlist = parinfo->pi_if = parinfo->pi_in = PI_NO;
    parinfo->pi_opts = PI_OK;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    if (rc)
        return rc;
    ti_pi_findargn(tokinfo, parinfo, "label", 1, label, sizeof label, 100);
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    if (!_Kvar)
        return error(RC_NOTFOUND);
    if (shots.size() >= most)
        return errout(RC_LIMIT, "too many snapshots\n");
    keptdata *k = data_keep(&rc);
    if (!k)
        return rc;
    char date[32];
    getstamp(date);
    static int32_t last;
    if (shots.empty())
        last = 0;
    shots.push_back({++last, label, date, std::unique_ptr<keptdata, forget>(k)});
    spout21fat(1, "snapshot %d (%s) created at %s\n", last, label, date);
    retval_clear();
    retval_set_gscalar(last, "snapshot");
    return 0;
}

int32_t list()
{
    std::vector<int32_t> which;
    if (shots.empty()) {
        spout21at(1, "(no snapshots)\n");
        return 0;
    }
    int32_t rc = numbers(&which, true);
    for (size_t i = 0; !rc && i < which.size(); i++) {
        const snapshot *s = find(which[i]);
        spout21fat(1, "snapshot %d (%s) created at %s\n", s->number, s->label.c_str(),
                   s->when.c_str());
        rc = stopflag;
    }
    return rc;
}

int32_t relabel()
{
    std::string w = ti_gettok(tokinfo, prsestd);
    snapshot *s = find(atoi(w.c_str()));
    if (!s)
        return w.empty() ? required("snapshot number") : none(atoi(w.c_str()));
    char buf[81];
    strcut(buf, sizeof buf, tok_text(ti_gettok(tokinfo, prsestd)));
    s->label = buf;
    return 0;
}

int32_t restore()
{
    std::vector<int32_t> which;
    int32_t rc = numbers(&which, false);
    if (rc)
        return rc;
    return which.size() == 1 ? data_bring(find(which[0])->data.get()) : error(RC_SYNTAX);
}

int32_t erase()
{
    std::vector<int32_t> which;
    if (shots.empty() && ti_peektok_chr(tokinfo) == '_')
        return 0;
    int32_t rc = numbers(&which, false);
    for (size_t i = 0; !rc && i < which.size(); i++)
        if (snapshot *s = find(which[i]))
            shots.erase(shots.begin() + (s - shots.data()));
    return rc;
}

}  // namespace

int32_t snapshotcmd(int32_t)
{
    std::string w = ti_gettok(tokinfo, prsestd);
    if (cmdcmp(w.c_str(), "save", 1))
        return save();
    if (cmdcmp(w.c_str(), "list", 1))
        return list();
    if (cmdcmp(w.c_str(), "label", 3))
        return relabel();
    if (cmdcmp(w.c_str(), "restore", 1))
        return restore();
    return cmdcmp(w.c_str(), "erase", 1) ? erase() : error(RC_SYNTAX);
}
