// What long work shows of itself, and how it goes away again.
#include "../session.h"
#include "core/clock.h"
#include "core/pollsort.h"
#include "core/progress.h"
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace
{

// Descriptor 1 led into a file while a test looks at what is written there.
struct Screen {
    int was, fd;
    char name[32] = "/tmp/ovata-progress-XXXXXX";
    Screen()
    {
        fflush(stdout);
        was = dup(1);
        fd = mkstemp(name);
        dup2(fd, 1);
        progress_watched = true;
        progress_wipetext = "<wipe>";
        progress_ready = nullptr;
    }
    ~Screen()
    {
        progress_watched = false;
        dup2(was, 1);
        close(was);
        close(fd);
        unlink(name);
    }
    std::string text() const
    {
        char buf[4096];
        ssize_t n = pread(fd, buf, sizeof buf, 0);
        return std::string(buf, n > 0 ? size_t(n) : 0);
    }
};

} // namespace

TEST(Progress, IsShownAfterTwoSecondsAndGoesAway)
{
    std::string quick, slow, done;
    {
        Screen s;
        progress("sorting", 0.1);
        clock_shift(1.5);
        progress("sorting", 0.2);
        quick = s.text();
        clock_shift(6.5);
        progress("sorting", 0.5); // 0.4 in 8 seconds
        slow = s.text();
        progress_end();
        progress_end();
        done = s.text();
    }
    EXPECT_EQ(quick, "");
    EXPECT_EQ(slow, "sorting  50%, 10 s left");
    EXPECT_EQ(done, slow + "<wipe>");
    EXPECT_FALSE(progress_shown);
}

TEST(Progress, TaskOfAProgramStandsForTheCommandsInIt)
{
    std::string text, after;
    {
        Screen s;
        progress_task(1, 10, 2);
        clock_shift(3600);
        progress_task(3, 10, 2);
        progress("reading", 0.9);
        progress_task(9, 10, 3); // of an inner level: not asked
        progress_end();
        text = s.text();
        progress_level(2);
        EXPECT_TRUE(progress_shown);
        progress_level(1);
        after = s.text();
    }
    EXPECT_EQ(text, "working  30%, 3:30:00 left");
    EXPECT_EQ(after, text + "<wipe>");
}

TEST(Progress, CostsNothingUnwatched)
{
    progress_watched = false;
    progress("reading", 0.5);
    progress_task(1, 2, 0);
    EXPECT_FALSE(progress_shown);
    EXPECT_EQ(run("set progress 1 10"), 0);
    EXPECT_EQ(run("set progress 1 10 3"), 198);
    EXPECT_EQ(run("set progress off"), 0);
    EXPECT_EQ(run("assert c(progress) == \"off\""), 0);
    EXPECT_EQ(run("set progress on"), 0);
}

TEST(Pollsort, SortsAnyArrayAndKeepsEveryElementAfterABreak)
{
    std::mt19937 gen(7);
    auto less = [](int32_t a, int32_t b) { return a < b; };
    for (int64_t n : {0, 1, 2, 40000, 300000})
        for (int32_t kinds : {1, 3, 1 << 30}) {
            std::vector<int32_t> v(static_cast<size_t>(n)), want;
            for (auto &x : v)
                x = int32_t(gen() % uint32_t(kinds));
            if (kinds == 1 << 30 && n > 100000) // ends with its only largest
                v.back() = INT32_MAX;
            want = v;
            std::sort(want.begin(), want.end());
            EXPECT_EQ(poll_sort(v.data(), n, less), 0);
            EXPECT_EQ(v, want);
            EXPECT_EQ(poll_sort(v.data(), n, less), 0); // in order already
            EXPECT_EQ(v, want);
        }
    std::vector<int32_t> v(500000), want;
    for (auto &x : v)
        x = int32_t(gen());
    want = v;
    std::sort(want.begin(), want.end());
    fault_arm(F_BREAK, 2, false);
    EXPECT_EQ(poll_sort(v.data(), int64_t(v.size()), less), 1);
    fault_disarm();
    stopflag = 0;
    EXPECT_NE(v, want);
    std::sort(v.begin(), v.end());
    EXPECT_EQ(v, want);
}
