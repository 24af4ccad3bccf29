// output/omlmore.cpp - paging: the more-prompt and its keys.
#include "core/settings.h"
#include "core/state.h"
#include "output/oml_int.h"
#include <csignal>
#include <cstring>
#include <poll.h>
#include <string>
#include <termios.h>
#include <unistd.h>

static int32_t waiting = 0; // moretime; 1 never waits
void sysinitmore(int32_t moretime)
{
    waiting = moretime;
}

int32_t omlmore(oml *o)
{
    o->moreunderway = false;
    if (!o->user || !o->paging || !set_more)
        return 0;
    io_flush(&o->lays->io);
    o->moreunderway = true;
    int32_t key = o->user(nullptr, 0, o->userarg);
    o->moreunderway = false;
    if (key == '\n' || key == '\r' || key == 'l') {
        o->lines = o->pagelen;
        return key;
    }
    o->lines = 0;
    if (key == 'q' || key == 3) {
        state_break();
        return 'q';
    }
    return key;
}

// Called for each line the record's own output has finished.
void oml_lineout(oml *o, layout *)
{
    if (!o->user || o->fd < 0 || nokbrd || batchmode || o->moreunderway)
        return;
    if (++o->lines > o->pagelen && !stopflag)
        omlmore(o);
}

// ---- the console's prompt

omlscreen oml_screen;

static bool put(const std::string &text)
{
    return write(1, text.data(), text.size()) == ssize_t(text.size());
}

// Is there something to read within ms?
static bool ready(int ms)
{
    pollfd p = {0, POLLIN, 0};
    return poll(&p, 1, ms) > 0;
}

// One key, of which an arrow or the like sends several bytes; q after a break. Nobody is there
// any more when reading fails: the session ends.
static int32_t one_key()
{
    while (!ready(50))
        if (stopflag)
            return 'q';
    char key, rest[16];
    if (read(0, &key, 1) != 1) {
        leavesignal = SIGHUP;
        stopflag = 1;
        return 'q';
    }
    if (key == 27 && ready(20) && read(0, rest, sizeof rest) < 0)
        return 'q';
    return uint8_t(key);
}

// Shows the form, waits for a key and wipes the form.
int32_t sysmore(const char *text, size_t, void *)
{
    if (text || nokbrd || waiting == 1)
        return 0;
    const char *form = oml_moreform();
    if (!put(std::string(oml_screen.standout) + form + oml_screen.standend))
        return 0;
    termios was, raw;
    bool tty = tcgetattr(0, &was) == 0;
    if (tty) {
        raw = was;
        raw.c_lflag &= ~tcflag_t(ICANON | ECHO | ISIG);
        raw.c_cc[VMIN] = 1;
        raw.c_cc[VTIME] = 0;
        tcsetattr(0, TCSANOW, &raw);
    }
    int32_t key = one_key();
    if (tty)
        tcsetattr(0, TCSANOW, &was);
    const char *wipe = oml_screen.wipe;
    put(*wipe ? wipe : "\r" + std::string(strlen(form), ' ') + "\r");
    return key;
}
