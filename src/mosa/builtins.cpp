// The table of built-in functions and its lookup.
#include "mosa/builtins.h"
#include "core/state.h"
#include "mosa/bihandlers.h"
#include <cstring>
#include <string_view>
#include <unordered_map>

const m_birow m_bitable[] = {
#define BI(name, id, eltype, orgtype, minargs, maxargs, handler)                                   \
    {name, id, eltype, orgtype, minargs, maxargs, handler},
#define BX(name, id) {name, id, MT_TRANSMORPHIC, OT_MATRIX, 0, 29, nullptr},
#include "mosa/builtins.def"
#undef BI
#undef BX
};
const int32_t m_nbuiltin = int32_t(sizeof m_bitable / sizeof m_bitable[0]);
m_bihandler m_bihandlers[m_maxbiid];
int32_t m_biargs[m_maxbiid][2];

static constexpr int32_t id_date = 368; // the meaning it has had since version 10

static std::unordered_map<std::string_view, int32_t> &index_of_names()
{
    static std::unordered_map<std::string_view, int32_t> index;
    return index;
}

void m_biinit()
{
    auto &index = index_of_names();
    index.reserve(size_t(m_nbuiltin));
    for (auto &a : m_biargs)
        a[1] = -1;
    for (int32_t i = 0; i < m_nbuiltin; i++) {
        const m_birow &row = m_bitable[i];
        index.emplace(row.name, i); // the first of a name stays
        m_bihandlers[row.id] = row.handler;
        m_biargs[row.id][0] = row.minargs;
        m_biargs[row.id][1] = row.maxargs;
    }
}

int32_t m_findbuiltin(const char *name)
{
    const auto &index = index_of_names();
    auto at = index.find(name);
    if (at == index.end() || (vernum > 1000 && !strcmp(name, "Binomial")))
        return -1;
    if (m_bitable[at->second].id != id_date || vernum >= 1000)
        return at->second;
    for (int32_t i = at->second + 1; i < m_nbuiltin; i++)
        if (!strcmp(m_bitable[i].name, name))
            return i;
    return -1;
}

bool ismosabuiltin(const char *name)
{
    return m_findbuiltin(name) >= 0;
}
