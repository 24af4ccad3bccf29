// expr/sortvar.cpp - an index of the selected observations, by what a command's line says.
#include "data/sort.h"
#include "expr/parse.h"

int32_t pi_sortvar0(int32_t marker, int32_t *n)
{
    return sortvar(parinfo->vl_vr, parinfo->pi_nvar, parinfo->pi_obs1, parinfo->pi_obs2, selobs,
                   marker, n);
}
