// commands/shellcmd.cpp - shell, !, xshell and winexec: other programs, their line as typed.
#include "core/state.h"
#include "interp/interp.h"
#include "interp/messages.h"
#include "output/oml.h"
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

// The terminal and the two signals of its keyboard. While a child runs they are its own;
// afterwards everything is as it was, whatever the child did with its modes, its flags, its
// foreground group or its colours.
struct terminal_guard {
    termios modes;
    bool tty;
    int flags[3];
    struct sigaction oldint, oldquit;

    terminal_guard()
    {
        tty = !nokbrd && tcgetattr(0, &modes) == 0;
        for (int fd = 0; fd < 3; fd++)
            flags[fd] = fcntl(fd, F_GETFL);
        struct sigaction ignore = {};
        ignore.sa_handler = SIG_IGN;
        sigaction(SIGINT, &ignore, &oldint);
        sigaction(SIGQUIT, &ignore, &oldquit);
    }
    ~terminal_guard()
    {
        for (int fd = 0; fd < 3; fd++)
            if (flags[fd] >= 0)
                fcntl(fd, F_SETFL, flags[fd]);
        if (tty)
            take_back();
        sigaction(SIGINT, &oldint, nullptr);
        sigaction(SIGQUIT, &oldquit, nullptr);
    }
    // A child that was killed may have left another group in the foreground: whoever is not in
    // it would be stopped for touching the terminal.
    void take_back() const
    {
        struct sigaction ignore = {}, old;
        ignore.sa_handler = SIG_IGN;
        sigaction(SIGTTOU, &ignore, &old);
        if (tcgetpgrp(0) != getpgrp())
            tcsetpgrp(0, getpgrp());
        tcsetattr(0, TCSADRAIN, &modes);
        sigaction(SIGTTOU, &old, nullptr);
        size_t n = strlen(oml_screen.sane);
        if (n && isatty(1) && write(1, oml_screen.sane, n) < 0)
            return;
    }
    terminal_guard(const terminal_guard &) = delete;
    terminal_guard &operator=(const terminal_guard &) = delete;
};

[[noreturn]] static void child(const char *line, bool wait)
{
    for (int number : {SIGINT, SIGQUIT, SIGPIPE, SIGTERM, SIGFPE})
        signal(number, SIG_DFL);
    if (!wait) {
        setsid();
        if (fork() != 0) // nobody will wait for it
            _exit(0);
    }
    const char *sh = getenv("SHELL");
    if (!sh || !*sh)
        sh = "/bin/sh";
    if (*line)
        execl("/bin/sh", "sh", "-c", line, static_cast<char *>(nullptr));
    else
        execlp(sh, sh, static_cast<char *>(nullptr));
    _exit(127);
}

// Runs a line of the shell, or a shell without one. One that is not waited for lives on its own.
static int32_t run_shell(const char *line, bool wait)
{
    omlflush(oml_cur);
    terminal_guard guard;
    pid_t pid = fork();
    if (pid < 0)
        return error(702);
    if (pid == 0)
        child(line, wait);
    int status;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    return 0;
}

int32_t command(int32_t arg)
{
    std::string line = ti_wheretok(tokinfo);
    line.erase(0, line.find_first_not_of(' ') == line.npos ? line.size()
                                                           : line.find_first_not_of(' '));
    if (line.empty() && (nokbrd || batchmode))
        return 0; // a shell without a keyboard would never end
    if (arg == 1 && getenv("DISPLAY"))
        line = line.empty() ? "xterm" : "xterm -e " + line;
    return run_shell(line.c_str(), arg == 0 || (arg == 1 && !getenv("DISPLAY")));
}
