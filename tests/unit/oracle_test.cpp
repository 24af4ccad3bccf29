// Commands and expressions against second, slower ways of getting the same answers, over
// random data and random texts. A failure names its seed.
#include "../session.h"
#include "core/missing.h"
#include "core/numtext.h"
#include "expr/expr.h"
#include "expr/strfun.h"
#include "output/fmt.h"
#include "stats/results.h"
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <vector>

namespace {

using rng = std::mt19937;

void lines(std::initializer_list<const char *> all)
{
    for (const char *line : all)
        ASSERT_EQ(run(line), 0) << line << "\n" << session_output;
}

double result(const char *name)
{
    return gretval_find(RK_R, name) == 15 ? retval_get_as_double() : -1e99;
}

// ---- expressions, evaluated over their words

struct word {
    char op;       // 0 for a number
    const char *text;
    double z;
};
struct oprow {
    const char *text;
    char code;
};
// Loosest first; each row is a level of its own.
constexpr oprow oplevels[] = {{"|", '|'},  {"&", '&'},  {"==", 'e'}, {">=", 'g'}, {"<=", 'l'},
                              {"<", '<'},  {">", '>'},  {"!=", 'n'}, {"~=", 'm'}, {"+", '+'},
                              {"-", '-'},  {"*", '*'},  {"/", '/'},  {"^", '^'}};

double apply(char op, double a, double b)
{
    bool missing = a >= misval || b >= misval;
    double z = misval;
    switch (op) {
    case '|': return a != 0 || b != 0;
    case '&': return a != 0 && b != 0;
    case 'e': return a == b;
    case 'g': return a >= b;
    case 'l': return a <= b;
    case '<': return a < b;
    case '>': return a > b;
    case 'n':
    case 'm': return a != b;
    case '+': z = a + b; break;
    case '-': z = a - b; break;
    case '*': z = a * b; break;
    case '/':
        if (b != 0)
            z = a / b;
        break;
    case '^': return ovpow(a, b);
    }
    return missing || !(z > min_realdouble && z < misval) ? misval : z;
}

double value_of(const std::vector<word> &w, size_t from, size_t to)
{
    if (to - from == 1)
        return w[from].z;
    for (const oprow &level : oplevels)
        for (size_t i = to - 2; i > from; i -= 2) {
            if (w[i].op == level.code)
                return apply(level.code, value_of(w, from, i), value_of(w, i + 1, to));
            if (i == from + 1)
                break;
        }
    return misval;
}

std::vector<word> random_words(rng &draw)
{
    static const struct {
        const char *text;
        double z;
    } numbers[] = {{"0", 0},   {"1", 1},     {"2", 2},     {"3.5", 3.5},   {".25", .25},
                   {"7", 7},   {"1e3", 1e3}, {"2e-2", 2e-2}, {".", misval}, {".b", mis_of(2)},
                   {"10", 10}, {"1.8x+3", 12}};
    std::vector<word> w;
    size_t n = 2 + draw() % 9;
    for (size_t i = 0; i < n; i++) {
        if (i) {
            const oprow &o = oplevels[draw() % std::size(oplevels)];
            w.push_back({o.code, o.text, 0});
        }
        auto &z = numbers[draw() % std::size(numbers)];
        w.push_back({0, z.text, z.z});
    }
    return w;
}

// ---- data

void fill_data(rng &draw, int32_t n)
{
    char line[40];
    lines({"drop _all"});
    snprintf(line, sizeof line, "set obs %d", n);
    lines({line, "generate int g = .", "generate byte h = .", "generate double x = ."});
    for (int32_t obs = 1; obs <= n; obs++) {
        dsa_store(double(draw() % 7), sysdsa, 1, uint32_t(obs));
        dsa_store(draw() % 9 ? double(draw() % 4) : misval, sysdsa, 2, uint32_t(obs));
        dsa_store(draw() % 11 ? (double(draw()) - 2e9) / 1024 : mis_of(int(draw() % 27)), sysdsa, 3,
                  uint32_t(obs));
    }
}

double cell(uint32_t var, int32_t obs) { return dsa_data(sysdsa, var, uint32_t(obs)); }

}  // namespace

TEST(Oracle, ExpressionsGroupByTheTableOfOperators)
{
    session();
    for (uint32_t seed = 1; seed <= 4000; seed++) {
        rng draw(seed);
        std::vector<word> w = random_words(draw);
        std::string text;
        for (const word &x : w)
            text += (draw() % 3 ? "" : " ") + std::string(x.text);
        bool isstr;
        double got;
        char str[250];
        int32_t rc = exp_text(text.c_str(), W_NUM, &isstr, &got, str);
        // Two numbers with a blank between them end the expression; here an operator is
        // always between.
        ASSERT_EQ(rc, 0) << text;
        double want = value_of(w, 0, w.size());
        ASSERT_EQ(got, want) << "seed " << seed << ": " << text;
    }
}

TEST(Oracle, SumsAndPositionsRestartInGroups)
{
    for (uint32_t seed = 1; seed <= 25; seed++) {
        SCOPED_TRACE(seed);
        rng draw(seed);
        int32_t n = 1 + int32_t(draw() % 90);
        fill_data(draw, n);
        lines({"sort g h", "by g h: generate n = _n", "by g h: generate N = _N",
               "by g h: generate double s = sum(x) if h != 2",
               "by g h: generate double lag = x[_n-1]",
               "by g h: generate double last = x[_N] if x < 0"});
        int32_t first = 1;
        double total = 0;
        for (int32_t obs = 1; obs <= n; obs++) {
            if (obs == 1 || cell(1, obs) != cell(1, obs - 1) || cell(2, obs) != cell(2, obs - 1)) {
                ASSERT_TRUE(obs == 1 || cell(1, obs) > cell(1, obs - 1) ||
                            (cell(1, obs) == cell(1, obs - 1) && cell(2, obs) > cell(2, obs - 1)));
                first = obs;
                total = 0;
            }
            int32_t end = obs;
            while (end < n && cell(1, end + 1) == cell(1, obs) && cell(2, end + 1) == cell(2, obs))
                end++;
            double x = cell(3, obs);
            total += x < misval && cell(2, obs) != 2 ? x : 0;
            ASSERT_EQ(cell(4, obs), obs - first + 1);
            ASSERT_EQ(cell(5, obs), end - first + 1);
            ASSERT_EQ(cell(6, obs), cell(2, obs) == 2 ? misval : total) << obs;
            ASSERT_EQ(cell(7, obs), obs == first ? misval : cell(3, obs - 1));
            ASSERT_EQ(cell(8, obs), x < 0 ? cell(3, end) : misval);
        }
    }
}

TEST(Oracle, SummaryOfAVariable)
{
    for (uint32_t seed = 1; seed <= 40; seed++) {
        SCOPED_TRACE(seed);
        rng draw(seed * 77);
        int32_t n = 2 + int32_t(draw() % 200);
        fill_data(draw, n);
        std::vector<double> x;
        for (int32_t obs = 1; obs <= n; obs++)
            if (cell(3, obs) < misval && cell(1, obs) > 1)
                x.push_back(cell(3, obs));
        lines({"summarize x if g > 1, detail"});
        ASSERT_EQ(result("N"), double(x.size()));
        if (x.size() < 3)
            continue;
        std::sort(x.begin(), x.end());
        long double sum = 0, ss = 0;
        for (double z : x)
            sum += z;
        long double mean = sum / (long double)x.size();
        for (double z : x)
            ss += (z - mean) * (z - mean);
        double var = double(ss / (long double)(x.size() - 1));
        EXPECT_NEAR(result("mean"), double(mean), 1e-14 * std::fabs(x.back() - x.front()));
        EXPECT_NEAR(result("Var"), var, 1e-13 * var);
        EXPECT_EQ(result("min"), x.front());
        EXPECT_EQ(result("max"), x.back());
        double half = double(x.size()) / 2;
        size_t i = size_t(half);
        EXPECT_EQ(result("p50"), half == double(i) ? (x[i - 1] + x[i]) / 2 : x[i]);
    }
}

TEST(Oracle, TablesCountWhatIsThere)
{
    for (uint32_t seed = 1; seed <= 25; seed++) {
        SCOPED_TRACE(seed);
        rng draw(seed * 13);
        fill_data(draw, 1 + int32_t(draw() % 120));
        std::map<std::pair<double, double>, int> pairs;
        std::map<double, int> rows, cols;
        for (int32_t obs = 1; obs <= _Nobs; obs++)
            if (cell(2, obs) < misval && cell(3, obs) > 0) {
                pairs[{cell(1, obs), cell(2, obs)}]++;
                rows[cell(1, obs)]++;
                cols[cell(2, obs)]++;
            }
        ASSERT_EQ(run("quietly tabulate g h if x > 0, matcell(F) matrow(R) matcol(C)"), 0);
        ASSERT_EQ(result("r"), double(rows.size()));
        if (rows.empty())
            continue;
        ASSERT_EQ(result("c"), double(cols.size()));
        int i = 1;
        for (auto &[r, nr] : rows) {
            int j = 1;
            for (auto &[c, nc] : cols) {
                char line[120];
                auto it = pairs.find({r, c});
                snprintf(line, sizeof line, "assert F[%d,%d] == %d & R[%d,1] == %g & C[1,%d] == %g",
                         i, j, it == pairs.end() ? 0 : it->second, i, r, j, c);
                ASSERT_EQ(run(line), 0) << line;
                j++;
            }
            i++;
        }
    }
}

TEST(Oracle, DroppedAndKeptRowsAreTheOnesAskedFor)
{
    for (uint32_t seed = 1; seed <= 30; seed++) {
        SCOPED_TRACE(seed);
        rng draw(seed * 5);
        int32_t n = 1 + int32_t(draw() % 100), a = 1 + int32_t(draw() % unsigned(n));
        int32_t b = a + int32_t(draw() % unsigned(n - a + 1));
        fill_data(draw, n);
        std::vector<double> want;
        bool keep = draw() & 1;
        for (int32_t obs = 1; obs <= n; obs++) {
            bool hit = obs >= a && obs <= b && cell(1, obs) >= 3;
            if (hit == keep)
                want.push_back(cell(3, obs));
        }
        char line[80];
        snprintf(line, sizeof line, "%s if g >= 3 in %d/%d", keep ? "keep" : "drop", a, b);
        ASSERT_EQ(run(line), 0) << line;
        ASSERT_EQ(_Nobs, int32_t(want.size())) << line;
        for (size_t i = 0; i < want.size(); i++)
            ASSERT_EQ(cell(3, int32_t(i) + 1), want[i]) << line;
    }
}

// A number shown in a width never leaves it, and read back it is as near as its digits say.
TEST(Oracle, FormatsKeepTheirWidthAndTheirDigits)
{
    session();
    static const char *const formats[] = {"%9.0g",  "%12.0g", "%18.0g", "%8.2f",  "%10.3e", "%9.0gc",
                                          "%14.4f", "%-9.0g", "%5.0f",  "%20.8g", "%7.0g"};
    for (uint32_t seed = 1; seed <= 20000; seed++) {
        rng draw(seed);
        double z = std::ldexp(double(draw()) / 4294967296.0 - .5, int(draw() % 120) - 50);
        if (draw() % 3 == 0)
            z = std::floor(z);
        const char *fmt = formats[draw() % std::size(formats)];
        char out[300];
        int32_t n = fmtnum(out, sizeof out, z, fmt);
        ASSERT_EQ(n, int32_t(strlen(out)));
        int32_t w = fmtwidth(fmt);
        ASSERT_TRUE(n == w || (n > w && fmt[strlen(fmt) - 1] != 'g')) << fmt << " " << z << " " << out;
        std::string digits;
        for (char *p = out; *p; p++)
            if (*p != ',' && *p != ' ')
                digits += *p;
        double back;
        ASSERT_EQ(cnvstoz(digits.c_str(), &back), 0) << out;
        int32_t sig = w >= 18 ? 8 : w >= 12 ? 5 : w >= 9 ? 2 : 1;
        if (strchr(fmt, 'g') && z != 0) {
            ASSERT_NEAR(back, z, std::fabs(z) * (sig == 1 ? .5 : std::pow(10, 1 - sig))) << fmt << " " << out;
        }
    }
}

// Every value that fits a storage type goes through replace unchanged, and one that does not
// makes the variable wider rather than lose it.
TEST(Oracle, ReplaceNeverLosesAValue)
{
    for (uint32_t seed = 1; seed <= 60; seed++) {
        SCOPED_TRACE(seed);
        rng draw(seed * 31);
        lines({"drop _all", "set obs 12", "generate byte v = 0", "generate double want = ."});
        for (uint32_t obs = 1; obs <= 12; obs++) {
            double z = 0;
            switch (draw() % 6) {
            case 0: z = double(draw() % 228) - 127; break;
            case 1: z = double(draw() % 65508) - 32767; break;
            case 2: z = double(draw()) - 2147483647.0; break;
            case 3: z = double(draw()) * 4096; break;
            case 4: z = double(draw() % 1000) / 8; break;
            default: z = mis_of(int(draw() % 27));
            }
            dsa_store(z, sysdsa, 2, obs);
        }
        ASSERT_EQ(run("replace v = want"), 0);
        for (uint32_t obs = 1; obs <= 12; obs++) {
            double want = dsa_data(sysdsa, 2, obs), got = dsa_data(sysdsa, 1, obs);
            if (_typlist[0] == T_FLOAT)
                want = want < misval ? double(float(want)) : want;
            ASSERT_EQ(got, want) << "type " << int(_typlist[0]) << " obs " << obs;
        }
        ASSERT_EQ(dsa_check(sysdsa), 0);
    }
}
