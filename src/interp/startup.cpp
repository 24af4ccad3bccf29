// interp/startup.cpp - from the arguments to a program that is ready for its first line.
#include "interp/startup.h"
#include "core/files.h"
#include "core/missing.h"
#include "core/numtext.h"
#include "core/settings.h"
#include "data/dsa.h"
#include "expr/parse.h"
#include "interp/dm.h"
#include "interp/findfile.h"
#include "interp/interp.h"
#include "interp/keyboard.h"
#include "interp/programs.h"
#include "mosa/vm.h"
#include "output/oml.h"
#include "output/print.h"
#include "stats/random.h"
#include <cctype>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <strings.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

int32_t sinit_state;
static mode_t usermask;

static const char usage_text[] =
    "\novata-sm:  usage:  ovata-sm [-h -q] [\"ovata command\"]\n"
    "     where:\n"
    "          -h      show this display\n"
    "          -q      suppress logo, initialization messages\n"
    "\n"
    "     Notes:\n"
    "          xovata-sm is the command to launch the GUI version of Small Ovata\n"
    "          ovata-sm  is the command to launch the console version of Small Ovata\n"
    "\n";

static void complain(const char *text)
{
    size_t n = strlen(text);
    if (write(2, text, n) < 0)
        return;
}

// ---- arguments

static int32_t one_option(const char *text, startopts *o)
{
    int32_t number;
    switch (tolower(uint8_t(text[0]))) {
    case 'b':
    case 's':
        o->batch = 1;
        o->markuplog = tolower(uint8_t(text[0])) == 's';
        return 0;
    case 'c': ovata_dpc = true; return 0;
    case 'q': o->logo = false; return 0;
    case 'l': return 0;
    case 'o': return cnvstoint4(text + 1, &number) ? -1 : 0;
    case 'w': o->wflag = true; return 0;
    default: return -1;
    }
}

int32_t start_options(int32_t argc, char **argv, startopts *o)
{
    for (int32_t i = 1; i < argc && argv[i][0] == '-'; i++) {
        if (one_option(argv[i] + 1, o)) {
            complain(usage_text);
            return -1;
        }
        o->nargs++;
    }
    return 0;
}

static const char *shortcut(const char *arg)
{
    static const char *const rows[][2] = {{".dta", "use"},        {".do", "do"},
                                          {".omcl", "view"},      {".ovhlp", "view"},
                                          {".gph", "graph use"},  {".ovsem", "sembuilder"}};
    size_t n = strlen(arg);
    if (n && arg[n - 1] == '"')
        n--;
    for (auto &row : rows) {
        size_t len = strlen(row[0]);
        if (n >= len && !strncasecmp(arg + n - len, row[0], len))
            return row[1];
    }
    return nullptr;
}

std::string start_command(int32_t argc, char **argv)
{
    std::string all;
    for (int32_t i = 0; i < argc; i++) {
        const char *word = i == 0 ? shortcut(argv[0]) : nullptr;
        // The shell took the quotes of a name with blanks away.
        bool quote = word && argv[0][0] != '"' && strchr(argv[0], ' ');
        if (word)
            all += std::string(word) + ' ';
        all += quote ? '"' + std::string(argv[i]) + '"' : std::string(argv[i]);
        all += ' ';
    }
    return all;
}

// ---- batch

std::string batch_logname(const std::string &command, bool markup)
{
    const char *ext = markup ? ".omcl" : ".log";
    std::string text = command.substr(0, size_t(conslen)), plain = std::string("ovata") + ext;
    toktype ti;
    ti_settok(&ti, text.data());
    std::string word = ti_gettok(&ti, prsestd);
    if (word != "do" && word != "run")
        return plain;
    ti_gettok(&ti, prsefls);
    std::string file = tok_text(ti.token);
    if (file.empty() || file.size() >= 499)
        return plain;
    file = path_last(file);
    file = file.substr(0, file.find('.'));
    return file.empty() ? plain : file + ext;
}

static int32_t batchfd = -1, batchlog = -1;

int32_t inibatch(const std::string &command, bool markup)
{
    if (command.empty()) {
        complain("-b specified with no command\n");
        return -1;
    }
    std::string name = batch_logname(command, markup);
    batchfd = ov_open(name.c_str(), OV_REPLACE);
    if (batchfd < 0) {
        complain(("unable to open `" + name + "'\n").c_str());
        return -1;
    }
    fchmod(batchfd, 0666 & ~usermask);
    batchlog = markup ? omlset_log_input(oml_reswin, batchfd)
                      : omlset_log_output(oml_reswin, batchfd, set_linesize);
    omlset_fd(oml_reswin, -1);
    return batchlog < 0 ? -1 : 0;
}

void close_batchlog()
{
    if (batchlog < 0)
        return;
    if (omllog_close(oml_reswin, batchlog))
        complain("I/O error writing the log\n");
    ov_close(batchfd);
    batchlog = batchfd = -1;
}

// ---- constants, signals

static volatile double fortestcase = 1, fortestcase2 = 2.5, fortestcase3 = -3,
                       fortestcase4 = 1e300, fortestcase5 = 1e-300;

int32_t sinit()
{
    if (fortestcase == 0 || fortestcase2 == 0 || fortestcase3 == 0 || fortestcase4 == 0 ||
        fortestcase5 == 0)
        return 1;
    if (numconst_init())
        return 1;
    ver_rng = ver_rng_of_vernum(vernum);
    const char *path = getenv("PATH");
    snprintf(filepath, sizeof filepath, "%s", path ? path : "");
    return 0;
}

static void setfpeerror(int)
{
    ov_fpeerror = 1;
    signal(SIGFPE, setfpeerror);
}

// Installed without the restart of system calls: a read at the prompt must come back.
static void setbrk(int) { state_break(); }

// The session is to end, in order: whatever runs gives up, and the line's end leaves. A second
// signal of the kind has its usual effect.
static void setleave(int number)
{
    leavesignal = number;
    stopflag = 1;
}

static void take_size(int32_t lines, int32_t columns)
{
    if (lines > 4 && !pagesize_chosen)
        omlset_pagelen(oml_reswin, set_pagesize = lines - 2);
    if (columns > 1 && !linesize_chosen)
        set_linesize = omlset_maxwidth(oml_reswin, columns - 1);
    winresized = 1;
}

static void settermsize(int)
{
    int was = errno;
    winsize w;
    if (!ioctl(1, TIOCGWINSZ, &w) || !ioctl(0, TIOCGWINSZ, &w))
        take_size(w.ws_row, w.ws_col);
    errno = was;
}

static void catch_signal(int number, void (*fn)(int), int flags)
{
    struct sigaction act = {}, old;
    if (!sigaction(number, nullptr, &old) && old.sa_handler == SIG_IGN && number != SIGINT)
        return;  // whoever started us wants it so
    act.sa_handler = fn;
    act.sa_flags = flags;
    sigemptyset(&act.sa_mask);
    sigaction(number, &act, nullptr);
}

int32_t tinit()
{
    static bool done;
    if (done)
        return 0;
    done = true;
    signal(SIGFPE, setfpeerror);
    for (int number : {SIGHUP, SIGTERM, SIGPIPE})
        catch_signal(number, setleave, int(SA_RESETHAND));
    if (nokbrd) {
        catch_signal(SIGINT, setleave, int(SA_RESETHAND));
        return 0;
    }
    catch_signal(SIGINT, setbrk, 0);
    signal(SIGQUIT, SIG_IGN);  // a slip of the finger must not cost the data
    catch_signal(SIGWINCH, settermsize, SA_RESTART);
    stopflag = 0;
    int32_t lines, columns;
    if (kb_terminal.size && kb_terminal.size(&lines, &columns))
        take_size(lines, columns);
    settermsize(0);
    kb_editing = kb_terminal.open && kb_terminal.open();
    return 0;
}

// ---- what the user sees

static void sinit_logo()
{
    outlev_keep level(1);
    spout21f("\n  Ovata %d.%d\n", ver_current / 100, ver_current % 100 / 10);
    spout21("  Statistics and data analysis, console\n");
    spout21f("  %s edition\n", cur_edition->flavour);
}

static void notes(bool editing)
{
    outlev_keep level(1);
    int32_t n = 0;
    spout21("\nNotes:\n");
    if (!strcmp(cur_edition->flavour, "Small"))
        spout21f("     %2d.  You are running Small Ovata\n", ++n);
    spout21f("     %2d.  Command line editing %sabled\n", ++n, editing ? "en" : "dis");
    if (nokbrd)
        spout21f("     %2d.  Ovata running in batch mode\n", ++n);
}

static void show_message_file()
{
    char path[500];
    if (srchfile("ovata.msg", true, path))
        return;
    std::string home = sysdir_of("OVATA");
    if (home + "ovata.msg" != path)
        return;
    int32_t fd = ov_open(path, OV_READ), n;
    if (fd < 0)
        return;
    outlev_keep level(1);
    char buf[1025];
    while ((n = ovata_read(fd, buf, 1024)) > 0) {
        buf[n] = 0;
        spout21(buf);
    }
    ov_close(fd);
}

// ---- the stages

static int32_t open_screen()
{
    sprefs_load();
    oml_cur = oml_reswin = omlopen(isatty(1) ? OML_TERMINAL : OML_PLAIN);
    if (!oml_reswin) {
        complain("\r\nAllocation failure.\r\n");
        return -1;
    }
    omlset_fd(oml_reswin, 1);
    omlset_pagelen(oml_reswin, set_pagesize);
    omlset_maxwidth(oml_reswin, set_linesize);
    load_set_prefs();
    sysinitmore(set_more ? 0 : 1);
    return 0;
}

static int32_t open_session(const startopts &o, const std::string &command)
{
    usermask = umask(0);
    umask(usermask);
    nokbrd = !isatty(0);
    if (command.size() >= size_t(conslen)) {
        complain("command too long\n");
        return -1;
    }
    if (o.batch) {
        if (inibatch(command, o.markuplog))
            return -1;
        nokbrd = true;
        batchmode = o.logo ? 1 : 2;
    }
    if (nokbrd)
        set_more = false;  // nobody is there to press a key
    if (get_ovata_dir()) {
        complain("cannot find Ovata directory\n");
        return -1;
    }
    return 0;
}

static int32_t open_data()
{
    if (!sinit0_dsa() && !pi_init(parinfo)) {
        load_mem_prefs();
        return 0;
    }
    complain("\r\nAllocation failure.\r\n");
    return -1;
}

int32_t sinit0(int32_t argc, char **argv)
{
    startopts o;
    sinit_state = 1;
    batchmode = 0;
    set_matsize = cur_edition->matsize;
    set_maxvar = maxmaxvar = cur_edition->maxvar;
    if (start_options(argc, argv, &o))
        return -1;
    sinit_state = 3;
    if (open_screen())
        return -1;
    sinit_state = 4;
    std::string line = start_command(argc - 1 - o.nargs, argv + 1 + o.nargs);
    if (open_session(o, line))
        return -1;
    sinit_state = 5;
    if (!batchmode)
        omlset_user(oml_reswin, sysmore, nullptr);
    sinit_state = 7;
    if (sinit()) {
        complain("\r\nInitialization failure.\r\n");
        return -1;
    }
    sinit_state = 8;
    tinit();
    sinit_state = 10;
    if (o.logo)
        sinit_logo();
    sinit_state = 12;
    if (open_data())
        return -1;
    sinit_state = 13;
    if (o.logo)
        notes(kb_editing);
    set_graphics = true;
    xeq_byquery = by_query;
    sinit_state = 17;
    if (mosainit() || (cls_init_hook && cls_init_hook())) {
        complain("\r\nAllocation failure.\r\n");
        return -1;
    }
    c_outlev = 0;
    sinit_state = 18;
    memcpy(console, line.c_str(), line.size() + 1);
    ti_settok(tokinfo, console);
    if (!line.empty()) {
        if (o.logo)
            newline();
        return 1;
    }
    sinit_state = 19;
    if (o.logo)
        show_message_file();
    return 0;
}
