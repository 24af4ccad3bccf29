// The start of the matrix language.
#include "data/dsa.h"
#include "mosa/builtins.h"
#include "mosa/views.h"
#include "mosa/vm.h"

static void renumber(uint32_t k)
{
    v_upvarnums(int32_t(k));
}

int32_t mosainit()
{
    mo_init();
    m_biinit();
    dsa_onrenumber = renumber;
    dsa_ondropall = v_fvclearall;
    return mosastakinit(1);
}
