// Makes the n-th allocation, write or poll of whole commands fail, n = 1, 2, ... until none is
// hit: nothing leaks or breaks, and a command that failed left the data as they were wherever
// it promises that.
#include "../session.h"
#include "core/files.h"
#include <gtest/gtest.h>

namespace {

struct faultcase {
    fault_kind kind;
    const char *prep;   // lines parted by ;
    const char *cmd;
    int32_t rc;         // the code it may fail with, -1 any
    bool keeps;         // data as before after a failure
};

void lines(const char *text)
{
    std::string all = text;
    for (size_t at = 0; at < all.size();) {
        size_t end = all.find(';', at);
        std::string line = all.substr(at, end - at);
        ASSERT_EQ(run(line), 0) << line << "\n" << session_output;
        at = end == std::string::npos ? all.size() : end + 1;
    }
}

constexpr const char *small =
    "drop _all;set obs 40;generate x = _n;generate str5 s = \"t\" + string(_n);"
    "generate byte b = mod(_n, 3);capture erase f.dta;capture erase f.csv;capture erase g.csv";

void faultloop(const faultcase &c, bool stay)
{
    for (int64_t n = 1; n < 100000; n++) {
        lines(c.prep);
        uint64_t was = dsa_hash(sysdsa);
        fault_arm(c.kind, n, stay);
        int32_t rc = run(c.cmd);
        int64_t hits = fault_disarm();
        stopflag = 0;
        altstopflag = 0;
        ASSERT_EQ(dsa_check(sysdsa), 0) << c.cmd << " n=" << n << " rc=" << rc;
        if (!hits) {
            ASSERT_EQ(rc, 0) << c.cmd << " n=" << n << "\n" << session_output;
            return;
        }
        if (rc && c.rc >= 0) {
            ASSERT_EQ(rc, c.rc) << c.cmd << " n=" << n << "\n" << session_output;
        }
        if (rc && c.kind != F_BREAK) {
            ASSERT_FALSE(session_output.empty()) << c.cmd << " n=" << n << " rc=" << rc;
        }
        if (rc && c.keeps) {
            ASSERT_EQ(dsa_hash(sysdsa), was) << c.cmd << " n=" << n << " rc=" << rc;
        }
    }
    FAIL() << c.cmd << ": the fault is always hit";
}

const faultcase cases[] = {
    {F_MEM, small, "generate double z = x*2 if b", -1, true},
    {F_MEM, small, "replace b = x*1000", -1, false},
    {F_MEM, small, "replace s = s + \" longer than it was\"", -1, false},
    {F_MEM, small, "list", -1, true},
    {F_MEM, small, "summarize x, detail", -1, true},
    {F_MEM, small, "sort b x", -1, false},
    {F_MEM, small, "set obs 3000", -1, true},
    {F_MEM, small, "local m = x[3] + 1", -1, true},
    {F_MEM, small, "scalar q = 3", -1, true},
    {F_MEM, small, "save f.dta", -1, true},
    {F_MEM, small, "outsheet using f.csv, comma", -1, true},
    {F_MEM, small, "drop x", -1, false},
    {F_MEM, small, "drop if b", -1, false},
    {F_MEM, small, "compress", -1, false},
    {F_MEM, small, "tabulate b, matcell(F)", -1, true},
    {F_MEM, small, "_regress x b, robust", -1, false},
    {F_MEM, small, "_regress x b, vce(cluster b)", -1, false},
    {F_MEM, small, "correlate x b", -1, true},
    {F_MEM, small, "matrix accum A = x b", -1, true},
    {F_MEM, small, "_rmcoll x b", -1, true},
    {F_MEM, small, "oneway x b", -1, true},
    {F_MEM, small, "_pctile x, nq(4)", -1, true},
    {F_BREAK, small, "_regress x b, robust", 1, false},
    {F_BREAK, small, "correlate x b", 1, true},
    {F_BREAK, small, "oneway x b, scheffe", 1, true},
    {F_WRITE, small, "save f.dta", 699, true},
    {F_WRITE, small, "outsheet using f.csv, comma", 699, true},
    {F_BREAK, small, "generate z = x", 1, false},
    {F_BREAK, small, "sort b x", 1, false},
    {F_BREAK, small, "summarize x, detail", 1, true},
    {F_BREAK, small, "list", 1, true},
};

}  // namespace

TEST(Faults, CommandsSurviveAnyOneFailure)
{
    for (const faultcase &c : cases) {
        SCOPED_TRACE(c.cmd);
        faultloop(c, false);
    }
}

TEST(Faults, CommandsSurviveFailureFromThereOn)
{
    for (const faultcase &c : cases) {
        SCOPED_TRACE(c.cmd);
        faultloop(c, true);
    }
}

// What one failed write leaves: no half of a file, the data marked as changed still.
TEST(Faults, AFailedSaveLeavesNoFile)
{
    lines(small);
    fault_arm(F_WRITE, 2, true);
    EXPECT_EQ(run("save f.dta"), 699);
    fault_disarm();
    EXPECT_FALSE(path_isfile("f.dta"));
    EXPECT_TRUE(s_updata);
    EXPECT_EQ(run("save f.dta"), 0) << session_output;
}

TEST(Faults, ReadingStopsCleanlyWhereverAReadFails)
{
    lines(small);
    lines("save f.dta");
    lines("outsheet using f.csv, comma");
    for (const char *line : {"use f.dta, clear", "insheet using f.csv, clear"})
        for (fault_kind kind : {F_READ, F_MEM})
            for (int64_t n = 1;; n++) {
                fault_arm(kind, n, false);
                int32_t rc = run(line);
                int64_t hits = fault_disarm();
                ASSERT_EQ(dsa_check(sysdsa), 0) << line << " n=" << n;
                if (!hits) {
                    ASSERT_EQ(rc, 0) << line << "\n" << session_output;
                    ASSERT_EQ(_Nobs, 40);
                    break;
                }
                if (rc) {
                    ASSERT_FALSE(session_output.empty()) << line << " n=" << n << " rc=" << rc;
                }
            }
}
