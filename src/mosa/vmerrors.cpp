// Codes of the machine, their words, and the lines of a traceback.
#include "core/text.h"
#include "interp/messages.h"
#include "mosa/vmint.h"
#include "output/print.h"
#include <cstdarg>
#include <cstdio>

struct rcrow {
    int32_t code;
    const char *text;
};
static const rcrow rctable[] = {
    {3001, "incorrect number of arguments"},
    {3002, "identical arguments not allowed"},
    {3010, "attempt to dereference NULL pointer"},
    {3011, "invalid lval"},
    {3012, "undefined operation on pointer (e.g., p1>p2)"},
    {3020, "class child/parent compiled at different times"},
    {3021, "class compiled at different times"},
    {3022, "function not supported on this platform"},
    {3101, "matrix found where function required"},
    {3102, "function found where matrix required"},
    {3103, "view found where array required"},
    {3104, "array found where view required"},
    {3200, "conformability error"},
    {3201, "vector required"},
    {3202, "rowvector required"},
    {3203, "colvector required"},
    {3204, "matrix found where scalar required"},
    {3205, "square matrix required"},
    {3206, "invalid use of view containing op.vars"},
    {3250, "type mismatch"},
    {3251, "nonnumeric found where numeric required"},
    {3252, "noncomplex found where complex required"},
    {3253, "nonreal found where real required"},
    {3254, "nonstring found where string required"},
    {3255, "real or string required"},
    {3256, "numeric or string required"},
    {3257, "nonpointer found where pointer required"},
    {3258, "nonvoid found where void required"},
    {3259, "nonstruct found where struct required"},
    {3260, "nonclass found where class required"},
    {3261, "non class/struct found where class/struct required"},
    {3300, "argument out of range"},
    {3301, "subscript invalid"},
    {3302, "invalid %fmt"},
    {3303, "invalid permutation vector"},
    {3304, "struct nested too deeply"},
    {3305, "class nested too deeply"},
    {3351, "argument has missing values"},
    {3352, "singular matrix"},
    {3353, "matrix not positive definite"},
    {3360, "failure to converge"},
    {3492, "resulting string too long"},
    {3500, "invalid Ovata variable name"},
    {3598, "Ovata returned error"},
    {3601, "invalid file handle"},
    {3602, "invalid filename"},
    {3603, "invalid file mode"},
    {3611, "too many open files"},
    {3612, "file too large for 32-bit Ovata"},
    {3621, "attempt to write read-only file"},
    {3622, "attempt to read write-only file"},
    {3623, "attempt to seek append-only file"},
    {3900, "out of memory"},
    {3901, "macro memory in use"},
    {3930, "error in LAPACK routine"},
    {3995, "unallocated function"},
    {3996, "built-in unallocated"},
    {3997, "unimplemented opcode"},
    {3998, "stack overflow"},
    {3999, "system assertion false"},
    {601, "file not found"},
    {602, "file already exists"},
    {603, "file could not be opened"},
    {608, "file is read-only"},
    {610, "file format error"},
    {691, "I/O error"},
    {699, "insufficient disk space"},
};

const char *m_rctext(int32_t code)
{
    for (const rcrow &row : rctable)
        if (row.code == code)
            return row.text;
    if (code >= 630 && code <= 679) {
        const msgrow *row = msg_row(code);
        if (row && row->text)
            return row->text;
    }
    return code >= 600 && code <= 699 ? "file error" : "Ovata returned error";
}

static const char *const passed_on = "function returned error";

const char *fcn_name(const matobj *f)
{
    static char name[72];
    if (!f || !f->info || !strncmp(f->info->name, "<istmt", 6))
        return "<istmt>";
    if (f->info->subname[0])
        snprintf(name, sizeof name, "%s::%s", f->info->name, f->info->subname);
    else
        strcut(name, sizeof name, f->info->name);
    return name;
}

const char *tmp_name(const matobj *m)
{
    const char *name = mo_name(m);
    return *name ? name : "<tmp>";
}

// One line; code 0 leaves the column blank.
static void put_line(const char *name, int32_t code, const char *text, bool where)
{
    if (code)
        spout21f("%24s: %5d  %s", name, code, text);
    else
        spout21f("%24s:     -  %s", name, text);
    if (where && m_vm.line)
        spout21f(" [%d]", m_vm.line);
    if (where && m_debug && m_vm.curfcn && m_vm.pc)
        spout21f(" {%ld}", long(m_vm.pc - mo_code(m_vm.curfcn)));
    newline();
}

// What goes wrong first is named with its code, and under the operator or built-in if one was
// at work; a frame that the failure passes says only that.
static void report(int32_t code, const char *text)
{
    outlev_keep keep(3);
    char name[80];
    strcut(name, sizeof name - 2, fcn_name(m_vm.curfcn));
    if (*name != '<')
        memcpy(name + strlen(name), "()", 3);
    if (m_xeqerrid && code) {
        put_line(m_xeqerrid, code, text, false);
        code = 0;
        text = passed_on;
    }
    m_xeqerrid = nullptr;
    put_line(name, code, text, true);
}

void m_xeqerrstd()
{
    switch (m_xrc) {
    case 0:
    case 1:
    case 10000:
    case 10002: return;
    case 10001: break;
    case 2: report(0, passed_on); break;
    default: report(m_xrc, m_rctext(m_xrc));
    }
    m_xrc = 2;
}

void m_custom_xeqerr(int32_t code, const char *text)
{
    report(code, text);
    if (!m_xrc_first)
        m_xrc_first = code;
    m_xrc = 10001;
}

void m_custom_xeqerrf(int32_t code, const char *fmt, ...)
{
    char text[512];
    va_list args;
    va_start(args, fmt);
    vsnprintf(text, sizeof text, fmt, args);
    va_end(args);
    m_custom_xeqerr(code, text);
}

void intr_reset()
{
    stopflag = 0;
    altstopflag = 0;
}
