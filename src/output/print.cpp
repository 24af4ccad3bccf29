#include "output/print.h"
#include "core/state.h"
#include "interp/messages.h"
#include "output/oml.h"
#include "output/oml_int.h"
#include <cstdarg>
#include <cstdio>
#include <cstring>

uint8_t c_outlev, s_outlev, ls_outlev;
char outbuf[outbuflen];

static bool shown() { return c_outlev >= s_outlev && oml_cur; }

// Style of each level. A level the table does not hold has no style of its own.
static constexpr uint8_t levelstyle[] = {ST_RES, ST_TXT, ST_TXT, ST_ERR, ST_COM};
static const char *const leveltag[] = {"{res}", "{txt}", "{txt}", "{err}", "{com}"};

void spout_setcoloroflev()
{
    if (c_outlev >= sizeof levelstyle || !oml_cur || oml_rawstate(oml_cur))
        return;
    if (oml_wantstyle(oml_cur, levelstyle[c_outlev]))
        omlsend(oml_cur, leveltag[c_outlev]);
}

int32_t spout21(const char *text)
{
    if (!shown() || !*text)
        return stopflag;
    // What the user types, and its echo, never belongs to a paragraph left open by a message.
    if (c_outlev == 4)
        oml_atprompt(oml_cur);
    spout_setcoloroflev();
    omlsendraw(oml_cur, text);
    if (c_outlev == 4 && !batchmode)
        oml_awaitline(oml_cur);
    return stopflag;
}

int32_t spoutsml(const char *text)
{
    if (!shown() || !*text)
        return stopflag;
    return omlsend(oml_cur, text);
}

int32_t spout21o() { return spout21(outbuf); }

int32_t spoutstr(int32_t id)
{
    char text[256];
    if (!shown())
        return stopflag;
    return spout21(loadstr(text, id));
}

int32_t newline() { return spoutsml("\n"); }

int32_t spout21f(const char *fmt, ...)
{
    if (!shown())
        return stopflag;
    va_list ap;
    va_start(ap, fmt);
    vsnprintf(outbuf, outbuflen, fmt, ap);
    va_end(ap);
    return spout21(outbuf);
}

int32_t spoutsmlf(const char *fmt, ...)
{
    if (!shown())
        return stopflag;
    va_list ap;
    va_start(ap, fmt);
    vsnprintf(outbuf, outbuflen, fmt, ap);
    va_end(ap);
    return spoutsml(outbuf);
}

int32_t spout21at(uint8_t level, const char *text)
{
    outlev_keep keep(level);
    return spout21(text);
}

int32_t spout21fat(uint8_t level, const char *fmt, ...)
{
    if (level < s_outlev)
        return stopflag;
    outlev_keep keep(level);
    va_list ap;
    va_start(ap, fmt);
    vsnprintf(outbuf, outbuflen, fmt, ap);
    va_end(ap);
    return spout21(outbuf);
}

int32_t spoutfordo(const char *text, int32_t n)
{
    outlev_keep keep(2);
    if (!shown() || n <= 0)
        return stopflag;
    oml_endpara(oml_cur);
    spout_setcoloroflev();
    return omlsendrawn(oml_cur, text, size_t(n));
}
