// Commands that build things in several steps, each step made to fail in turn: nothing breaks,
// nothing leaks beyond what a clean run leaves, and half-made things are gone.
#include "../session.h"
#include "core/rc.h"
#include "stats/results.h"
#include <gtest/gtest.h>

namespace {

struct row {
    const char *prep;  // lines parted by ;
    const char *cmd;
    bool keeps;        // a failure leaves the data as they were
    const char *after = nullptr;  // a line that must work once the failure is over
    bool cleans = false;  // cleaning up after it takes memory too
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

#define BASE                                                                                      \
    "drop _all;label drop _all;macro drop _all;set obs 12;generate x = _n;"                       \
    "generate str5 s = \"t\" + string(mod(_n, 4));generate byte b = mod(_n, 3);"

constexpr const char *base = BASE;
constexpr const char *labelled = BASE "label define L 0 \"zero\" 1 \"one\" 2 \"two\";label values b L";
constexpr const char *pair = BASE
    "generate long id = _n;save u.dta, replace;drop in 1/3;rename x w;set obs 14;"
    "replace id = _n + 20 if id == .";
constexpr const char *mats = BASE "matrix A = (1,2\\3,4);matrix B = (5,6\\7,8)";

const row rows[] = {
    {base, "encode s, generate(c)", true, "encode s, generate(c)"},
    {labelled, "decode b, generate(d)", true, "decode b, generate(d)"},
    {base, "expand 2 if b", true, "expand 2 if b"},
    {base, "expand x, generate(copy)", true, nullptr},
    {base, "regress x b", false, "regress x b"},
    {base, "by b, sort: summarize x", false, nullptr},
    {base, "bysort s (x): generate n = _n", false, nullptr},
    {pair, "use u.dta, clear", false, "use u.dta, clear"},
    {pair, "_append using u.dta", false, nullptr},
    {pair, "_merge 1:1 id using u.dta", false, nullptr},
    {mats, "matrix C = A*B + inv(A)", true, "matrix C = A*B + inv(A)"},
    {mats, "matrix C = A[1..., 2] , B", true, nullptr},
    {mats, "matrix rownames A = one two", true, nullptr},
    {mats, "matrix list A", true, nullptr},
    {labelled, "label define L 3 \"three\", add", true, "label list L"},
    {labelled, "label list", true, nullptr},
    {base, "label variable x \"a label of some length\"", true, nullptr},
    {base, "char x[note1] some text that is kept", true, nullptr},
    {base, "local long `=x[2]' and `:word 2 of one two three'", true, nullptr},
    {base, "global G : type x", true, nullptr},
    {base, "capture noisily generate z = x", true, nullptr},
    {base, "tempvar one two three", true, nullptr},
    {base, "recast double x", false, "summarize x"},
    {base, "replace x = x/3 if b == 1", true, nullptr},
    {base, "replace b = 1000 in 3", true, nullptr},
    {base, "tabulate s b", true, nullptr},
    {base, "describe", true, nullptr},
    {base, "correlate x b", true, nullptr},
    {base, "display x[3] + 2 \" and \" s[2]", true, nullptr},
    {base, "numlist \"1/20\"", true, nullptr},
    {base, "_datasignature", true, nullptr},
    {base, "infile a str8 t c using raw.raw, clear", false, "describe"},
    {base, "infix a 1-3 str t 4-9 using raw.raw, clear", false, "describe"},
    {base, "outfile using out.raw, replace", true, nullptr},
    {base, "outsheet using out.csv, replace", true, nullptr},
    {base, "mark touse if x > 3", true, nullptr},
    {base, "aggregate (mean) x, by(b)", true, nullptr, true},
    {base, "compute m = mean(x), by(s)", false, nullptr},
    {base, "snapshot save", true, nullptr},
    {base, "postfile pf a str5 b using posted, replace", true, "capture postclose pf"},
    {base, "file open h using h.txt, write replace", true, "capture file close h"},
    {base, "count if s == \"t1\"", true, nullptr},
};

void loop(const row &r, fault_kind kind, bool stay)
{
    for (int64_t n = 1; n < 20000; n++) {
        run("postclose pf");
        run("file close h");
        lines(r.prep);
        uint64_t was = dsa_hash(sysdsa);
        int32_t vars = _Kvar, obs = _Nobs;
        fault_arm(kind, n, stay);
        int32_t rc = run(r.cmd);
        int64_t hits = fault_disarm();
        stopflag = 0;
        altstopflag = 0;
        ASSERT_EQ(dsa_check(sysdsa), 0) << "n=" << n << " rc=" << rc;
        if (!hits)
            return;
        if (!rc)
            continue;
        if (kind != F_BREAK) {
            ASSERT_FALSE(session_output.empty()) << "n=" << n << " rc=" << rc;
        }
        if (r.keeps && kind != F_BREAK && !(stay && r.cleans)) {
            ASSERT_EQ(dsa_hash(sysdsa), was) << "n=" << n << " rc=" << rc << session_output;
            ASSERT_EQ(_Kvar, vars) << "n=" << n;
            ASSERT_EQ(_Nobs, obs) << "n=" << n;
        }
        if (r.after) {
            ASSERT_EQ(run(r.after), 0) << "n=" << n << " " << session_output;
        }
    }
    FAIL() << "the fault is always hit";
}

class FaultRows : public testing::TestWithParam<size_t> {
protected:
    void SetUp() override
    {
        lines(base);
        FILE *f = fopen("raw.raw", "w");
        fputs("1 one 2\n3 two 4\n5 three 6\n", f);
        fclose(f);
    }
    void TearDown() override { lines("capture postclose pf;capture file close h;snapshot erase _all;drop _all;"
              "label drop _all;matrix drop _all"); }
};

}  // namespace

TEST_P(FaultRows, SurviveAnyFailureOfMemory)
{
    const row &r = rows[GetParam()];
    SCOPED_TRACE(r.cmd);
    loop(r, F_MEM, false);
    loop(r, F_MEM, true);
}

TEST_P(FaultRows, SurviveBreaksAndFilesThatFail)
{
    const row &r = rows[GetParam()];
    SCOPED_TRACE(r.cmd);
    for (fault_kind kind : {F_BREAK, F_READ, F_WRITE})
        loop(r, kind, false);
}

INSTANTIATE_TEST_SUITE_P(All, FaultRows, testing::Range(size_t{0}, std::size(rows)));

// A loop that is stopped from memory keeps giving the blocks back.
TEST(FaultLeaks, FailedCommandsGiveTheirBlocksBack)
{
    for (const row &r : rows) {
        SCOPED_TRACE(r.cmd);
        int64_t before = 0;
        for (int pass = 0; pass < 3; pass++) {
            for (int64_t n = 1; n < 12; n++) {
                run("postclose pf");
                run("file close h");
                lines(r.prep);
                fault_arm(F_MEM, n, false);
                run(r.cmd);
                fault_disarm();
            }
            run("postclose pf");
            run("file close h");
            lines("snapshot erase _all;drop _all;label drop _all;macro drop _all;matrix drop _all;"
                  "discard");
            int64_t now = mem_live().blocks;
            if (pass) {
                ASSERT_LE(now, before + 2) << "pass " << pass;
            }
            before = now;
        }
    }
}
