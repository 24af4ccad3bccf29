// output/omlmore.cpp - paging: the more-prompt and its keys.
#include "core/settings.h"
#include "core/state.h"
#include "output/oml_int.h"
#include <termios.h>
#include <unistd.h>

static int32_t waiting = 0;  // moretime; 1 never waits
void sysinitmore(int32_t moretime) { waiting = moretime; }

int32_t omlmore(oml *o)
{
    o->moreunderway = false;
    if (!o->user || !o->paging || !set_more)
        return 0;
    io_flush(&o->lays->io);
    o->moreunderway = true;
    int32_t key = o->user(nullptr, 0, o->userarg);
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
    if (++o->lines > o->pagelen && !stopflag) {
        omlmore(o);
        o->moreunderway = false;
    }
}

// The console's prompt: the form, a key, and the form wiped again.
int32_t sysmore(const char *text, size_t, void *)
{
    if (text || nokbrd || waiting == 1)
        return 0;
    const char *form = oml_moreform();
    size_t n = strlen(form);
    if (write(1, form, n) < 0)
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
    char key = 0;
    ssize_t got;
    do
        got = read(0, &key, 1);
    while (got < 0 && !stopflag);
    if (tty)
        tcsetattr(0, TCSANOW, &was);
    std::string wipe = "\r" + std::string(n, ' ') + "\r";
    if (write(1, wipe.data(), wipe.size()) < 0)
        return 0;
    return got == 1 ? uint8_t(key) : 'q';
}
