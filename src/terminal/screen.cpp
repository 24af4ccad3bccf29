#include "terminal/screen.h"
#include <cstdlib>
#include <cstring>
#include <string>
#include <termcap.h>
#include <termios.h>
#include <unistd.h>

static bool asked, described;
static std::string clear, clearline, cleardown, up, so, se, sane;

// A capability without its padding, which no terminal of today needs.
static std::string capability(const char *id)
{
    char name[3] = {id[0], id[1], 0}, area[1024], *at = area;
    const char *text = tgetstr(name, &at);
    std::string out;
    if (!text)
        return out;
    while (*text >= '0' && *text <= '9')
        text++;
    for (; *text; text++) {
        const char *end = text[0] == '$' && text[1] == '<' ? strchr(text, '>') : nullptr;
        if (end)
            text = end;
        else
            out += *text;
    }
    return out;
}

static int32_t number(const char *id)
{
    char name[3] = {id[0], id[1], 0};
    return tgetnum(name);
}

static bool flag(const char *id)
{
    char name[3] = {id[0], id[1], 0};
    return tgetflag(name) > 0;
}

bool sc_open()
{
    if (asked)
        return described;
    asked = true;
    const char *term = getenv("TERM");
    if (!term || !*term || !strcmp(term, "dumb") || tgetent(nullptr, term) != 1)
        return false;
    if (flag("gn") || flag("hc")) // a generic line, or paper
        return false;
    std::string move = capability("cm");
    char *goes = move.empty() ? nullptr : tgoto(move.c_str(), 0, 0);
    described = goes && *goes;
    clear = capability("cl");
    clearline = capability("ce");
    cleardown = capability("cd");
    up = capability("up");
    if (number("sg") <= 0) { // standout that takes no column
        so = capability("so");
        se = capability("se");
    }
    sane = capability("me") + capability("ve");
    return described;
}

bool sc_size(int32_t *lines, int32_t *columns)
{
    if (!sc_open())
        return false;
    *lines = number("li");
    *columns = number("co");
    return *lines > 0 && *columns > 0;
}

const char *sc_clear()
{
    return clear.c_str();
}
const char *sc_clearline()
{
    return clearline.c_str();
}
const char *sc_cleardown()
{
    return cleardown.c_str();
}
const char *sc_up()
{
    return up.c_str();
}
const char *sc_standout(bool on)
{
    return on ? so.c_str() : se.c_str();
}
const char *sc_sane()
{
    return sane.c_str();
}

static termios modes;
static bool remembered;

void sc_remember()
{
    remembered = tcgetattr(0, &modes) == 0;
}

void sc_restore()
{
    if (remembered)
        tcsetattr(0, TCSADRAIN, &modes);
}
