// Any text as the matrix language: compiled with and without the optimiser, every image fit to
// run, everything released, and what calls harmless functions only is run for a moment.
#include "../session.h"
#include "core/settings.h"
#include "interp/dm.h"
#include "mosa/builtins.h"
#include "mosa/compiler.h"
#include "mosa/image.h"
#include "mosa/vm.h"
#include <csignal>
#include <sys/time.h>

static std::string rest;
static bool harmless;

static bool next_line()
{
    if (rest.empty())
        return false;
    size_t n = rest.find('\n');
    m_setline(rest.substr(0, n).c_str());
    rest.erase(0, n == std::string::npos ? n : n + 1);
    return true;
}

static bool is_harmless(int32_t id)
{
    static const char *const names[] = {"rows", "cols", "sum", "abs", "length", "strlen", "args"};
    for (int32_t i = 0; i < m_nbuiltin; i++)
        if (m_bitable[i].id == id)
            for (const char *name : names)
                if (!strcmp(m_bitable[i].name, name))
                    return true;
    return false;
}

static void look_at(const matobj *f)
{
    const int32_t *code = mo_code(f);
    if (f->cols < 0)
        return;
    if (const char *why = m_checkcode(code, f->rows)) {
        fprintf(stderr, "%s\n%s", why, m_disasm(code, f->rows).c_str());
        abort();
    }
    for (int32_t at = 2, n; (n = m_lofmop(code + at, f->rows - at)) > 0; at += n)
        if (code[at] == 55 && !is_harmless(code[at + 1]))
            harmless = false;
}

static void compile_all(const std::string &text, bool execute)
{
    rest = text;
    while (next_line())
        while (!m_lineended()) {
            int32_t rc = cc_compile();
            if (dm_dtyp[DM_MOSASCRATCH] || m_srcpos < 0 || size_t(m_srcpos) > strlen(m_src))
                abort();
            if (rc && !cc_failed)
                break;
            if (rc)
                continue;
            for (matobj *f = mo_nextfcn(nullptr); f; f = mo_nextfcn(f))
                look_at(f);
            if (!cc_wasstmt || !execute || !harmless)
                continue;
            itimerval moment{{0, 0}, {0, 20000}}, none{};
            setitimer(ITIMER_REAL, &moment, nullptr);
            m_newstatement();
            (void)ixeq();
            setitimer(ITIMER_REAL, &none, nullptr);
            stopflag = 0;
        }
}

static void clear_all()
{
    for (matobj *f = mo_nextfcn(nullptr), *next; f; f = next) {
        next = mo_nextfcn(f);
        mo_free(f);
    }
    for (matobj *m; (m = mo_nextmat(nullptr));)
        mo_free_force(m);
    mo_reinit();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *p, size_t n)
{
    static bool started;
    if (!started) {
        session();
        started = true;
        signal(SIGALRM, [](int) { stopflag = 1; });
        m_getline = next_line;
        m_mayreadcons = true;
        session_output.clear();
    }
    std::string text(reinterpret_cast<const char *>(p), n > 20000 ? 20000 : n);
    for (char &c : text)
        if (!c)
            c = ' ';
    s_outlev = 6;
    session_output.clear();
    harmless = true;
    set_mosastrict = n & 1;
    for (bool optimise : {false, true}) {
        set_mosaoptimize = optimise;
        compile_all(text, optimise && harmless);
        if (!optimise)
            clear_all();
    }
    clear_all();
    return 0;
}
