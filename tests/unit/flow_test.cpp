// Prefixes with what they let through, and nests of blocks and loops held against a small
// interpreter of the same nests.
#include "../session.h"
#include "core/rc.h"
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <vector>

namespace {

// Starts the session, or brings it back to the top with nothing silenced.
void fresh()
{
    session();
    s_outlev = ls_outlev = 0;
}

std::string value(const char *name)
{
    const char *p = macptr(name);
    return p ? p : "";
}

// Reads the text as a file of commands, silently, with all its definitions.
int32_t load(const std::string &text)
{
    fresh();
    FILE *f = fopen("body.do", "w");
    fputs(text.c_str(), f);
    fclose(f);
    return run("run body.do");
}

TEST(flow, what_the_prefixes_let_through)
{
    ASSERT_EQ(load("capture program drop loud\nprogram loud\nversion 12\ndisplay \"r\"\nnoisily display \"n\"\n"
                   "display as error \"e\"\nquietly display \"q\"\nquietly noisily display \"qn\"\nend\n"
                   "capture program drop fails\nprogram fails\ndisplay \"before\"\nnosuchcommand\n"
                   "display \"after\"\nend\n"), 0);
    ASSERT_EQ(run("clear") + run("set obs 1") + run("gen longname = 4"), 0);
    const std::string unknown = "unrecognized command:  nosuchcommand\n";
    const struct {
        const char *line;
        int32_t rc;
        std::string want;
    } rows[] = {
        {"display 1", 0, "1\n"},
        {"quietly display 1", 0, ""},
        {"qui: display 1", 0, ""},
        {"quietly noisily display 1", 0, "1\n"},
        {"noisily quietly display 1", 0, ""},
        {"n quietly n display 1", 0, "1\n"},
        {"quietly display as error 1", 0, "1\n"},
        {"quietly display as text 1", 0, ""},
        {"capture display as error 1", 0, ""},
        {"capture noisily display 1", 0, "1\n"},
        {"capture quietly display as error 1", 0, ""},
        {"capture quietly noisily display 1", 0, "1\n"},
        {"quietly capture noisily display 1", 0, "1\n"},
        {"loud", 0, "r\nn\ne\nqn\n"},
        {"quietly loud", 0, "e\n"},
        {"quietly noisily loud", 0, "r\nn\ne\nqn\n"},
        {"capture loud", 0, ""},
        {"capture noisily loud", 0, "r\nn\ne\nqn\n"},
        {"nosuchcommand", RC_UNRECOGNIZED, unknown},
        {"quietly nosuchcommand", RC_UNRECOGNIZED, unknown},
        {"capture nosuchcommand", 0, ""},
        {"fails", RC_UNRECOGNIZED, "before\n" + unknown},
        {"quietly fails", RC_UNRECOGNIZED, unknown},
        {"capture noisily fails", 0, "before\n" + unknown},
        {"noisily capture fails", 0, ""},
        {"nobreak capture noisily display 2", 0, "2\n"},
        {"display longn", 0, "4\n"},
        {"novarabbrev display longn", RC_NOTFOUND, "longn not found\n"},
        {"novarabbrev varabbrev display longn", 0, "4\n"},
        {"varabbrev capture noisily novarabbrev display longn", 0, "longn not found\n"},
        {"version 8: display c(version)", 0, "8\n"},
        {"version 8.2: version 6: display c(version)", 0, "6\n"},
        {"version 99", 9, ""},
        {"version 12.1.3", RC_SYNTAX, ""},
        {"version 12x", RC_SYNTAX, ""},
        {"quiet", 0, ""},
        {"q display 1", 1, ""},
    };
    for (const auto &r : rows) {
        int32_t rc = run(r.line);
        EXPECT_EQ(rc, r.rc == 1 && rc ? rc : r.rc) << r.line;   // 1 stands for any refusal
        EXPECT_TRUE(session_output == r.want || (r.want.empty() && r.rc))
            << r.line << ": " << session_output;
        EXPECT_EQ(s_outlev, 0) << r.line;
        EXPECT_EQ(vernum, ver_current) << r.line;
        EXPECT_TRUE(ovata_varabbrev) << r.line;
    }
}

TEST(flow, captured_codes)
{
    fresh();
    const struct {
        const char *line;
        const char *code;
    } rows[] = {
        {"capture display 1", "0"},       {"capture nosuchcommand", "199"},
        {"capture error 111", "111"},     {"capture display nosuch", "111"},
        {"capture error 0", "0"},         {"capture exit 459", "459"},
        {"capture capture error 5", "0"}, {"capture quietly error 9", "9"},
        {"capture display 1 +", "198"},   {"capture use nosuch.dta, clear", "601"},
        {"capture display \"a\" + 1", "109"},
        {"capture confirm number x", "7"}, {"capture confirm file nosuch.txt", "601"},
        {"capture program drop nosuch", "111"}, {"capture log close", "606"},
    };
    for (const auto &r : rows) {
        EXPECT_EQ(run(r.line), 0) << r.line;
        EXPECT_EQ(session_output, "") << r.line;
        run("display _rc");
        EXPECT_EQ(session_output, std::string(r.code) + "\n") << r.line;
    }
}

// A nest of statements. Its text is what the system gets; play() is what should happen.
struct node;
using block = std::vector<std::unique_ptr<node>>;
enum kind { SAY, IF, FORV, FORE, WHILE, CONTINUE, BREAK, QUIET, CATCH, FAIL, CALLEND };

struct node {
    kind k;
    int id = 0;               // SAY: what; else the number of the loop variable
    std::vector<int> items;   // values of the loop, or the ones for which the test holds
    int on = -1;              // the loop variable tested; -1 a constant
    block body, other;
    bool chained = false;     // an else if
};

std::mt19937 rng(20261121);
int serial, budget;

block make(int depth, std::vector<int> &loops, bool noloopexit);

std::unique_ptr<node> makeone(int depth, std::vector<int> &loops, bool noloopexit)
{
    auto n = std::make_unique<node>();
    static const kind kinds[] = {SAY, SAY, SAY, IF, IF, IF, FORV, FORE, WHILE, QUIET, CATCH, CONTINUE, BREAK, FAIL, CALLEND};
    n->k = depth > 5 || budget-- <= 0 ? SAY : kinds[rng() % std::size(kinds)];
    bool loopexit = n->k == CONTINUE || n->k == BREAK;
    if ((loopexit && (loops.empty() || noloopexit)) || ((n->k == FAIL || n->k == CALLEND) && rng() % 4))
        n->k = SAY;
    n->id = ++serial;
    if (n->k == SAY || n->k == CONTINUE || n->k == BREAK || n->k == FAIL || n->k == CALLEND)
        return n;
    if (n->k == IF) {
        if (!loops.empty() && rng() % 4)
            n->on = loops[rng() % loops.size()];
        for (int v = 1; v <= 4; v++)
            if (rng() % 2)
                n->items.push_back(v);
        n->body = make(depth + 1, loops, noloopexit);
        if (rng() % 2) {
            n->other = make(depth + 1, loops, noloopexit);
            n->chained = rng() % 2 && n->other.size() == 1 && n->other[0]->k == IF;
        }
        return n;
    }
    if (n->k == QUIET || n->k == CATCH) {
        n->body = make(depth + 1, loops, noloopexit);
        return n;
    }
    int first = 1 + int(rng() % 3), last = int(rng() % 5);
    for (int v = n->k == WHILE ? 1 : first; v <= last; v++)
        n->items.push_back(v);
    loops.push_back(n->id);
    n->body = make(depth + 1, loops, noloopexit);
    loops.pop_back();
    return n;
}

block make(int depth, std::vector<int> &loops, bool noloopexit)
{
    block b;
    for (size_t i = 0, n = 1 + rng() % 3; i < n; i++)
        b.push_back(makeone(depth, loops, noloopexit));
    return b;
}

std::string write(const block &b, const std::string &in);

std::string write(const node &n, const std::string &in)
{
    std::string v = "v" + std::to_string(n.id), body = write(n.body, in + "  "), close = in + "}\n", s;
    switch (n.k) {
    case SAY: return in + "global T $T " + std::to_string(n.id) + "\n";
    case CONTINUE: return in + "continue\n";
    case BREAK: return in + "continue, break\n";
    case FAIL: return in + "error 111\n";
    case CALLEND: return in + "exit\n";
    case QUIET: return in + "quietly {\n" + body + close;
    case CATCH: return in + "capture {\n" + body + close + in + "global T $T c`=_rc'\n";
    case IF:
        s = in + "if inlist(" + (n.on < 0 ? "2" : "`v" + std::to_string(n.on) + "'") + ", -1";
        for (int x : n.items)
            s += ", " + std::to_string(x);
        s += ") {\n" + body + close;
        if (n.chained)
            s += in + "else " + write(*n.other[0], in).substr(in.size());
        else if (!n.other.empty())
            s += in + "else {\n" + write(n.other, in + "  ") + close;
        return s;
    case FORV:
        s = n.items.empty() ? "2/1" : std::to_string(n.items[0]) + "/" + std::to_string(n.items.back());
        return in + "forvalues " + v + " = " + s + " {\n" + body + close;
    case FORE:
        for (int x : n.items)
            s += " " + std::to_string(x);
        return in + "foreach " + v + " in" + s + " {\n" + body + close;
    case WHILE:
        return in + "local " + v + " 0\n" + in + "while `" + v + "' < " + std::to_string(n.items.size()) +
               " {\n" + in + "  local ++" + v + "\n" + body + close;
    }
    return s;
}

std::string write(const block &b, const std::string &in)
{
    std::string s;
    for (const auto &n : b)
        s += write(*n, in);
    return s;
}

enum outcome { GOES_ON, NEXT, OUT, FAILED, ENDED };
std::string trace;
int now[4000];

outcome play(const block &b)
{
    for (const auto &p : b) {
        const node &n = *p;
        outcome o = GOES_ON;
        switch (n.k) {
        case SAY: trace += " " + std::to_string(n.id); break;
        case CONTINUE: return NEXT;
        case BREAK: return OUT;
        case FAIL: return FAILED;
        case CALLEND: return ENDED;
        case QUIET: o = play(n.body); break;
        case CATCH:
            o = play(n.body);
            if (o == FAILED || o == GOES_ON) {
                trace += o == FAILED ? " c111" : " c0";
                o = GOES_ON;
            }
            break;
        case IF: {
            int v = n.on < 0 ? 2 : now[n.on];
            bool yes = false;
            for (int x : n.items)
                yes |= x == v;
            o = play(yes ? n.body : n.other);
            break;
        }
        default:
            for (int x : n.items) {
                now[n.id] = x;
                o = play(n.body);
                if (o >= OUT)
                    break;
            }
            if (o == NEXT || o == OUT)
                o = GOES_ON;
        }
        if (o != GOES_ON)
            return o;
    }
    return GOES_ON;
}

TEST(flow, nests_run_as_written)
{
    fresh();
    int32_t ended[5] = {};
    for (int round = 0; round < 250; round++) {
        serial = 0;
        budget = 60;
        std::vector<int> loops;
        block b = make(0, loops, false);
        trace.clear();
        outcome o = play(b);
        if (trace.size() > 4000)
            continue;
        ended[o]++;
        std::string body = write(b, "  ");
        ASSERT_EQ(load("global T\ncapture program drop nest\nprogram nest\n  version 12\n" + body + "end\n"), 0) << body;
        EXPECT_EQ(run("nest"), o == FAILED ? 111 : 0) << body;
        EXPECT_EQ(value("T"), trace.empty() ? "" : trace.substr(1)) << body;
        EXPECT_EQ(s_outlev, 0);
        EXPECT_TRUE(procflg);
        if (HasFailure())
            return;
        if (o == ENDED)
            continue;
        // The same lines in a file: loops are lifted out of it.
        EXPECT_EQ(load("version 12\nglobal T\n" + body), o == FAILED ? 111 : 0) << body;
        EXPECT_EQ(value("T"), trace.empty() ? "" : trace.substr(1)) << "in a file\n" << body;
        if (HasFailure())
            return;
    }
    EXPECT_GT(ended[GOES_ON], 60);
    EXPECT_GT(ended[FAILED], 5);
    EXPECT_GT(ended[ENDED], 5);
}

TEST(flow, loop_heads)
{
    fresh();
    const struct {
        const char *head, *want;
    } rows[] = {
        {"forvalues i = 1/4", "1 2 3 4"},
        {"forvalues i=1/4", "1 2 3 4"},
        {"forv i = 5(-2)0", "5 3 1"},
        {"forvalues i = 0(5)20", "0 5 10 15 20"},
        {"forvalues i = 10 20 to 45", "10 20 30 40"},
        {"forvalues i = 4 3 : 1", "4 3 2 1"},
        {"forvalues i = -2/1", "-2 -1 0 1"},
        {"forvalues i = 1(.25)2", "1 1.25 1.5 1.75 2"},
        {"forvalues i = 3/2", ""},
        {"foreach i in a b  c", "a b c"},
        {"foreach i in \"a b\" c", "a b c"},
        {"foreach i of numlist 1/3 8(-2)4 9", "1 2 3 8 6 4 9"},
        {"foreach i of numlist 1 3:7 2", "1 3 5 7 2"},
        {"foreach i of local L", "p q r"},
        {"foreach i of global G", "x y"},
        {"foreach i of local nothere", ""},
        {"foreach i of any 1 b", "1 b"},
    };
    run("global G x y");
    for (const auto &r : rows) {
        ASSERT_EQ(load("local L p q r\nglobal T\n" + std::string(r.head) + " {\n global T $T `i'\n}\n"), 0) << r.head;
        EXPECT_EQ(value("T"), r.want) << r.head;
    }
    for (const char *bad : {"forvalues i = 1(0)3", "forvalues i 1/3", "forvalues = 1/3", "forvalues i = a/3",
                            "forvalues i = 1", "foreach i", "foreach in a b", "foreach i of nokind a",
                            "foreach i of varlist nosuch", "foreach i of numlist 1 x", "while nosuch",
                            "while 1 +", "if 1 +", "if nosuch"}) {
        EXPECT_NE(load("global T\n" + std::string(bad) + " {\n global T entered\n}\n"), 0) << bad;
        EXPECT_EQ(value("T"), "") << bad;
        EXPECT_TRUE(procflg);
    }
    run("macro drop T G");
}

} // namespace
