// Random functions of the matrix language, compiled with the optimiser and without: the same
// value, or the same code with the same words. MOSA_RANDOM says how many (4,000), MOSA_SEED
// where to begin.
#include "../mosa_asm.h"
#include "mosahelp.h"
#include <sys/resource.h>

namespace
{

enum kind { NUM, ROW, COL, MAT, CX, CXROW, STR, STRROW, NKIND };

struct writer {
    uint64_t state = 0;
    std::string out = {};

    uint32_t draw(uint32_t n)
    {
        state += 0x9e3779b97f4a7c15u;
        uint64_t z = state;
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
        return uint32_t((z ^ (z >> 31)) % n);
    }
    std::string one_of(std::initializer_list<const char *> words)
    {
        return words.begin()[draw(uint32_t(words.size()))];
    }
    std::string small() { return one_of({"1", "2", "3", "0", "4", "k1", "k2"}); }

    std::string leaf(kind k)
    {
        switch (k) {
        case NUM:
            return one_of({"0",   "1",       "2",       ".5",    ".",    "-3",        "8e307",
                           "a",   "b",       "a",       "b",     "k1",   "k2",        "a++",
                           "b--", "rows(m)", "m[2, 1]", "u[k1]", "w[3]", "m[|k1, 2|]"});
        case ROW:
            return one_of({"u", "u", "(1, 2, 3)", "(a, b, .)", "m[2, .]", "m[k1, ]", "J(1, 3, a)",
                           "1..3", "m[|1, 1 \\ 1, .|]", "u[(3, 1, 2)]"});
        case COL:
            return one_of({"w", "w", "(1 \\ 2 \\ 3)", "m[, 2]", "m[(3, 1, 2), k1]", "1::3",
                           "J(3, 1, b)", "m[|1, 2 \\ ., 2|]"});
        case MAT:
            return one_of({"m", "m", "I(3)", "J(3, 3, a)", "m[(1, 1, 2), .]", "m[|1, 1 \\ 3, 3|]"});
        case CX: return one_of({"z", "z", "1i", "(2 + 3i)", "c[2]", "0i", "C(a, b)"});
        case CXROW: return one_of({"c", "c", "(1i, 2, 3)", "C(u)", "J(1, 3, z)"});
        case STR: return one_of({"s", "s", "\"ab\"", "\"\"", "t[k1]", "t[2]"});
        default: return one_of({"t", "t", "(\"x\", \"\", \"yz\")", "J(1, 3, s)"});
        }
    }

    std::string num(int32_t depth)
    {
        switch (draw(14)) {
        case 0: return expr(NUM, depth) + one_of({" + ", " - ", " * ", " / "}) + expr(NUM, depth);
        case 1: return expr(NUM, depth) + one_of({" ^ ", " :* ", " :- "}) + expr(NUM, depth);
        case 2:
            return expr(NUM, depth) + one_of({" < ", " <= ", " > ", " >= ", " == ", " != "}) +
                   expr(NUM, depth);
        case 3: return expr(NUM, depth) + one_of({" & ", " | "}) + expr(NUM, depth);
        case 4: return one_of({"-", "!"}) + expr(NUM, depth);
        case 5: return expr(NUM, depth) + " ? " + expr(NUM, depth) + " : " + expr(NUM, depth);
        case 6: return expr(ROW, depth) + " * " + expr(COL, depth);
        case 7: return expr(ROW, depth) + "[" + small() + "]";
        case 8: return expr(MAT, depth) + "[" + small() + ", " + small() + "]";
        case 9: return one_of({"abs", "floor", "sqrt", "Re", "ln"}) + "(" + expr(NUM, depth) + ")";
        case 10: return "sum(" + expr(draw(2) ? MAT : ROW, depth) + ")";
        case 11: return expr(STR, depth) + one_of({" == ", " < ", " != "}) + expr(STR, depth);
        case 12: return one_of({"Re(", "Im(", "arg("}) + expr(CX, depth) + ")";
        default:
            return one_of({"(a = ", "(b = ", "(u[2] = ", "(m[1, k2] = "}) + expr(NUM, depth) + ")";
        }
    }
    std::string vector(kind k, int32_t depth)
    {
        switch (draw(8)) {
        case 0: return expr(k, depth) + one_of({" + ", " - "}) + expr(k, depth);
        case 1: return expr(k, depth) + one_of({" :* ", " :+ ", " :/ "}) + expr(k, depth);
        case 2: return expr(k, depth) + one_of({" :> ", " :== ", " :& ", " :| "}) + expr(k, depth);
        case 3: return expr(NUM, depth) + one_of({" * ", " :+ ", " :^ "}) + expr(k, depth);
        case 4:
            return k == ROW   ? expr(COL, depth) + "'"
                   : k == COL ? expr(ROW, depth) + "'"
                              : expr(k, depth) + "'";
        case 5:
            return k == ROW   ? expr(ROW, depth) + " * " + expr(MAT, depth)
                   : k == COL ? expr(MAT, depth) + " * " + expr(COL, depth)
                              : expr(COL, depth) + " * " + expr(ROW, depth);
        case 6: return expr(k, depth) + (draw(2) ? " / " + expr(NUM, depth) : " # k1");
        default: return expr(NUM, depth) + " ? " + expr(k, depth) + " : " + expr(k, depth);
        }
    }
    std::string complex(kind k, int32_t depth)
    {
        switch (draw(6)) {
        case 0: return expr(k, depth) + one_of({" + ", " - ", " :* "}) + expr(k, depth);
        case 1: return expr(k, depth) + one_of({" * ", " / ", " :^ "}) + expr(CX, depth);
        case 2: return one_of({"-", "conj", "exp", ""}) + "(" + expr(k, depth) + ")";
        case 3: return expr(k == CX ? NUM : ROW, depth) + " + " + expr(k, depth);
        case 4:
            return k == CX ? expr(CXROW, depth) + "[" + small() + "]" : expr(k, depth) + " :+ 1i";
        default: return expr(NUM, depth) + " ? " + expr(k, depth) + " : " + expr(k, depth);
        }
    }
    std::string text(kind k, int32_t depth)
    {
        switch (draw(6)) {
        case 0: return expr(k, depth) + " + " + expr(k, depth);
        case 1: return one_of({"2 * ", "-1 * ", "0 * ", "1 :* "}) + expr(k, depth);
        case 2: return expr(k, depth) + " :+ " + expr(STR, depth);
        case 3: return one_of({"strupper", "strreverse"}) + "(" + expr(k, depth) + ")";
        case 4: return k == STR ? expr(STRROW, depth) + "[" + small() + "]" : expr(k, depth);
        default: return expr(NUM, depth) + " ? " + expr(k, depth) + " : " + expr(k, depth);
        }
    }
    // Now and then a value of another kind: what does not fit must not fit both times.
    std::string expr(kind k, int32_t depth)
    {
        if (!draw(60))
            k = kind(draw(NKIND));
        if (depth <= 0 || !draw(4))
            return leaf(k);
        std::string e = k == NUM   ? num(depth - 1)
                        : k <= MAT ? vector(k, depth - 1)
                        : k < STR  ? complex(k, depth - 1)
                                   : text(k, depth - 1);
        return draw(5) ? "(" + e + ")" : e;
    }

    void assignment()
    {
        static const char *const names[NKIND] = {"a", "u", "w", "m", "z", "c", "s", "t"};
        auto k = kind(draw(NKIND));
        switch (draw(7)) {
        case 0: out += one_of({"a++", "b--", "a++; b++"}) + "\n"; break;
        case 1: out += "m[" + small() + ", " + small() + "] = " + expr(NUM, 2) + "\n"; break;
        case 2: out += one_of({"u[k1] = ", "w[2] = ", "a = b = "}) + expr(NUM, 2) + "\n"; break;
        case 3: out += "m[., k1] = " + expr(COL, 2) + "\n"; break;
        case 4: out += "u[|1 \\ 3|] = " + expr(ROW, 2) + "\n"; break;
        default:
            if (k >= STR) // or texts would double in loops
                out += std::string(names[k]) + " = substr(" + expr(k, 3) + ", 1, 40)\n";
            else
                out += std::string(names[k]) + " = " + expr(k, 3) + "\n";
        }
    }
    void statement(int32_t depth)
    {
        uint32_t what = depth > 0 ? draw(9) : 0;
        if (what < 4) {
            assignment();
            return;
        }
        if (what < 6) {
            out += "if (" + expr(NUM, 2) + ") {\n";
            block(depth - 1);
            out += "}\n";
            if (draw(2)) {
                out += "else {\n";
                block(depth - 1);
                out += "}\n";
            }
            return;
        }
        std::string k = depth == 2 ? "k1" : "k2"; // an inner loop has its own counter
        out += what < 8 ? "for (" + k + " = 1; " + k + " <= 3; " + k + "++) {\n"
                        : k + " = 0\nwhile (" + k + "++ < 3) {\n";
        block(depth - 1);
        if (!draw(4))
            out += "if (" + expr(NUM, 1) + ") " + one_of({"break", "continue"}) + "\n";
        out += "}\n" + k + " = 1\n";
    }
    void block(int32_t depth)
    {
        for (uint32_t n = 1 + draw(2); n; n--)
            statement(depth);
    }
    std::string function()
    {
        out = "transmorphic rnd()\n{\n";
        if (draw(4)) // else nothing is known before it runs
            out += "real scalar a, b, k1, k2\nreal rowvector u\nreal colvector w\n"
                   "real matrix m\ncomplex scalar z\ncomplex rowvector c\nstring scalar s\n"
                   "string rowvector t\n";
        out += "a = 3\nb = -.5\nk1 = 1\nk2 = 2\nu = (1, -2, .)\nw = (4 \\ 5 \\ 6)\n"
               "m = (1, 2, 3 \\ 0, .5, 9 \\ 7, 8, 10)\nz = 1 - 2i\nc = (1i, 2, 3 + 1i)\n"
               "s = \"st\"\nt = (\"p\", \"qr\", \"\")\n";
        for (uint32_t n = draw(4); n; n--)
            statement(2);
        if (draw(3))
            out += "return(" + expr(kind(draw(NKIND)), 4) + ")\n}\n";
        else
            out += one_of({"return((a, b, u, rowshape(w, 1), rowshape(m, 1)))\n}\n",
                           "return((z, c))\n}\n", "return((s, t))\n}\n"});
        return out;
    }
};

void forget()
{
    if (matobj *f = mo_findfcn("", "rnd", ""))
        mo_freefcn(f);
}

// The value, or the code and the words.
std::string outcome(const std::string &text, bool optimise)
{
    set_mosaoptimize = optimise;
    int32_t rc = ms(text);
    std::string words = session_output;
    if (!rc) {
        rc = ms("rnd_v = rnd()");
        words += session_output;
    }
    set_mosaoptimize = true;
    forget();
    const matobj *m = rc ? nullptr : findlvl0mat("rnd_v");
    return std::to_string(rc) + " " + words + (m ? show(m) : "");
}

} // namespace

TEST(MosaRandom, TheOptimiserChangesNothing)
{
#ifndef __SANITIZE_ADDRESS__
    // A text times a huge number may have 2^31 bytes: refused here, both times.
    const rlimit bound{1 << 30, 1 << 30};
    ASSERT_EQ(setrlimit(RLIMIT_AS, &bound), 0);
#endif
    const char *number = getenv("MOSA_RANDOM"), *from = getenv("MOSA_SEED");
    long n = number ? atol(number) : 4000, worked = 0, compiled = 0, shorter = 0;
    uint64_t seed = from ? strtoull(from, nullptr, 10) : 20;
    for (long i = 0; i < n; i++) {
        writer w;
        w.state = seed + uint64_t(i) * 1000003u;
        std::string text = w.function();
        std::string plain = outcome(text, false);
        ASSERT_EQ(outcome(text, true), plain) << text;
        worked += plain[0] == '0';
        compiled += plain.compare(0, 4, "3000") != 0;
        if (i % 100 == 0 && compiled) {
            ms(text, false);
            matobj *f = mo_findfcn("", "rnd", "");
            int32_t words = f ? f->rows : 0;
            forget();
            set_mosaoptimize = false;
            ms(text, false);
            set_mosaoptimize = true;
            f = mo_findfcn("", "rnd", "");
            shorter += f && words < f->rows;
            forget();
        }
    }
    printf("%ld functions, %ld compiled, %ld gave a value\n", n, compiled, worked);
    EXPECT_GT(worked, n / 4); // the texts mean something
    EXPECT_GT(shorter, n / 300);
}
