// commands/shellcmd.cpp - shell, !, xshell and winexec: other programs, their line as typed.
#include "core/state.h"
#include "interp/interp.h"
#include "interp/messages.h"
#include "output/oml.h"
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

// While a child runs the terminal and its break belong to it.
static int32_t run_shell(const char *line, bool wait)
{
    termios was;
    bool tty = !nokbrd && tcgetattr(0, &was) == 0;
    struct sigaction ignore = {}, oldint, oldquit;
    ignore.sa_handler = SIG_IGN;
    omlflush(oml_cur);
    pid_t pid = fork();
    if (pid < 0)
        return error(702);
    if (pid == 0) {
        signal(SIGINT, SIG_DFL);
        signal(SIGPIPE, SIG_DFL);
        if (!wait)
            setsid();
        if (!wait && fork() != 0)  // nobody will wait for it
            _exit(0);
        const char *sh = getenv("SHELL");
        if (*line)
            execl("/bin/sh", "sh", "-c", line, static_cast<char *>(nullptr));
        else
            execlp(sh && *sh ? sh : "/bin/sh", sh && *sh ? sh : "sh", static_cast<char *>(nullptr));
        _exit(127);
    }
    sigaction(SIGINT, &ignore, &oldint);
    sigaction(SIGQUIT, &ignore, &oldquit);
    int status;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    sigaction(SIGINT, &oldint, nullptr);
    sigaction(SIGQUIT, &oldquit, nullptr);
    if (tty)
        tcsetattr(0, TCSANOW, &was);
    return 0;
}

int32_t command(int32_t arg)
{
    std::string line = ti_wheretok(tokinfo);
    line.erase(0, line.find_first_not_of(' ') == line.npos ? line.size()
                                                             : line.find_first_not_of(' '));
    if (line.empty() && (nokbrd || batchmode))
        return 0;  // a shell without a keyboard would never end
    if (arg == 1 && getenv("DISPLAY"))
        line = line.empty() ? "xterm" : "xterm -e " + line;
    return run_shell(line.c_str(), arg == 0 || (arg == 1 && !getenv("DISPLAY")));
}
