#include "commands/groupmeans.h"
#include "core/missing.h"
#include "output/fmt.h"
#include "output/print.h"
#include <cmath>

void gs_add(groupsum *g, double y, double w, bool counts)
{
    double d = y - g->mean; // West (1979)
    g->n += counts ? w : 1;
    g->w += w;
    g->mean += g->w != 0 ? d * w / g->w : 0;
    g->m2 += w * d * (y - g->mean);
}

void gs_join(groupsum *all, const groupsum &g)
{
    if (g.w == 0)
        return;
    double d = g.mean - all->mean, w = all->w + g.w;
    all->m2 += g.m2 + d * d * all->w * g.w / w;
    all->mean += d * g.w / w;
    all->w = w;
    all->n += g.n;
}

double gs_sd(const groupsum &g, bool scaled)
{
    if (!(g.n > 1))
        return g.n == 1 ? 0 : misval;
    return std::sqrt(g.m2 * (scaled ? g.n / g.w : 1) / (g.n - 1));
}

void gs_heading(const meanscolumns &c, const std::string &name, const std::string &title)
{
    newline();
    if (!title.empty())
        spout21f("%*s |   %s\n", c.label, "", title.c_str());
    spout21f("%*s |%s%s%s\n", c.label, name.c_str(), c.means ? "        Mean" : "",
             c.standard ? "   Std. Dev." : "", c.freq ? "       Freq." : "");
    gs_rule(c);
}

void gs_rule(const meanscolumns &c)
{
    std::string rule(size_t(c.means + c.standard + c.freq) * 12, '-');
    spout21f("%s+%s\n", std::string(size_t(c.label) + 1, '-').c_str(), rule.c_str());
}

void gs_row(const meanscolumns &c, const std::string &label, const groupsum &g)
{
    const bool on[] = {c.means, c.standard, c.freq};
    const double z[] = {g.n > 0 ? g.mean : misval, gs_sd(g, c.scaled), g.n};
    char b[64];
    spout21fat(1, "%*s |", c.label, label.c_str());
    for (int k = 0; k < 3; k++)
        if (on[k]) {
            fmtnumtrim(b, sizeof b, z[k], "%10.0g");
            spout21fat(0, "%12s", b);
        }
    newline();
}
