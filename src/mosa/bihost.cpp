// The console around the machine: stop-watches, paging, memory, and libraries this build is
// without.
#include "core/mem.h"
#include "core/settings.h"
#include "core/timers.h"
#include "mosa/bi_int.h"
#include "mosa/bihandlers.h"
#include "output/oml.h"
#include <string>

namespace
{

void result_void(int32_t argc)
{
    m_result(argc, m_mktmat(MO_REAL, 0, 0));
}

bool timer_arg(int32_t argc, const char *id, int32_t *i)
{
    m_xeqerrid = id;
    return bi_int(bi_arg(argc, 1), 1, ntimers, i);
}

} // namespace

// timer_clear([i]): one, or all
void bitimer_clear(int32_t argc)
{
    int32_t first = 1, last = ntimers;
    if (argc) {
        if (!timer_arg(argc, "timer_clear()", &first))
            return;
        last = first;
    }
    for (int32_t i = first; i <= last; i++)
        timer_clear(i);
    result_void(argc);
}

void bitimer_on(int32_t argc)
{
    int32_t i;
    if (!timer_arg(argc, "timer_on()", &i))
        return;
    timer_on(i);
    result_void(argc);
}

void bitimer_off(int32_t argc)
{
    int32_t i;
    if (!timer_arg(argc, "timer_off()", &i))
        return;
    timer_off(i);
    result_void(argc);
}

// timer_value(i): seconds, and how often it was started
void bitimer_value(int32_t argc)
{
    int32_t i;
    if (!timer_arg(argc, "timer_value()", &i))
        return;
    matobj *r = m_mktmat(MO_REAL, 1, 2);
    if (!r)
        return;
    timer_reading t = timer_read(i);
    mo_re(r)[0] = t.seconds;
    mo_re(r)[1] = t.runs;
    m_result(argc, r);
}

// ---- paging

// Waits for a key when output is paged. A break asked for there ends the run.
void bimore(int32_t argc)
{
    m_xeqerrid = "more()";
    omlmore(oml_cur);
    result_void(argc);
}

// setmore(): whether output is paged; setmore(on) says that it is to be
void bisetmore(int32_t argc)
{
    m_xeqerrid = "setmore()";
    double on;
    if (!argc) {
        m_result(argc, m_mktsmatsto(set_more));
        return;
    }
    if (!bi_real(m_arg(0), &on))
        return;
    set_more = on != 0;
    sysinitmore(set_more ? 0 : 1);
    result_void(argc);
}

// setmoreonexit(on): paging is so when the function that asks has ended
void bisetmoreonexit(int32_t argc)
{
    m_xeqerrid = "setmoreonexit()";
    double on;
    if (!bi_real(m_arg(0), &on))
        return;
    m_vm.moreflag = 1;
    m_vm.moresave = on != 0;
    result_void(argc);
}

// ---- what the machine used

void biopcount(int32_t argc)
{
    m_result(argc, m_mktsmatsto(double(m_opcount)));
}

// Bytes the program holds.
void bisys_memory(int32_t argc)
{
    m_result(argc, m_mktsmatsto(double(mem_live().bytes)));
}

// ---- spreadsheets and a vendor's databases: no library for them is part of this program

// Names the row of the instruction that runs, and refuses.
static void without_library()
{
    static std::string id;
    for (int32_t i = 0; i < m_nbuiltin; i++)
        if (m_bitable[i].id == m_vm.pc[-1])
            id = std::string(m_bitable[i].name) + "()";
    m_xeqerrid = id.c_str();
    m_xrc = 3022;
}

void bi_xl(int32_t)
{
    without_library();
}
void bi_haver(int32_t)
{
    without_library();
}
void bi_check_for_haver_dll(int32_t argc)
{
    m_result(argc, m_mktsmatsto(0));
}
