#include "interp/keyboard.h"
#include "core/state.h"
#include <cerrno>
#include <unistd.h>

kb_terminal_t kb_terminal;
bool kb_editing;

static char ahead[4096];
static ssize_t pos, have;

// The next byte, -1 at the end of input, -2 when a break came first.
static int32_t next_byte()
{
    if (pos < have)
        return uint8_t(ahead[pos++]);
    do {
        have = read(0, ahead, sizeof ahead);
        if (have < 0 && errno == EINTR && stopflag)
            return leavesignal ? -1 : -2;
    } while (have < 0 && errno == EINTR);
    pos = 0;
    if (have <= 0) {
        have = 0;
        return -1;
    }
    return uint8_t(ahead[pos++]);
}

kb_answer kb_line(char *buffer, int32_t len)
{
    int32_t n = 0, c;
    bool toolong = false, any = false;
    auto put = [&](char ch) {
        if (n + 1 < len)
            buffer[n++] = ch;
        else
            toolong = true;
    };
    while ((c = next_byte()) >= 0 && c != '\n') {
        any = true;
        if (c == '\t') {
            do
                put(' ');
            while (n % 8 && !toolong);
        } else if (c >= 32 && c != 255) {
            put(char(c));
        }
    }
    if (c == -2 || toolong)
        n = 0;
    buffer[n] = 0;
    if (c == -2)
        return KB_BREAK;
    if (c == -1 && !any)
        return KB_EOF;
    return toolong ? KB_TOOLONG : KB_LINE;
}
