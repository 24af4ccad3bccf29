// Any bytes as lines, of a do-file, a program file or a pipe, through the whole program. Each input runs in a
// child process of its own, so that exit, endless loops and what one input leaves behind do not
// reach the next. The calls that could harm are replaced below: nothing is started, and nothing
// outside the session's directory is written, renamed or removed.
#include "../session.h"
#include "interp/startup.h"
#include <cerrno>
#include <csignal>
#include <ctime>
#include <dlfcn.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/wait.h>

static bool caged;
static std::string cage;

// A path below the session's directory, where the child also stands.
static bool inside(const char *path)
{
    if (!caged)
        return true;
    if (strstr(path, ".."))
        return false;
    return *path != '/' || !strncmp(path, cage.c_str(), cage.size());
}

static int refused()
{
    errno = EACCES;
    return -1;
}

template <typename... A> static int allowed(const char *name, bool yes, A... args)
{
    if (!yes)
        return refused();
    auto real = reinterpret_cast<int (*)(A...)>(dlsym(RTLD_NEXT, name));
    return real ? real(args...) : refused();
}

extern "C" {
int open(const char *path, int flags, ...)
{
    bool writes = flags & (O_WRONLY | O_RDWR | O_CREAT | O_TRUNC);
    if (writes && !inside(path))
        return refused();
    return int(syscall(SYS_openat, AT_FDCWD, path, flags | O_NONBLOCK, 0600));
}
int unlink(const char *path) noexcept { return allowed("unlink", inside(path), path); }
int rmdir(const char *path) noexcept { return allowed("rmdir", inside(path), path); }
int mkdir(const char *path, mode_t mode) noexcept
{
    return allowed("mkdir", inside(path), path, mode);
}
int rename(const char *from, const char *to) noexcept
{
    return allowed("rename", inside(from) && inside(to), from, to);
}
int chdir(const char *path) noexcept { return allowed("chdir", !caged, path); }
pid_t fork() noexcept { return allowed("fork", !caged); }
int usleep(useconds_t) { return 0; }
}

// A break now and then, which ends most loops that would not end by themselves.
static void tick(int) { stopflag = 1; }

enum mode { M_DOFILE, M_PIPE, M_PROGRAM };

[[noreturn]] static void child(const std::string &text, mode how)
{
    caged = true;
    rlimit size = {1 << 24, 1 << 24};
    setrlimit(RLIMIT_FSIZE, &size);
    signal(SIGXFSZ, SIG_IGN);
    signal(SIGALRM, tick);
    itimerval every = {{0, 200000}, {0, 200000}};
    setitimer(ITIMER_REAL, &every, nullptr);
    const char *name = how == M_PROGRAM ? "fuzz.ado" : "fuzz.do";
    FILE *f = fopen(name, "wb");
    if (!f || (!text.empty() && fwrite(text.data(), text.size(), 1, f) != 1) || fclose(f))
        _exit(70);
    if (how != M_PIPE) {
        (void)run(how == M_PROGRAM ? "fuzz 1 \"a b\", c" : "do fuzz, nostop");
        if (getenv("FUZZ_SHOW"))
            fputs(session_output.c_str(), stderr);
        if (ovata_level || typelmac != 5179 || s_outlev || !procflg || runprog)
            abort();
        _exit(0);
    }
    int fd = open(name, O_RDONLY);
    dup2(fd, 0);
    do
        getreq(false, true);
    while (doreq());
    _exit(0);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *p, size_t n)
{
    session();
    if (cage.empty()) {
        char dir[500];
        if (!getcwd(dir, sizeof dir))
            abort();
        cage = std::string(dir) + "/";
    }
    std::string text(reinterpret_cast<const char *>(p), n < 50000 ? n : 50000);
    mode how = text.find("program fuzz") != std::string::npos ? M_PROGRAM : n % 3 ? M_DOFILE : M_PIPE;
    pid_t pid = fork();
    if (pid < 0)
        abort();
    if (!pid)
        child(text, how);
    int status = 0;
    for (int32_t waited = 0; waitpid(pid, &status, WNOHANG) == 0; waited++) {
        if (waited == 5000) {   // still going after five seconds
            kill(pid, SIGKILL);
            waitpid(pid, &status, 0);
            return 0;
        }
        timespec ms = {0, 1000000};
        nanosleep(&ms, nullptr);
    }
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0)
        return 0;
    fprintf(stderr, "status %d, mode %d, after these lines:\n%s\n", status, how, text.c_str());
    if (const char *to = getenv("FUZZ_KEEP")) {
        FILE *f = fopen(to, "wb");
        if (f) {
            fwrite(p, n, 1, f);
            fclose(f);
        }
    }
    abort();
}
