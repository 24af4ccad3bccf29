// What display prints, formats against the C library and a calendar, settings through the set
// command, and logs that hold what the screen got.
#include "../session.h"
#include "core/rc.h"
#include "core/settings.h"
#include "output/fmt.h"
#include <cmath>
#include <ctime>
#include <gtest/gtest.h>
#include <random>

namespace {

// Starts the session, or brings it back to the top with nothing silenced.
void fresh()
{
    session();
    s_outlev = ls_outlev = 0;
}

std::mt19937 rng(1960);

struct row {
    const char *line, *want;
};

std::string shown(const std::string &items)
{
    EXPECT_EQ(run("display " + items), 0) << items;
    return session_output;
}

TEST(showforms, display_items)
{
    fresh();
    static const row rows[] = {
        {"", "\n"},
        {"1", "1\n"},
        {"-1", "-1\n"},
        {"1 -1", "0\n"},                       // one expression
        {"1 \" \" -1", "1 -1\n"},
        {"\"a\" \"b\"", "ab\n"},
        {"\"a\" + \"b\"", "ab\n"},
        {"\"a\" , \"b\"", "a b\n"},            // a comma is a blank
        {"`\"say \"hi\"\"'", "say \"hi\"\n"},
        {"%5.1f 2.25 %5.1f 3.75", "  2.2  3.8\n"},   // ties as the exact binary value
        {"%9s \"abc\" \"|\" %-9s \"abc\" \"|\"", "      abc|abc      |\n"},
        {"%12.0gc 1234567", "   1,234,567\n"},
        {"%-12.2fc 1234567.891 \"|\"", "1,234,567.89|\n"},
        {"%08.3f 3.14159", "0003.142\n"},
        {"%9.2e 12345", " 1.23e+04\n"},
        {"_column(5) \"x\" _column(3) \"y\"", "    xy\n"},
        {"\"ab\" _skip(4) \"c\"", "ab    c\n"},
        {"_dup(4) \"ab\"", "abababab\n"},
        {"_dup(0) \"ab\" \"c\"", "c\n"},
        {"\"a\" _newline \"b\" _newline(2) \"c\"", "a\nb\n\nc\n"},
        {"_n(1) \"b\" _s(2) \"c\" _col(8) \"d\"", "\nb  c   d\n"},
        {"_char(65) _char(126)", "A~\n"},
        {"as text \"a\" as result 2 as error \"c\" as input \"d\"", "a2cd\n"},
        {"\"{hline 5}\" _asis \"{hline 5}\"", "-----{hline 5}\n"},
        {"\"a\" _continue", "a"},
        {".", ".\n"}, {".z", ".z\n"},
        {"1/3", ".3333333\n"}, {"100/3", "33.33333\n"}, {"1e10", "1.00e+10\n"}, {"123456789", "1.23e+08\n"},
        {"1234567.8", "1234568\n"}, {"2^31", "2.15e+09\n"}, {"0.1 + 0.2", ".3\n"}, {"-.5", "-.5\n"},
        {"1e-7", "1.00e-07\n"}, {"%20.0f 2^62", " 4611686018427387904\n"},
    };
    for (const row &r : rows)
        EXPECT_EQ(shown(r.line), r.want) << r.line;
    for (const char *bad : {"%9.2q 1", "\"open", "_column(nosuch)", "_dup(2", "as nosuch 1", "1 +", "nosuch", "(1",
                            "%9.2f \"text\"", "1 + \"a\"", "_skip(", "_newline("})
        EXPECT_NE(run(std::string("display ") + bad), 0) << bad;
    EXPECT_EQ(shown("\"next\""), "next\n");     // nothing is left over from the refusals
}

// Where the number fits its width the C library says the same.
TEST(showforms, fixed_and_scientific)
{
    std::uniform_real_distribution<double> mant(-10, 10);
    for (int i = 0; i < 3000; i++) {
        double z = mant(rng) * std::pow(10, int(rng() % 9) - 4);
        int d = int(rng() % 9), w = 12 + int(rng() % 20);
        char fmt[40], got[300], want[400], cfmt[40];
        bool left = rng() % 2, sci = rng() % 2;
        snprintf(fmt, sizeof fmt, "%%%s%d.%d%c", left ? "-" : "", w, d, sci ? 'e' : 'f');
        snprintf(cfmt, sizeof cfmt, "%%%s*.*%c", left ? "-" : "", sci ? 'e' : 'f');
        if (std::fabs(z) < std::pow(10, -d))
            continue;       // a negative zero loses its sign here
        snprintf(want, sizeof want, cfmt, w, d, z);
        if (strlen(want) > size_t(w) || d + (sci ? 8 : 7) >= w)
            continue;
        fmtnum(got, sizeof got, z, fmt);
        ASSERT_STREQ(got, want) << fmt << " " << z;
    }
}

// The general format loses nothing where its width allows, and never leaves its width.
TEST(showforms, general)
{
    for (int i = 0; i < 5000; i++) {
        double z = (double(rng()) / 4294967296.0 - .5) * std::pow(10, int(rng() % 40) - 20);
        char got[300];
        int w = 8 + int(rng() % 16);
        std::string fmt = "%" + std::to_string(w) + ".0g";
        fmtnum(got, sizeof got, z, fmt.c_str());
        ASSERT_EQ(strlen(got), size_t(w)) << fmt << " " << z;
        double back = strtod(got, nullptr);
        // Sign, point, first digit and an exponent take at most eight of the width.
        double allowed = 5 * std::pow(10, -(w - 7)) + 1e-15;
        ASSERT_LE(std::fabs(back - z), std::fabs(z) * allowed) << fmt << " [" << got << "] " << z;
        long whole = long(rng() % 1000000);
        fmtnum(got, sizeof got, double(whole), fmt.c_str());
        ASSERT_EQ(atol(got), whole) << fmt;
        ASSERT_EQ(strchr(got, '.'), nullptr) << got;
    }
}

TEST(showforms, commas)
{
    for (int i = 0; i < 500; i++) {
        long long n = (long long)(rng()) * (rng() % 2 ? 1 : 1000) / (1 << rng() % 20);
        std::string want = std::to_string(n);
        for (int at = int(want.size()) - 3; at > 0; at -= 3)
            want.insert(size_t(at), ",");
        char got[300];
        fmtnumtrim(got, sizeof got, double(n), "%24.0fc");
        EXPECT_EQ(got, want);
        fmtnumtrim(got, sizeof got, -double(n), "%24.0fc");
        EXPECT_EQ(got, n ? "-" + want : want);
    }
}

TEST(showforms, days_by_the_calendar)
{
    static const char *const months[] = {"jan", "feb", "mar", "apr", "may", "jun", "jul", "aug", "sep", "oct", "nov", "dec"};
    for (int i = 0; i < 3000; i++) {
        int day = int(rng() % 80000) - 20000;
        time_t t = (time_t(day) - 3653) * 86400;       // 1960 lies 3653 days before 1970
        tm b;
        gmtime_r(&t, &b);
        char got[300], want[100];
        fmtnumtrim(got, sizeof got, day, "%td");
        snprintf(want, sizeof want, "%02d%s%04d", b.tm_mday, months[b.tm_mon], b.tm_year + 1900);
        ASSERT_STREQ(got, want) << day;
        fmtnumtrim(got, sizeof got, day, "%tdCCYY-NN-DD");
        strftime(want, sizeof want, "%Y-%m-%d", &b);
        ASSERT_STREQ(got, want) << day;
        fmtnumtrim(got, sizeof got, day, "%tdDay_Mon_dd,_CCYY_JJJ");
        char rest[40];
        strftime(want, sizeof want, "%a %b ", &b);
        snprintf(rest, sizeof rest, "%d, %d %03d", b.tm_mday, b.tm_year + 1900, b.tm_yday + 1);
        ASSERT_EQ(got, std::string(want) + rest) << day;
        int second = int(rng() % 86400);
        t += second;
        gmtime_r(&t, &b);
        fmtnumtrim(got, sizeof got, (double(day) * 86400 + second) * 1000, "%tcCCYY.NN.DD_HH:MM:SS");
        strftime(want, sizeof want, "%Y.%m.%d %H:%M:%S", &b);
        ASSERT_STREQ(got, want) << day << " " << second;
        int n = day / 10;                                // months, quarters, half-years
        int year = 1960 + int(std::floor(n / 12.0)), month = n - (year - 1960) * 12 + 1;
        fmtnumtrim(got, sizeof got, n, "%tm");
        ASSERT_EQ(got, std::to_string(year) + "m" + std::to_string(month));
        fmtnumtrim(got, sizeof got, n, "%tq");
        year = 1960 + int(std::floor(n / 4.0));
        if (year >= 100) {
            ASSERT_EQ(got, std::to_string(year) + "q" + std::to_string(n - (year - 1960) * 4 + 1));
        }
    }
}

// Every setting through the command: what is good is kept and told by c(), what is bad is
// refused and changes nothing.
TEST(showforms, settings)
{
    fresh();
    static const struct {
        const char *name, *good, *told;
        const char *bad[4];
    } rows[] = {
        {"more", "on", "on", {"maybe", "1 2", "on off", nullptr}},
        {"rmsg", "on", "on", {"x", "", nullptr, nullptr}},
        {"dp", "comma", "comma", {"point", "", "9", nullptr}},
        {"linesize", "100", "100", {"39", "256", "80.5", "x"}},
        {"pagesize", "40", "40", {"1", "-3", "x", nullptr}},
        {"level", "90", "90", {"9.99", "99.991", ".", "x"}},
        {"varabbrev", "off", "off", {"5", "x", nullptr, nullptr}},
        {"type", "double", "double", {"str5", "real", "", nullptr}},
        {"maxiter", "100", "100", {"-1", "16001", "1.5", nullptr}},
        {"trace", "off", "off", {"x", "2", nullptr, nullptr}},
        {"tracedepth", "5", "5", {"-1", "32001", "x", nullptr}},
        {"checksum", "on", "on", {"x", nullptr, nullptr, nullptr}},
        {"timeout1", "60", "60", {"0", "32001", nullptr, nullptr}},
        {"httpproxyport", "8080", "8080", {"0", "65536", nullptr, nullptr}},
        {"logtype", "text", "text", {"html", "", nullptr, nullptr}},
        {"cformat", "%8.3f", "%8.3f", {"8.3f", "%8.3q", nullptr, nullptr}},
        {"showomitted", "off", "off", {"all", "x", nullptr, nullptr}},
        {"mosafavor", "space", "space", {"time", nullptr, nullptr, nullptr}},
        {"mosacache", "500", "500", {"9", "x", nullptr, nullptr}},
        {"linegap", "2", "2", {"-1", "101", nullptr, nullptr}},
        {"adosize", "500", "500", {"9", "10001", nullptr, nullptr}},
    };
    char was[500], buf[500];
    for (const auto &r : rows) {
        const setting *s = setting_exact(r.name);
        ASSERT_NE(s, nullptr) << r.name;
        setting_text(s, was);
        std::string set = std::string("set ") + r.name + " ", keep = was;
        for (const char *bad : r.bad)
            if (bad) {
                EXPECT_EQ(run(set + bad), strcmp(r.name, "cformat") ? RC_SYNTAX : 120) << set << bad << session_output;
                EXPECT_NE(session_output, "") << set << bad;
                EXPECT_EQ(setting_text(s, buf), keep) << set << bad;
            }
        EXPECT_EQ(run(set + r.good), 0) << set << session_output;
        EXPECT_STREQ(setting_text(s, buf), r.told) << set;
        if (strcmp(r.name, "varabbrev") && strcmp(r.name, "httpproxyport")) {   // c() lacks these
            EXPECT_EQ(run(std::string("display c(") + r.name + ")"), 0);
            EXPECT_EQ(session_output, std::string(r.told) + "\n") << set;
        }
        EXPECT_EQ(run(set + (keep.empty() ? std::string() : keep)), 0) << set << keep;
        EXPECT_EQ(setting_text(s, buf), keep) << set;
    }
    EXPECT_EQ(run("set nosuch 5"), RC_SYNTAX);
    EXPECT_EQ(run("set"), 0);
}

std::string contents(const char *name)
{
    std::string s;
    FILE *f = fopen(name, "r");
    if (!f)
        return "(no file)";
    char buf[4096];
    for (size_t n; (n = fread(buf, 1, sizeof buf, f)) > 0;)
        s.append(buf, n);
    fclose(f);
    return s;
}

// A plain log holds what the screen showed; type reads a mark-up log back to the same.
TEST(showforms, logs)
{
    fresh();
    static const char *const lines[] = {
        "display \"{bf:bold} {hline 10} {c -(}\"", "display _asis \"{bf:not}\"", "display as error \"e\"",
        "display _dup(30) \"abcde\"", "display \"{p 4 8 2}\" _dup(30) \"words \" \"{p_end}\"",
        "display \"{res}x{col 20}y{txt}\"", "capture noisily nosuchcommand {x}", "quietly display 1", "display 1 2",
    };
    ASSERT_EQ(run("quietly log using a.log, text replace name(a)"), 0) << session_output;
    ASSERT_EQ(run("quietly log using b.omcl, omcl replace name(b)"), 0) << session_output;
    std::string screen;
    for (const char *l : lines) {
        run(l);
        screen += session_output;
    }
    EXPECT_EQ(run("quietly log off a"), 0);
    run("display \"unlogged\"");
    EXPECT_EQ(run("quietly log on a"), 0);
    EXPECT_EQ(run("quietly log close a"), 0);
    EXPECT_EQ(run("quietly log close b"), 0);
    std::string plain = contents("a.log"), marked = contents("b.omcl");
    EXPECT_NE(plain.find(screen), plain.npos) << plain << "\n--- screen\n" << screen;
    EXPECT_EQ(plain.find("unlogged"), plain.npos);
    EXPECT_EQ(marked.substr(0, 7), "{omcl}\n");
    EXPECT_EQ(run("type b.omcl"), 0);
    EXPECT_NE(session_output.find(screen), session_output.npos) << session_output;
    // All the lines stay within the width.
    for (size_t at = 0, nl; (nl = screen.find('\n', at)) != screen.npos; at = nl + 1)
        EXPECT_LE(nl - at, 79u) << screen.substr(at, nl - at);
    EXPECT_EQ(run("quietly log using a.log, text"), RC_FILEEXISTS);
    EXPECT_EQ(contents("a.log"), plain);
    ASSERT_EQ(run("quietly log using a.log, text append"), 0);
    run("display \"more\"");
    EXPECT_EQ(run("quietly log close"), 0);
    std::string longer = contents("a.log");
    EXPECT_EQ(longer.substr(0, plain.size()), plain);
    EXPECT_NE(longer.find("more\n", plain.size()), longer.npos);
    EXPECT_EQ(run("log close"), 606);
    EXPECT_EQ(run("log off"), 606);
    EXPECT_EQ(run("cmdlog close"), 607);
    EXPECT_EQ(run("quietly log using nosuchdir/a.log, text"), RC_FILEOPEN);
}

} // namespace
