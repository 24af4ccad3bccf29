#include "output/log.h"
#include "core/clock.h"
#include "core/files.h"
#include "interp/messages.h"
#include "output/oml.h"
#include "output/print.h"
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

static std::vector<logrow> logs;

const logrow *log_find(const char *name)
{
    for (const logrow &l : logs)
        if (!strcmp(l.name, name))
            return &l;
    return nullptr;
}
const logrow *log_nth(int32_t n)
{
    return n >= 0 && size_t(n) < logs.size() ? &logs[size_t(n)] : nullptr;
}

// ---- the lines that open and close a log, in the log and on the screen
static void field(const char *label, const char *value)
{
    outlev_keep keep(1);
    spout_setcoloroflev();
    spoutsmlf("{ralign 10:%s}:  ", label);
    spout21at(0, value);
    newline();
}

static void stamp(char *when)
{
    char date[32], time[32];
    snprintf(when, 48, "%.20s, %.20s", mkwdate(date), mkwtime(time));
}

void log_report(const logrow *l, const char *event)
{
    char when[48];
    stamp(when);
    field("name", *l->name ? l->name : "<unnamed>");
    field("log", l->path);
    field("log type", l->markup ? "omcl" : "text");
    if (event) {
        field(event, when);
        return;
    }
    field("opened on", l->opened);
    field("status", l->paused ? "off" : "on");
}

static void rule()
{
    outlev_keep keep(1);
    spoutsml("{hline}\n");
}

// ---- life
static std::string absolute(const char *path)
{
    std::string full = path_expand(path);
    return full[0] == '/' ? full : path_join(path_cwd(), full);
}

int32_t log_open(const char *name, const char *path, int kind, bool replace, bool append)
{
    std::string full = absolute(path);
    if (log_find(name))
        return error(604);
    if (full.size() >= sizeof(logrow::path))
        return fierr(603, path);
    for (const logrow &l : logs)
        if (full == l.path)
            return error(604);
    int32_t fd = ov_open(full.c_str(), append ? OV_APPEND : replace ? OV_REPLACE : OV_CREATE);
    if (fd < 0)
        return fierr(fd, path);
    omlflush(oml_cur);
    int32_t id = kind ? omlset_log_input(oml_cur, fd)
                      : omlset_log_output(oml_cur, fd, omlquery_maxwidth(oml_cur));
    if (id < 0) {
        ov_close(fd);
        return error(909);
    }
    logrow l = {};
    snprintf(l.name, sizeof l.name, "%s", name);
    snprintf(l.path, sizeof l.path, "%s", full.c_str());
    l.markup = kind != 0;
    l.fd = fd;
    l.id = id;
    stamp(l.opened);
    logs.push_back(l);
    rule();
    log_report(&logs.back(), "opened on");
    return 0;
}

static int32_t drop(size_t i)
{
    int32_t rc = omllog_close(oml_cur, logs[i].id);
    ov_close(logs[i].fd);
    logs.erase(logs.begin() + ptrdiff_t(i));
    return rc;
}

int32_t log_close(const char *name)
{
    const logrow *l = log_find(name);
    if (!l)
        return error(606);
    omllog_pause(oml_cur, l->id, false); // how it ended is told even while it is off
    log_report(l, "closed on");
    rule();
    logrow was = *l;
    int32_t rc = drop(size_t(l - logs.data()));
    return rc ? fierr(rc, was.path) : 0;
}

int32_t log_pause(const char *name, bool pause)
{
    const logrow *l = log_find(name);
    if (!l)
        return error(606);
    if (l->paused == pause)
        return 0;
    logrow *row = &logs[size_t(l - logs.data())];
    if (!pause)
        omllog_pause(oml_cur, l->id, false);
    log_report(l, pause ? "paused on" : "resumed on");
    if (pause) {
        rule();
        omllog_pause(oml_cur, l->id, true);
    } else
        rule();
    row->paused = pause;
    return 0;
}

// The session ends: each log gets its closing lines; the screen and other logs do not.
static void last_lines(const logrow &l)
{
    char when[48];
    stamp(when);
    std::string path;
    for (const char *p = l.path; *p; p++)
        path += *p == '{' ? "{c -(}" : *p == '}' ? "{c )-}" : std::string(1, *p);
    std::string text = "{p_end}{txt}";
    const std::pair<const char *, std::string> rows[] = {
        {"name", *l.name ? l.name : "<unnamed>"},
        {"log", path},
        {"log type", l.markup ? "omcl" : "text"},
        {"closed on", when},
    };
    for (const auto &[label, value] : rows)
        text += std::string("{txt}{ralign 10:") + label + "}:  {res}" + value + "\n";
    omlsendlog(oml_cur, l.id, (text + "{txt}{hline}\n").c_str());
}

void log_closeall()
{
    for (; !logs.empty(); drop(logs.size() - 1))
        if (oml_cur)
            last_lines(logs.back());
    if (cmdlog_isopen())
        (void)cmdlog_close();
}

void log_check()
{
    if (logs.empty() || !oml_cur || !oml_query_log_err(oml_cur))
        return;
    for (size_t i = logs.size(); i-- > 0;)
        if (omllog_err(oml_cur, logs[i].id)) {
            logrow was = logs[i];
            drop(i);
            (void)fierr(693, was.path);
            outlev_keep keep(2);
            spoutsml("{txt}{search r(693):r(693);} log closed\n");
        }
}

// ---- the command log
bool cmdlog_on;
static int32_t cmdfd = -1;
static std::string cmdpath;

bool cmdlog_isopen()
{
    return cmdfd >= 0;
}
const char *cmdlog_path()
{
    return cmdpath.c_str();
}

int32_t cmdlog_open(const char *path, bool replace, bool append)
{
    if (cmdfd >= 0)
        return error(604);
    int32_t fd = ov_open(path, append ? OV_APPEND : replace ? OV_REPLACE : OV_CREATE);
    if (fd < 0)
        return fierr(fd, path);
    cmdfd = fd;
    cmdpath = absolute(path);
    cmdlog_on = true;
    return 0;
}

int32_t cmdlog_close()
{
    if (cmdfd < 0)
        return error(607);
    ov_close(cmdfd);
    cmdfd = -1;
    cmdlog_on = false;
    return 0;
}

void cmdlog_line(const char *line)
{
    if (cmdfd < 0 || !cmdlog_on)
        return;
    std::string text = std::string(line) + "\n";
    if (lovata_write(cmdfd, text.data(), int64_t(text.size())) == int64_t(text.size()))
        return;
    (void)fierr(693, cmdpath.c_str());
    (void)cmdlog_close();
}
