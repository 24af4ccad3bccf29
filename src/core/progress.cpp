#include "core/progress.h"
#include "core/clock.h"
#include "core/limits.h"
#include "core/settings.h"
#include <cstdio>
#include <cstring>
#include <unistd.h>

bool progress_watched, progress_shown;
bool (*progress_ready)();
const char *progress_wipetext = "";

static constexpr double quiet_secs = 2, redraw_secs = 0.2;

// One stretch of work: when it began, the share it had then, and how far it came.
struct stretch {
    const char *what = nullptr;
    double since = 0, from = 0, share = 0;
};
static stretch work;
static stretch task;
static int32_t task_level = -1; // -1 no task
static double drawn;            // when the line was written last

static void put(const char *text, size_t n)
{
    if (write(1, text, n) < 0)
        progress_watched = false; // the terminal is gone
}

void progress_wipe()
{
    if (!progress_shown)
        return;
    progress_shown = false;
    put(progress_wipetext, strlen(progress_wipetext));
}

static size_t left_text(char *buf, size_t n, double secs)
{
    auto s = int64_t(secs + 0.5);
    int k;
    if (s < 60)
        k = snprintf(buf, n, "%d s left", int(s));
    else if (s < 3600)
        k = snprintf(buf, n, "%d:%02d left", int(s / 60), int(s % 60));
    else
        k = snprintf(buf, n, "%lld:%02d:%02d left", static_cast<long long>(s / 3600),
                     int(s / 60 % 60), int(s % 60));
    return k > 0 ? size_t(k) : 0;
}

static void draw(const stretch &w, double now)
{
    if (now - drawn < redraw_secs && progress_shown)
        return;
    if (!progress_shown && progress_ready && !progress_ready())
        return;
    char line[160], left[40] = "";
    double took = now - w.since, gone = w.share - w.from;
    if (gone > 0 && w.share < 1)
        left_text(left, sizeof left, took * (1 - w.share) / gone);
    int n =
        snprintf(line, sizeof line, "%s%.20s %3d%%%s%s", progress_shown ? progress_wipetext : "",
                 w.what, int(w.share * 100), *left ? ", " : "", left);
    progress_shown = true;
    drawn = now;
    put(line, size_t(n));
}

// Work that starts over, or goes by another name, is a stretch of its own; it does not have
// to wait again when the line is there already.
static void advance(stretch *w, const char *what, double share)
{
    double now = clock_secs();
    share = share < 0 ? 0 : share > 1 ? 1 : share;
    if (w->what != what || share < w->share) {
        w->what = what;
        w->since = now;
        w->from = share;
    }
    w->share = share;
    if (now - w->since >= quiet_secs || progress_shown)
        draw(*w, now);
}

void progress_tell(const char *what, double share)
{
    if (task_level < 0)
        advance(&work, what, share);
    else if (progress_shown || clock_secs() - task.since >= quiet_secs)
        draw(task, clock_secs());
}

void progress_done()
{
    work = {};
    if (task_level < 0)
        progress_wipe();
}

void progress_task(double done, double total, int32_t level)
{
    if (!progress_watched || !(total > 0))
        return;
    if (done >= total) {
        progress_level(level - 1);
        return;
    }
    if (task_level < 0) {
        task = {};
        task_level = level;
    } else if (level > task_level) {
        return; // the outer task counts
    }
    advance(&task, "working", done / total);
}

void progress_level(int32_t level)
{
    if (task_level < 0 || task_level <= level)
        return;
    task_level = -1;
    task = {};
    progress_done();
}
