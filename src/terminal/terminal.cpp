#include "terminal/terminal.h"
#include "core/progress.h"
#include "core/settings.h"
#include "core/state.h"
#include "interp/keyboard.h"
#include "output/oml.h"
#include "terminal/lineedit.h"
#include "terminal/screen.h"
#include <cstdlib>
#include <string>
#include <unistd.h>

static bool watching; // somebody sees the screen

static int32_t on_progress(const setting *, const char *text)
{
    progress_wipe();
    progress_watched = watching && text[1] == 'n'; // on
    return 0;
}

// A line of its own can be written only where no line is begun.
static bool at_linestart()
{
    omlflush(oml_reswin);
    return oml_reswin && omlcolumn(oml_reswin) == 1;
}

static void screen_texts()
{
    static std::string wipe;
    const char *ce = sc_clearline();
    wipe = *ce ? "\r" + std::string(ce) : "\r" + std::string(60, ' ') + "\r";
    progress_wipetext = wipe.c_str();
    progress_ready = at_linestart;
    oml_screen.wipe = wipe.c_str();
    oml_screen.sane = sc_sane();
    if (!getenv("NO_COLOR")) {
        oml_screen.standout = sc_standout(true);
        oml_screen.standend = sc_standout(false);
    }
}

static bool open_terminal()
{
    sc_remember();
    watching = isatty(1) && !batchmode;
    progress_watched = watching && set_progress;
    bool edits = le_open();
    screen_texts();
    return edits;
}

static void close_terminal()
{
    progress_wipe();
    le_close();
    sc_restore();
}

void terminal_init()
{
    kb_terminal.open = open_terminal;
    kb_terminal.line = le_line;
    kb_terminal.close = close_terminal;
    kb_terminal.size = sc_size;
    set_hooks[SH_PROGRESS] = on_progress;
}
