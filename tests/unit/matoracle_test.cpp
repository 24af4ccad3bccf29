// Matrix commands against plain loops over random matrices, and string functions against
// std::string over random texts.
#include "../session.h"
#include "core/settings.h"
#include "data/umat.h"
#include "stats/results.h"
#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

using rng = std::mt19937;
using grid = std::vector<std::vector<double>>;

grid random_grid(rng &draw, size_t r, size_t c)
{
    grid g(r, std::vector<double>(c));
    for (auto &row : g)
        for (double &z : row)
            z = double(int32_t(draw() % 4001) - 2000) / 64;  // exact in the text form
    return g;
}

std::string literal(const grid &g)
{
    std::string s = "(";
    char z[40];
    for (size_t i = 0; i < g.size(); i++)
        for (size_t j = 0; j < g[i].size(); j++) {
            snprintf(z, sizeof z, "%s%.17g", j ? "," : i ? "\\" : "", g[i][j]);
            s += z;
        }
    return s + ")";
}

void set_matrix(const char *name, const grid &g)
{
    // Row by row: a literal holds few numbers.
    std::string line = std::string("matrix ") + name + " = " + literal({g[0]});
    ASSERT_EQ(run(line), 0) << line << session_output;
    for (size_t i = 1; i < g.size(); i++) {
        line = std::string("matrix ") + name + " = " + name + " \\ " + literal({g[i]});
        ASSERT_EQ(run(line), 0) << line << session_output;
    }
}

grid get_matrix(const char *name)
{
    matref m;
    if (!umat_get(name, MK_MAT, &m))
        return {};
    grid g(size_t(m.m->rows), std::vector<double>(size_t(m.m->cols)));
    for (int32_t i = 0; i < m.m->rows; i++)
        for (int32_t j = 0; j < m.m->cols; j++)
            g[size_t(i)][size_t(j)] = umat_el(m.m, i + 1, j + 1);
    return g;
}

grid times(const grid &a, const grid &b)
{
    grid c(a.size(), std::vector<double>(b[0].size()));
    for (size_t i = 0; i < a.size(); i++)
        for (size_t j = 0; j < b[0].size(); j++)
            for (size_t k = 0; k < b.size(); k++)
                c[i][j] += a[i][k] * b[k][j];
    return c;
}

grid turned(const grid &a)
{
    grid t(a[0].size(), std::vector<double>(a.size()));
    for (size_t i = 0; i < a.size(); i++)
        for (size_t j = 0; j < a[0].size(); j++)
            t[j][i] = a[i][j];
    return t;
}

// By the first row, the slow way of the textbook.
double determinant(const grid &a)
{
    if (a.size() == 1)
        return a[0][0];
    double sum = 0;
    for (size_t j = 0; j < a.size(); j++) {
        grid minor;
        for (size_t i = 1; i < a.size(); i++) {
            minor.emplace_back();
            for (size_t k = 0; k < a.size(); k++)
                if (k != j)
                    minor.back().push_back(a[i][k]);
        }
        sum += (j % 2 ? -1 : 1) * a[0][j] * determinant(minor);
    }
    return sum;
}

void expect_near(const grid &got, const grid &want, double tol, const char *what)
{
    ASSERT_EQ(got.size(), want.size()) << what;
    for (size_t i = 0; i < want.size(); i++) {
        ASSERT_EQ(got[i].size(), want[i].size()) << what;
        for (size_t j = 0; j < want[i].size(); j++)
            EXPECT_NEAR(got[i][j], want[i][j], tol * std::max(1.0, std::fabs(want[i][j])))
                << what << " " << i << "," << j;
    }
}

void make(const char *name, const char *text)
{
    ASSERT_EQ(run(std::string("matrix ") + name + " = " + text), 0) << text << session_output;
}

// To the last bit: +1.8X+003 is 0x1.8 times two to the 0x003.
double number(const std::string &text)
{
    EXPECT_EQ(run("display %21x " + text), 0) << text << session_output;
    size_t sign = session_output.find_first_of("+-"), x = session_output.find('X');
    if (sign == std::string::npos || x == std::string::npos)
        return NAN;
    std::string digits = "0x" + session_output.substr(sign + 1, x - sign - 1);
    double z = std::ldexp(strtod(digits.c_str(), nullptr),
                          int(strtol(session_output.c_str() + x + 1, nullptr, 16)));
    return session_output[sign] == '-' ? -z : z;
}

std::string text_of(const std::string &expr)
{
    EXPECT_EQ(run("display as text `\"[\"' " + expr + " `\"]\"'"), 0) << expr << session_output;
    size_t a = session_output.find('['), b = session_output.rfind(']');
    return a == std::string::npos || b == std::string::npos || b < a
               ? session_output
               : session_output.substr(a + 1, b - a - 1);
}

}  // namespace

TEST(MatrixOracle, ProductsSumsAndShapes)
{
    rng draw(3);
    for (int round = 0; round < 30; round++) {
        SCOPED_TRACE(round);
        size_t r = 1 + draw() % 6, k = 1 + draw() % 6, c = 1 + draw() % 6;
        grid a = random_grid(draw, r, k), b = random_grid(draw, k, c), d = random_grid(draw, r, k);
        set_matrix("A", a);
        set_matrix("B", b);
        set_matrix("D", d);
        make("T", "A*B");
        expect_near(get_matrix("T"), times(a, b), 1e-13, "A*B");
        make("T", "(A*B)'");
        expect_near(get_matrix("T"), turned(times(a, b)), 1e-13, "(A*B)'");
        make("T", "B'*A'");
        expect_near(get_matrix("T"), turned(times(a, b)), 1e-13, "B'*A'");
        make("T", "2*A - D/4");
        grid want = a;
        for (size_t i = 0; i < r; i++)
            for (size_t j = 0; j < k; j++)
                want[i][j] = 2 * a[i][j] - d[i][j] / 4;
        expect_near(get_matrix("T"), want, 1e-13, "2*A - D/4");
        make("T", "A , D");
        for (size_t i = 0; i < r; i++) {
            want[i] = a[i];
            want[i].insert(want[i].end(), d[i].begin(), d[i].end());
        }
        expect_near(get_matrix("T"), want, 0, "A , D");
        make("T", "A \\ D");
        want = a;
        want.insert(want.end(), d.begin(), d.end());
        expect_near(get_matrix("T"), want, 0, "A \\ D");
        // A block of each part is the part.
        make("T", ("T[" + std::to_string(r + 1) + "..., 1...]").c_str());
        expect_near(get_matrix("T"), d, 0, "the lower block");
        make("T", "A#B");
        want.assign(r * k, std::vector<double>(k * c));
        for (size_t i = 0; i < r * k; i++)
            for (size_t j = 0; j < k * c; j++)
                want[i][j] = a[i / k][j / c] * b[i % k][j % c];
        expect_near(get_matrix("T"), want, 1e-13, "A#B");
    }
}

TEST(MatrixOracle, InversesDeterminantsAndRoots)
{
    rng draw(8);
    for (int round = 0; round < 25; round++) {
        SCOPED_TRACE(round);
        size_t n = 1 + draw() % 5;
        grid a = random_grid(draw, n, n);
        for (size_t i = 0; i < n; i++)
            a[i][i] += 200;  // far from singular
        grid eye(n, std::vector<double>(n));
        for (size_t i = 0; i < n; i++)
            eye[i][i] = 1;
        set_matrix("A", a);
        make("T", "inv(A)");
        expect_near(times(a, get_matrix("T")), eye, 1e-10, "A*inv(A)");
        EXPECT_NEAR(number("det(A)") / determinant(a), 1, 1e-10);
        double trace = 0;
        for (size_t i = 0; i < n; i++)
            trace += a[i][i];
        EXPECT_NEAR(number("trace(A)"), trace, 1e-9);
        make("S", "A'*A");
        grid s = times(turned(a), a);
        make("T", "syminv(S)");
        expect_near(times(s, get_matrix("T")), eye, 1e-8, "S*syminv(S)");
        make("C", "cholesky(S)");
        grid c = get_matrix("C");
        expect_near(times(c, turned(c)), s, 1e-10, "the root times itself turned");
        for (size_t i = 0; i < n; i++)
            for (size_t j = i + 1; j < n; j++)
                EXPECT_EQ(c[i][j], 0) << "above the diagonal";
        EXPECT_NEAR(number("mreldif(A,A)"), 0, 0);
        EXPECT_NEAR(number("issym(S)"), 1, 0);
    }
}

TEST(StringOracle, PiecesAndPlaces)
{
    rng draw(12);
    const char letters[] = "abcAB xyz,.09";
    for (int round = 0; round < 150; round++) {
        SCOPED_TRACE(round);
        std::string s, t;
        for (size_t n = draw() % 20; n; n--)
            s += letters[draw() % (sizeof letters - 1)];
        for (size_t n = 1 + draw() % 2; n; n--)
            t += letters[draw() % (sizeof letters - 1)];
        std::string q = "\"" + s + "\"", u = "\"" + t + "\"";
        int32_t from = 1 + int32_t(draw() % 22), len = int32_t(draw() % 8);
        std::string f = std::to_string(from), l = std::to_string(len);
        EXPECT_EQ(number("length(" + q + ")"), double(s.size())) << q;
        size_t at = s.find(t);
        EXPECT_EQ(number("strpos(" + q + "," + u + ")"), at == std::string::npos ? 0 : double(at + 1))
            << q << u;
        std::string part = from <= int32_t(s.size()) ? s.substr(size_t(from - 1), size_t(len)) : "";
        EXPECT_EQ(text_of("substr(" + q + "," + f + "," + l + ")"), part) << q << f << "," << l;
        if (from <= int32_t(s.size())) {  // from the end
            EXPECT_EQ(text_of("substr(" + q + ",-" + f + "," + l + ")"),
                      s.substr(s.size() - size_t(from), size_t(len)))
                << q << "-" << f << "," << l;
        }
        std::string back(s.rbegin(), s.rend()), low = s, up = s, swapped;
        for (char &c : low)
            c = char(tolower(c));
        for (char &c : up)
            c = char(toupper(c));
        EXPECT_EQ(text_of("reverse(" + q + ")"), back);
        EXPECT_EQ(text_of("lower(" + q + ")"), low);
        EXPECT_EQ(text_of("upper(" + q + ")"), up);
        for (size_t i = 0; i < s.size();) {
            bool hit = s.compare(i, t.size(), t) == 0;
            swapped += hit ? std::string("<>") : s.substr(i, 1);
            i += hit ? t.size() : 1;
        }
        EXPECT_EQ(text_of("subinstr(" + q + "," + u + ",\"<>\",.)"), swapped) << q << u;
        size_t a = s.find_first_not_of(' '), b = s.find_last_not_of(' ');
        std::string trimmed = a == std::string::npos ? "" : s.substr(a, b - a + 1);
        EXPECT_EQ(text_of("trim(" + q + ")"), trimmed) << q;
        int32_t words = 0;
        for (size_t i = 0; i < s.size(); i++)
            words += s[i] != ' ' && (!i || s[i - 1] == ' ');
        EXPECT_EQ(number("wordcount(" + q + ")"), double(words)) << q;
        EXPECT_EQ(number("(" + q + " < " + u + ") + 2*(" + q + " == " + u + ")"),
                  double((s < t) + 2 * (s == t)))
            << q << u;
    }
}
