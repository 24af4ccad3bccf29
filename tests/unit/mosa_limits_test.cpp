// Depths and limits: recursion that never ends, chains without measure, tables of the compiler
// filled to the brim, and stops asked for while much is under way.
#include "mosahelp.h"
#include <chrono>
#include <csignal>
#include <functional>
#include <sys/time.h>

namespace
{

using str = std::string;

str repeated(int32_t n, const std::function<str(int32_t)> &f)
{
    str s;
    for (int32_t i = 0; i < n; i++)
        s += f(i);
    return s;
}

str num(int32_t i)
{
    return std::to_string(i);
}

void goes_on()
{
    EXPECT_EQ(ms_value("rows((1,2\\3,4))"), 2) << session_output;
    EXPECT_EQ(mosa_xeq_depth, 0);
    EXPECT_EQ(m_stak, m_stakbase - 1);
}

constexpr const char *definitions =
    "real scalar deep(real scalar n) return(deep(n+1) + 1)\n"
    "real scalar through(pointer(function) f, real scalar n) return((*f)(f, n+1) + 1)\n"
    "real scalar wide(real scalar n) return(1+(2+(3+(4+(5+(6+(7+wide(n+1))))))))\n"
    "real scalar even(real scalar n) return(odd(n-1))\n"
    "real scalar odd(real scalar n) return(even(n-1))\n"
    "class k {\n real scalar go()\n virtual real scalar vgo()\n}\n"
    "real scalar k::go() return(go() + 1)\n"
    "real scalar k::vgo() return(vgo() + 1)\n"
    "real scalar member() {\n class k scalar c\n return(c.go())\n}\n"
    "real scalar virtually() {\n class k scalar c\n return(c.vgo())\n}\n"
    "class born {\n void new()\n}\nvoid born::new() {\n class born scalar again\n}\n"
    "class dying {\n real scalar n\n void destroy()\n}\n"
    "void dying::destroy() {\n class dying scalar next\n}\n"
    "struct node {\n real scalar v\n pointer scalar next\n}\n"
    "real scalar chain(real scalar n) {\n pointer(struct node scalar) scalar p, q\n"
    " real scalar i\n p = NULL\n for (i=1; i<=n; i++) {\n  q = &(node())\n  q->v = i\n"
    "  q->next = p\n  p = q\n }\n return(p->v)\n}\n"
    "struct nest {\n struct nest vector kids\n}\n"
    "struct nest scalar nested(real scalar n) {\n struct nest scalar y\n"
    " if (n > 0) y.kids = nested(n-1)\n return(y)\n}\n"
    "void again() ovata(\"mosa: again()\")\n";

} // namespace

TEST(MosaDepth, RecursionEndsInACode)
{
    ms_begin();
    ASSERT_EQ(ms(definitions), 0) << session_output;
    m_sums before = m_getsum();
    for (const char *text :
         {"deep(1)", "through(&through(), 1)", "wide(1)", "even(1)", "member()", "virtually()"}) {
        EXPECT_EQ(ms(str("(void) ") + text), 3998) << text;
        EXPECT_NE(session_output.find("3998  stack overflow\n"), str::npos) << text;
        goes_on();
    }
    EXPECT_EQ(ms("b = born()"), 3998);
    goes_on();
    EXPECT_NE(ms("again()"), 0);
    EXPECT_NE(session_output.find("system limit exceeded"), str::npos);
    goes_on();
    ms("void kills() {\n class dying scalar d\n}\nkills()"); // each destroys another
    goes_on();
    ASSERT_EQ(run("mosa_drop b ms__v kills()"), 0) << session_output;
    EXPECT_EQ(m_getsum().nmat, before.nmat);
    EXPECT_EQ(m_getsum().nfcn, before.nfcn);
}

// What hangs together in a long chain is freed, copied and compared without going deep, or with
// a code.
TEST(MosaDepth, ChainsOfAnyLength)
{
    ms_begin();
    ASSERT_EQ(ms(definitions), 0) << session_output;
    int32_t before = m_getsum().nmat;
    ASSERT_EQ(ms("(void) chain(300000)"), 0) << session_output;
    EXPECT_EQ(m_getsum().nmat, before);
    ASSERT_EQ(ms("x = nested(6000)\ny = x\nsame = (y == x)\ny = x = 0"), 0) << session_output;
    EXPECT_EQ(ms_value("same"), 1);
    EXPECT_EQ(m_getsum().nmat, before + 4); // x, y, same and the value asked for
    // A circle lives until all is cleared.
    ASSERT_EQ(ms("c = 1\nc = &c\nd = (&c, NULL)\nd[2] = &d"), 0) << session_output;
    ASSERT_EQ(run("mosa_clear"), 0);
    EXPECT_EQ(m_getsum().nmat, 0);
}

TEST(MosaLimits, OfTheCompilerAreTold)
{
    ms_begin();
    auto lines = [](int32_t n, const char *before, const char *after) {
        return "void full() {\nreal scalar x, i\n i = x = 1\n" +
               repeated(n, [&](int32_t i) { return before + num(i) + after + "\n"; }) + "}";
    };
    auto deeper = [](int32_t n) {
        return repeated(n, [](int32_t i) {
            return "struct d" + num(i) + " {\n" +
                   (i ? "struct d" + num(i - 1) + " scalar a" : str("real scalar a")) + "\n}\n";
        });
    };
    const struct {
        str fits, text;
        const char *words;
        int32_t code = 3000;
    } rows[] = {
        {lines(380, "v", " = 1"), lines(400, "v", " = 1"), "no room to add more symbols\n"},
        {lines(1990, "x = ", ".5"), lines(2001, "x = ", ".5"),
         "no room to add more double literals\n"},
        {lines(498, "x = strlen(\"s", "\")"), lines(500, "x = strlen(\"s", "\")"),
         "too many string literals\n"},
        {"", lines(501, "goto t", ""), "too many branch points\n"},
        {"void full() {\ngoto t123456\nt123456:\n}", "void full() {\ngoto t1234567\n}",
         "t1234567:  tag name too long\n"},
        {"x = " + repeated(240, [](int32_t) { return str("1 +\n"); }) + "1",
         "x = " + repeated(260, [](int32_t) { return str("1 +\n"); }) + "1",
         "expression too long\n"},
        {lines(1, "x = i++ + i++ + i++ + i++ + i++ + i++ + i++ + i++ + ", ""),
         lines(1, "x = i++ + i++ + i++ + i++ + i++ + i++ + i++ + i++ + i++ + ", ""),
         "too many postponed ++ or --\n"},
        {lines(300, "x = x*x*x*x*x*x + i + ", ""), lines(9000, "x = x*x*x*x*x*x*x*x + i + ", ""),
         "program too long\n"},
        {"void full(" + repeated(400, [](int32_t) { return str("pointer("); }) + "real scalar" +
             repeated(400, [](int32_t) { return str(") scalar"); }) + " x) x = NULL",
         "void full(" + repeated(520, [](int32_t) { return str("pointer("); }) + "real scalar" +
             repeated(520, [](int32_t) { return str(")"); }) + " x) x = NULL",
         "no room to add more types\n"},
        {"",
         "void full() {\n" +
             repeated(140,
                      [](int32_t i) {
                          return "struct a" + str(24, 'n') + num(100000 + i) + " vector v" +
                                 num(i) + "\n";
                      }) +
             "}",
         "no room to record more structure names\n"},
        {"x = " + str(200, '(') + "1" + str(200, ')'), "x = " + str(499, '(') + "1" + str(499, ')'),
         "expression too long\n"},
        {"", "void full(x) {\n" + repeated(12000, [](int32_t) { return str("if (x) {\n"); }),
         "program too long\n"},
        {deeper(480) + "x = d479()", deeper(510) + "x = d509()", "3304  struct nested too deeply\n",
         3304},
    };
    for (const auto &r : rows) {
        ASSERT_EQ(run("mosa_clear"), 0);
        if (!r.fits.empty()) {
            EXPECT_EQ(ms(r.fits), 0) << r.words << session_output;
        }
        ASSERT_EQ(run("mosa_clear"), 0);
        EXPECT_EQ(ms(r.text), r.code) << r.words;
        EXPECT_NE(session_output.find(r.words), str::npos) << session_output.substr(0, 500);
        EXPECT_EQ(mo_findfcn("", "full", ""), nullptr) << "nothing half built is kept";
        goes_on();
    }
}

namespace
{

std::chrono::steady_clock::time_point asked;

void ask_to_stop(int)
{
    asked = std::chrono::steady_clock::now();
    state_break();
}

// Seconds from the request to the end; negative when it ended before.
double seconds_to_stop(const str &text, int32_t *rc)
{
    asked = {};
    signal(SIGALRM, ask_to_stop);
    itimerval timer{};
    timer.it_value.tv_usec = 60000;
    setitimer(ITIMER_REAL, &timer, nullptr);
    *rc = ms(text);
    auto now = std::chrono::steady_clock::now();
    timer.it_value.tv_usec = 0;
    setitimer(ITIMER_REAL, &timer, nullptr);
    intr_reset();
    return asked.time_since_epoch().count() ? std::chrono::duration<double>(now - asked).count()
                                            : -1;
}

} // namespace

// The bound is generous: the machine that tests is shared, and checked builds are slow. What
// does not poll at all takes seconds here, or for ever.
TEST(MosaBreaks, LongWorkStopsWhenAsked)
{
    ms_begin();
    ASSERT_EQ(ms("A = J(1500,1500,1.5)\nv = runiform(400000,1)\ns = strofreal(v)\n"
                 "t = 3000000*\"ab \"\nZ = J(1000,1000,1+2i)\nkeep = (1,2)"),
              0)
        << session_output;
    for (const char *work : {"x = 1",
                             "B = A :+ A",
                             "B = A :^ A",
                             "B = A'",
                             "B = exp(A)",
                             "r = sum(A)",
                             "r = rowsum(A)",
                             "B = (A, A)",
                             "B = (A \\ A)",
                             "r = (A == A')",
                             "B = J(3000,3000,1)",
                             "o = order(v,1)",
                             "o = order(s,1)",
                             "q = strofreal(v)",
                             "q = s :+ \"x\"",
                             "q = strupper(s)",
                             "B = v[(1::400000)]",
                             "r = minmax(A)",
                             "r = 1..4000000",
                             "q = subinstr(t, \"a\", \"bbb\")",
                             "q = tokens(t)",
                             "B = Z :* Z",
                             "B = Z'",
                             "B = runiform(2000,2000)",
                             "keep2 = keep # J(1000,1000,2)"}) {
        int32_t rc;
        double seconds = seconds_to_stop(str("while (1) ") + work, &rc);
        EXPECT_EQ(rc, 1) << work << " " << session_output;
        EXPECT_EQ(session_output, "") << work;
        EXPECT_LT(seconds, 2) << work;
        EXPECT_EQ(ms_value("all(keep :== (1,2)) & rows(A) == 1500"), 1) << work;
    }
    // The compiler stops too, and a display.
    int32_t rc;
    str source = "void endless() {\n" + repeated(2000000, [](int32_t) { return str(";\n"); });
    EXPECT_LT(seconds_to_stop(source, &rc), 2);
    EXPECT_EQ(rc, 3000);
    EXPECT_NE(session_output.find("--Break--"), str::npos);
    EXPECT_LT(seconds_to_stop("while (1) A", &rc), 2);
    EXPECT_EQ(rc, 1);
    goes_on();
}
