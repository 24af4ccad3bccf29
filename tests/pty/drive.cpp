// tests/pty/drive.cpp - drives the program on a terminal of its own, key by key, by a script.
//
//   drive PROGRAM SOURCE-DIR SCRIPT
//
// One step a line; texts stand in quotes and know \n \r \t \e \\ \" \xHH.
//
//   env NAME=VALUE       for the program (env NAME takes it away)
//   size ROWS COLUMNS    of the terminal, before or after the start
//   write FILE "text"    a file in the working directory
//   start ARGUMENT...    starts the program
//   send "text"          types
//   expect "text"        waits for it in what was written since the last match
//   within MS "text"     the same, and not later than MS after the last send
//   absent "text"        it was not written since the last match (waits for quiet first)
//   line "text"          waits until the row of the cursor reads so
//   prompt               waits until what was entered last is done and an empty line is edited
//   shows "text"         waits until the screen shows it somewhere
//   sleep MS, timeout S
//   signal NUMBER        to the program
//   hangup               takes the terminal away
//   exit [CODE]          waits for the program's end, and its code when one is given
//   cooked               the terminal is in its ordinary mode, with echo
//   empty DIR            holds no file
//   holds FILE "text"    the file holds the text; lacks FILE "text" that it does not
//
// Exit 0 when all held, 1 when one did not, 77 when there are no pseudo-terminals here.
// PTY_SLACK multiplies the times of within: 5 unless set, for machines with other work; measure
// with PTY_SLACK=1 on a quiet one.
#include "screen.h"
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fstream>
#include <iostream>
#include <poll.h>
#include <pty.h>
#include <sstream>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

using str = std::string;
using Clock = std::chrono::steady_clock;

static str program, work;
static int master = -1;
static pid_t child = -1;
static Screen screen;
static winsize size = {24, 80, 0, 0};
static str seen;       // everything written
static size_t matched; // up to where it was expected
static size_t entered; // where the output stood when a line was last entered
static double timeout = 20;
static Clock::time_point sent;
static std::vector<str> environment;

static double since(Clock::time_point t)
{
    return std::chrono::duration<double>(Clock::now() - t).count();
}

// Takes what comes within secs; false at the end of the terminal.
static bool pump(double secs)
{
    if (master < 0)
        return false;
    pollfd p = {master, POLLIN, 0};
    if (poll(&p, 1, int(secs * 1000)) <= 0)
        return true;
    char buf[4096];
    ssize_t n = read(master, buf, sizeof buf);
    if (n <= 0)
        return false;
    seen.append(buf, size_t(n));
    screen.feed(str(buf, size_t(n)));
    return true;
}

template <class Test> static bool until(Test test, double secs)
{
    auto began = Clock::now();
    bool alive = true;
    while (!test()) {
        if (!alive || since(began) > secs)
            return false;
        alive = pump(0.02);
    }
    return true;
}

static str unescape(const str &t)
{
    str out;
    for (size_t i = 0; i < t.size(); i++) {
        if (t[i] != '\\' || i + 1 == t.size()) {
            out += t[i];
            continue;
        }
        switch (t[++i]) {
        case 'n': out += '\n'; break;
        case 'r': out += '\r'; break;
        case 't': out += '\t'; break;
        case 'e': out += '\033'; break;
        case 'x':
            out += char(strtol(t.substr(i + 1, 2).c_str(), nullptr, 16));
            i += 2;
            break;
        default: out += t[i];
        }
    }
    return out;
}

static str visible(const str &t)
{
    str out;
    char code[8];
    for (char c : t)
        if (static_cast<unsigned char>(c) >= 32 || c == '\n')
            out += c;
        else {
            snprintf(code, sizeof code, "<%02x>", static_cast<unsigned char>(c));
            out += code;
        }
    return out;
}

static void set_size(const str &args)
{
    int r = 24, c = 80;
    sscanf(args.c_str(), "%d %d", &r, &c);
    size.ws_row = static_cast<unsigned short>(r);
    size.ws_col = static_cast<unsigned short>(c);
    screen.resize(r, c);
    if (master >= 0)
        ioctl(master, TIOCSWINSZ, &size);
}

static bool start(const str &args)
{
    std::istringstream in(args);
    std::vector<str> words = {program};
    for (str w; in >> w;)
        words.push_back(w);
    child = forkpty(&master, nullptr, nullptr, &size);
    if (child < 0)
        exit(77);
    if (child == 0) {
        for (const str &e : environment) {
            size_t eq = e.find('=');
            if (eq == e.npos)
                unsetenv(e.c_str());
            else
                setenv(e.substr(0, eq).c_str(), e.c_str() + eq + 1, 1);
        }
        std::vector<char *> argv;
        for (str &w : words)
            argv.push_back(w.data());
        argv.push_back(nullptr);
        execv(program.c_str(), argv.data());
        _exit(126);
    }
    sent = Clock::now();
    screen = Screen(size.ws_row, size.ws_col);
    matched = entered = seen.size();
    return true;
}

static bool ended(const str &args)
{
    int status = 0;
    bool done = until(
        [&] {
            pid_t p = waitpid(child, &status, WNOHANG);
            return p == child;
        },
        timeout);
    // The program may still be writing when the terminal's end is gone.
    for (auto began = Clock::now(); !done && since(began) < timeout; usleep(10000))
        done = waitpid(child, &status, WNOHANG) == child;
    while (master >= 0 && pump(0.05) && since(sent) < timeout)
        if (pollfd p = {master, POLLIN, 0}; poll(&p, 1, 50) <= 0)
            break;
    if (master >= 0)
        close(master);
    master = -1;
    if (!done)
        return false;
    child = -1;
    int code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    if (!args.empty() && code != atoi(args.c_str())) {
        std::cout << "the code is " << code << "\n";
        return false;
    }
    return true;
}

static bool expect(const str &text, double limit)
{
    size_t at = 0;
    bool found = until([&] { return (at = seen.find(text, matched)) != str::npos; }, timeout);
    double took = since(sent);
    if (!found)
        return false;
    matched = at + text.size();
    if (limit > 0) {
        std::cout << "took " << int(took * 1000) << " ms\n";
        return took <= limit;
    }
    return true;
}

static bool is_empty(const str &dir)
{
    DIR *d = opendir(dir.c_str());
    if (!d)
        return true;
    bool none = true;
    while (const dirent *e = readdir(d))
        if (e->d_name[0] != '.') {
            std::cout << "found " << e->d_name << "\n";
            none = false;
        }
    closedir(d);
    return none;
}

static bool has_mode(tcflag_t flag)
{
    termios t;
    return master >= 0 && !tcgetattr(master, &t) && (t.c_lflag & flag);
}

static bool is_cooked()
{
    return until(
        [] {
            termios t;
            return !tcgetattr(master, &t) && (t.c_lflag & ICANON) && (t.c_lflag & ECHO) &&
                   (t.c_lflag & ISIG) && (t.c_iflag & ICRNL) && (t.c_oflag & OPOST);
        },
        2);
}

static str file_text(const str &name)
{
    std::ifstream in(name);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

// "args" split from the quoted text at its end.
static void split(const str &rest, str *args, str *text)
{
    size_t q = rest.find('"');
    *args = rest.substr(0, q);
    args->erase(args->find_last_not_of(' ') + 1);
    size_t e = rest.rfind('"');
    *text = q == str::npos || e == q ? "" : unescape(rest.substr(q + 1, e - q - 1));
}

static bool step(const str &word, const str &rest)
{
    str args, text;
    split(rest, &args, &text);
    if (word == "env")
        return environment.push_back(rest), true;
    if (word == "size")
        return set_size(args), true;
    if (word == "write")
        return bool(std::ofstream(args) << text);
    if (word == "start")
        return start(rest);
    if (word == "send") {
        pump(0);
        sent = Clock::now();
        if (text.find_first_of("\n\r\x03") != str::npos)
            entered = seen.size();
        return write(master, text.data(), text.size()) == ssize_t(text.size());
    }
    if (word == "expect")
        return expect(text, 0);
    if (word == "within") {
        const char *slack = getenv("PTY_SLACK");
        return expect(text, atof(args.c_str()) / 1000 * (slack ? atof(slack) : 5));
    }
    if (word == "absent") {
        for (size_t n = seen.size() + 1; n != seen.size();) {
            n = seen.size();
            auto began = Clock::now();
            while (since(began) < 0.3 && pump(0.1)) {
            }
        }
        return seen.find(text, matched) == str::npos;
    }
    if (word == "line")
        return until([&] { return screen.cursor_row() == text; }, timeout);
    if (word == "prompt")
        return until(
            [] { // the line editor opens a line by asking for bracketed pastes
                return seen.find("\033[?2004h", entered) != str::npos && !has_mode(ICANON) &&
                       screen.cursor_row() == ".";
            },
            timeout);
    if (word == "shows")
        return until([&] { return screen.all().find(text) != str::npos; }, timeout);
    if (word == "sleep") {
        for (auto began = Clock::now(); since(began) < atof(args.c_str()) / 1000;)
            if (!pump(0.02))
                break;
        return true;
    }
    if (word == "timeout")
        return timeout = atof(args.c_str()), true;
    if (word == "signal")
        return kill(child, atoi(args.c_str())) == 0;
    if (word == "hangup") {
        close(master);
        master = -1;
        return true;
    }
    if (word == "exit")
        return ended(args);
    if (word == "cooked")
        return is_cooked();
    if (word == "empty")
        return is_empty(args);
    if (word == "lacks")
        return file_text(args).find(text) == str::npos && !file_text(args).empty();
    if (word == "holds")
        return file_text(args).find(text) != str::npos;
    std::cout << "no such step\n";
    return false;
}

int main(int argc, char **argv)
{
    if (argc < 4)
        return 2;
    int slave;
    if (openpty(&master, &slave, nullptr, nullptr, nullptr)) {
        std::cout << "passed over: no pseudo-terminals here\n";
        return 77;
    }
    close(master);
    close(slave);
    master = -1;
    std::ifstream script(argv[3]);
    if (!script)
        return 2;
    program = argv[1];
    char dir[] = "/tmp/ovata-pty-XXXXXX";
    if (!mkdtemp(dir) || chdir(dir))
        return 2;
    work = dir;
    environment = {
        "HOME=" + work,   "XDG_CONFIG_HOME=" + work + "/config", "TERM=xterm",
        "LC_ALL=C.UTF-8", str("SYSDIR_OVATA=") + argv[2],        "OVATATMP=" + work + "/tmp",
        "NO_COLOR"};
    if (system("mkdir tmp"))
        return 2;
    int n = 0, failed = 0;
    for (str l; !failed && std::getline(script, l);) {
        n++;
        size_t from = l.find_first_not_of(' ');
        if (from == str::npos || l[from] == '#')
            continue;
        size_t blank = std::min(l.find(' ', from), l.size());
        str word = l.substr(from, blank - from), rest = blank < l.size() ? l.substr(blank + 1) : "";
        failed = !step(word, rest);
        if (failed)
            std::cout << "FAILED at line " << n << ": " << l << "\n---- screen\n"
                      << screen.all() << "\n---- written since the last match\n"
                      << visible(seen.substr(std::min(matched, seen.size()))) << "\n";
    }
    if (child > 0) {
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
    }
    if (chdir("/") || system(("rm -rf " + work).c_str()))
        return 2;
    return failed;
}
