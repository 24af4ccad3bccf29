// The compiler of the matrix language: what text becomes, and what it refuses.
#include "mosahelp.h"
#include <cmath>
#include <random>

namespace
{

std::string repeated(const std::string &text, int32_t n)
{
    std::string out;
    for (int32_t i = 0; i < n; i++)
        out += text;
    return out;
}

// f with a body, as its listing without positions and pools.
std::string body_code(const std::string &args, const std::string &body)
{
    cc_freeistmt("t__f");
    if (ms("function t__f(" + args + ")\n{\n" + body + "\n}", false))
        return session_output;
    std::string all = ms_code("t__f"), out;
    for (size_t at = 0; at < all.size();) {
        size_t end = all.find('\n', at);
        std::string line = all.substr(at + 7, end - at - 7);
        if (line.compare(0, 5, "spool") && line.compare(0, 5, "dpool") && line != "filler")
            out += line + "; ";
        at = end + 1;
    }
    return out;
}

struct value_row {
    const char *text;
    double value;
};

} // namespace

TEST(mosa_cc, operators_bind_in_their_order)
{
    static const value_row rows[] = {
        {"2>1!=1", 1},
        {"2==2>=1", 0},
        {"5 :- 3 - 1", 3},
        {"8/2#2", 8},
        {"-2^2", 4},
        {"2^3^2", 64},
        {"2^-1", .5},
        {"1 - -2", 3},
        {"2*-3+1", -5},
        {"10-2-3", 5},
        {"16/4/2", 2},
        {"2 + 3*4 - 1", 13},
        {"1 | 0 & 0", 1},
        {"!0 + 1", 2},
        {"!(0 + 1)", 0},
        {"1 ? 2 : 0 ? 3 : 4", 2},
        {"0 ? 2 : 0 ? 3 : 4", 4},
        {"0 ? 2 : (1 ? 3 : 4)", 3},
        {"1 ? 0 ? 5 : 6 : 7", 6},
        {"(x__ = 3) + x__", 6},
        {"x__ = y__ = 4", 4},
        {"rows(1..3\\4..6)", 2},
        {"cols((1,2)\\(3,4))", 2},
        {"rows((1\\2)'(3\\4))", 1},
        {"(1\\2)'(3\\4)", 11},
        {"(1,2,3)[2]", 2},
        {"((1,2\\3,4))'[1,2]", 3},
        {"sum((1,2\\3,4)[,2])", 6},
        {"sum((1,2\\3,4)[2,])", 7},
        {"sum((1,2\\3,4)[|1,1\\2,1|])", 4},
        {"1.5e1 + 1e-1 + .5", 15.6},
        {"1.8x+3", 12},
        {"3 // not this\n", 3},
        {"3 /* nor\n this */ + 1", 4},
        {"1 + /// the next line\n 2", 3},
        {"1 +\n 2", 3},
        {"sum((1,\n2,\n3))", 6},
        {"(1..4) == (1,2,3,4)", 1},
        {"cols(1..4 == 4)", 1},
        {"*&7", 7},
        {"-(-3)", 3},
        {"\"a\"==`\"a\"'", 1},
        {"`\"a \"b\" c\"' == \"a\"", 0},
    };
    for (bool optimise : {true, false}) {
        set_mosaoptimize = optimise;
        for (const value_row &r : rows)
            EXPECT_EQ(ms_value(r.text), r.value) << r.text << " " << session_output;
    }
    set_mosaoptimize = true;
}

TEST(mosa_cc, increments_wait_for_the_expression)
{
    static const value_row rows[] = {
        {"s = i++ + i; return(s*100 + i)", 1006},
        {"x = i--; return(x*100 + i)", 504},
        {"return(i++)", 5},
        {"i++; return(i)", 6},
        {"n = 0; while (i--) n = n + 1; return(n*100 + i)", 499},
        {"if (i-- == 5) return(i)", 4},
        {"x = (1,2,3); x[i-- - 4] = 9; return(x[1]*10 + i)", 94},
        {"for (j=1; j<3; j++) i = i + j; return(i)", 8},
        {"return((i++))", 5},
        {"return(1 ? i++ : 2)", 5},
    };
    for (bool optimise : {true, false}) {
        set_mosaoptimize = optimise;
        for (const value_row &r : rows) {
            ms("");
            cc_freeistmt("t__g");
            ASSERT_EQ(ms(std::string("function t__g() {\n i = 5\n") + r.text + "\n}"), 0)
                << r.text << session_output;
            EXPECT_EQ(ms_value("t__g()"), r.value) << r.text << session_output;
        }
    }
    set_mosaoptimize = true;
}

TEST(mosa_cc, optimiser)
{
    static const struct {
        const char *args, *body, *code; // behind the prologue of plain arguments
    } rows[] = {
        {"a, b", "a[1,b] = b", "ld [1]; ld1; ld [1]; lstosmat2pop [0]; stop; "},
        {"a", "a = 1\na = a + 1", "ld1; sto [0]; ld1; plus; stopop [0]; stop; "},
        {"a", "a = 1\nL: a = a + 1\nif (a<9) goto L",
         "ld1; stopop [0]; ld [0]; ld1; plus; sto [0]; lddbl 9; lt; jumpcond ->24; jump ->11; "
         "stop; "},
        {"a", "a\na++", "ld [0]; list2; pop; inc [0]; stop; "},
        {"a", "while (a < 3) a++", "ld [0]; lddbl 3; lt; jumpcond ->19; inc [0]; jump ->8; stop; "},
        {"a", "while (a) if (a==1) break",
         "ld [0]; jumpf ->18; ld [0]; ld1; ee; jumpcond ->8; stop; "},
        {"a", "for (;a<1;a++) a",
         "ld [0]; ld1; lt; jumpcond ->22; ld [0]; list2; pop; inc [0]; jump ->8; stop; "},
        {"a", "if (a) return(1); else return(2)", "ld [0]; jumpf ->14; ld1; ret; lddbl 2; ret; "},
        {"a", "if (a) ;", "ld [0]; jumpf ->12; stop; "},
        {"a", "a = a + a", "ld [0]; dup; plus; stopop [0]; stop; "},
        {"a", "return(a ? 1 : 2)", "ld [0]; jumpf ->14; ld1; ret; lddbl 2; ret; "},
        {"a", "goto L\na = 1\nL:", "stop; "},
        {"a", "{\nA: goto B\nB: goto A\n}", "jump ->8; "},
        {"a", "a[|1\\2|] = (a[1] = 3)",
         "lddbl 3; ld1; lstosmat1 [0]; ld1; lddbl 2; addr; rstosmatpop [0]; stop; "},
        {"a", "(*a)(1, 2)", "ld1; lddbl 2; ld [0]; deref; callind 2; list2; pop; stop; "},
        {"struct s__ scalar a", "a.x = a.y.x\na.y.y",
         "ldmatdd [0] 1 0; ldmatd [0] 0; sstomat; pop; ldmatdd [0] 1 1; list2; pop; stop; "},
        {"struct s__ scalar a", "a.y.y.y.x",
         "ldmatdd [0] 1 1; drill 1; drill 0; list2; pop; stop; "},
    };
    ASSERT_EQ(ms("struct s__ {\n real scalar x\n struct s__ vector y\n}"), 0) << session_output;
    for (const auto &r : rows) {
        std::string code = body_code(r.args, r.body);
        size_t at = code.rfind("ismat; pop; ");
        if (at == std::string::npos && (at = code.rfind("isscalar; pop; ")) != std::string::npos)
            at += 3;
        ASSERT_NE(at, std::string::npos) << code;
        EXPECT_EQ(code.substr(at + 12), r.code) << r.body;
    }
    EXPECT_EQ(
        body_code("real scalar a, | string vector b, f", "return(b)"),
        "argcrange 1 3; olc_sr 2 \"b\"; olc_rm 3 \"f\"; ld [0]; ismat; isreal; isscalar; pop; "
        "ld [1]; ismat; isstr; isvec; pop; ld [2]; ismat; pop; ld [1]; ret; ");
    EXPECT_EQ(body_code("f()", "return(f(1))"),
              "argc 1; ld [0]; isfcn; pop; ld1; call [0] 1; ret; ");
    set_mosaoptimize = false;
    EXPECT_EQ(body_code("a, b", "a[1,b] = b"),
              "jump ->13; ld [1]; ld1; ld [1]; lstosmat2 [0]; pop; stop; argc 2; ld [0]; ismat; "
              "pop; ld [1]; ismat; pop; jump ->4; ");
    set_mosaoptimize = true;
    ASSERT_EQ(ms("function t__h(a) {\nA: goto B\na\nB: goto A\n}", false), 0);
    EXPECT_NE(session_output.find("optimizer:  too many recursive goto's\n            (program "
                                  "probably contains endless loop)\n"),
              std::string::npos)
        << session_output;
}

// Expressions over numbers, vectors and strings; most of them fit together.
struct expression_maker {
    std::mt19937 dice;
    std::string make(int32_t depth)
    {
        static const char *const leaves[] = {"1",  "2.5", "i",          "i++",    "v",
                                             "w",  ".",   "(1,2\\3,4)", "\"ab\"", "0",
                                             "3i", "s",   "j--",        "(1..3)", "m"};
        static const char *const ops[] = {"+",  "-",  "*",  "/",  "^",   ":+",  ":-", ":*", ":/",
                                          "==", "!=", "<",  ">=", ":==", ":<",  "&",  "|",  ",",
                                          "\\", "..", "::", "#",  ":>",  ":!=", ":^", ":&"};
        if (depth <= 0 || dice() % 5 == 0)
            return leaves[dice() % (sizeof leaves / sizeof *leaves)];
        switch (dice() % 12) {
        case 0: return "-" + make(depth - 1);
        case 1: return "!" + make(depth - 1);
        case 2: return "(" + make(depth - 1) + ")'";
        case 3:
            return "(" + make(depth - 1) + " ? " + make(depth - 1) + " : " + make(depth - 1) + ")";
        case 4: return "(k = " + make(depth - 1) + ")";
        case 5: return "v[" + make(depth - 1) + "]";
        case 6: return "m[" + make(depth - 1) + ",]";
        case 7: return "rows(" + make(depth - 1) + ")";
        default: break;
        }
        const char *op = ops[dice() % (sizeof ops / sizeof *ops)];
        return "(" + make(depth - 1) + " " + op + " " + make(depth - 1) + ")";
    }
};

TEST(mosa_cc, random_expressions_agree_without_the_optimiser)
{
    const char *more = getenv("MOSA_EXPRESSIONS");
    int32_t n = more ? atoi(more) : 3000, ran = 0;
    expression_maker maker{std::mt19937(20261121)};
    for (int32_t k = 0; k < n; k++) {
        std::string e = maker.make(4), f = maker.make(3), g = maker.make(2);
        std::string text = "{\ni = 2; j = 3; k = 0; s = \"xy\"; v = (4,5,6); w = (1\\2\\3); m = "
                           "(1,2,3\\4,5,6)\nx = " +
                           e + "\nif (" + f + ") x = " + g +
                           "\nwhile (i-- > 0) x = (x, i)\n(x)\nk\n"
                           "(i,j)\n}";
        set_mosaoptimize = true;
        int32_t rc = ms(text);
        std::string out = session_output;
        ran += rc == 0;
        set_mosaoptimize = false;
        ASSERT_EQ(ms(text), rc) << text << out << "--\n" << session_output;
        ASSERT_EQ(session_output, out) << text;
        set_mosaoptimize = true;
    }
    EXPECT_GT(ran, n / 50);
}

TEST(mosa_cc, notes)
{
    static const struct {
        const char *text, *notes;
    } rows[] = {
        {"function t__n(a) {\n}", "note: argument a unused\n"},
        {"function t__n(f()) {\n}", "note: function f() unused\n"},
        {"function t__n() {\nreal scalar x\n}", "note: variable x unused\n"},
        {"function t__n() {\nx = 1\n}", "note: variable x set but not used\n"},
        {"function t__n() {\nreturn(x)\n}", "note: variable x may be used before set\n"},
        {"function t__n() {\nx[1] = 3\nreturn(x)\n}", "note: variable x may be used before set\n"},
        {"function t__n(a) {\na = 1\n}", ""},
        {"function t__n() {\nt__m(x)\nreturn(x)\n}", ""},
        {"function t__n() {\nx = 1\nreturn(&x)\n}", ""},
        {"function t__n() {\nexternal real scalar x\nx = 1\n}", ""},
        {"function t__n() {\nstruct s__ scalar x\nx.x = 1\nreturn(x)\n}", ""},
        {"function t__n(a) {\npragma unused a\n}", ""},
        {"function t__n() {\nreal scalar x\npragma unset x\nreturn(x)\n}", ""},
        {"function t__n() {\nfor (i=1; i<3; i++) ;\n}", ""},
    };
    ms("struct s__ {\n real scalar x\n}");
    for (const auto &r : rows) {
        cc_freeistmt("t__n");
        EXPECT_EQ(ms(r.text, false), 0) << r.text;
        EXPECT_EQ(session_output, r.notes) << r.text;
    }
    set_mosastrict = true;
    cc_freeistmt("t__n");
    EXPECT_EQ(ms_fails("function t__n(a) {\nx = a\ny = x\n}"),
              "variable x undeclared\nvariable y undeclared\n");
    EXPECT_EQ(ms("function t__n(real scalar a) {\nreal scalar x\nx = a\nreturn(x)\n}", false), 0);
    set_mosastrict = false;
    EXPECT_NE(ms_fails("function t__n(a) {\n}").find("t__n() already exists\n"), std::string::npos);
}

TEST(mosa_cc, limits)
{
    std::string names, labels, strings, numbers;
    for (int32_t i = 0; i < 501; i++) {
        std::string n = std::to_string(i);
        names += "v" + n + " = " + n + "\n";
        labels += "L" + n + ":\n";
        strings += "x = \"t" + n + "\"\n";
    }
    for (int32_t i = 0; i < 2001; i++)
        numbers += "x = " + std::to_string(i) + ".5\n";
    struct {
        std::string text;
        const char *words;
    } rows[] = {
        {"{\n" + names + "}", "no room to add more symbols\n"},
        {"{\n" + labels + "}", "too many branch points\n"},
        {"{\n" + strings + "}", "too many string literals\n"},
        {"{\n" + numbers + "}", "no room to add more double literals\n"},
        {"{\n" + repeated("x = 1\n", 5000) + "}", "program too long\n"},
        {"x = 1" + repeated("+1", 250), "expression too long\n"},
        {"x = " + repeated("(", 501), "expression too long\n"},
        {"{\n" + repeated("if (x) {\n", 3000) + "x=1" + repeated("}", 3000) + "\n}",
         "program too long\n"},
    };
    for (const auto &r : rows) {
        std::string got = ms_fails(r.text);
        EXPECT_NE(got.find(r.words), std::string::npos) << r.words << got.substr(0, 300);
    }
    EXPECT_EQ(ms_value("1" + repeated("+1", 240)), 241);
    EXPECT_EQ(ms_value(repeated("(", 240) + "7" + repeated(")", 240)), 7);
    std::string chain = "a__";
    for (int32_t i = 0; i < 90; i++)
        chain += ".f(b__)";
    EXPECT_EQ(ms_fails("x = " + chain), "pointer or struct expected\n");
}

TEST(mosa_cc, types)
{
    static const struct {
        const char *body, *found, *expected; // null: compiles
    } rows[] = {
        {"x = \"a\" - 1", "string scalar", "numeric"},
        {"x = 1 + \"a\"", "string scalar", "real"},
        {"x = \"a\" * \"b\"", "string scalar", "real"},
        {"x = \"a\" * 3", nullptr, nullptr},
        {"x = (1, \"a\")", "string scalar", "real"},
        {"x = -\"a\"", "string scalar", "numeric"},
        {"x = !\"a\"", "string scalar", "numeric"},
        {"x = *1", "real scalar", "pointer"},
        {"x = (1)->a", "real scalar", "pointer"},
        {"x = A[\"a\"]", "string scalar", "real"},
        {"x = A[|\"a\"|]", "string scalar", "real"},
        {"x = 1i..3", "complex scalar", "real"},
        {"x = 1 < \"a\"", "string scalar", "real"},
        {"x = 1 == \"a\"", nullptr, nullptr},
        {"if (\"a\") x = 1", "string scalar", "numeric"},
        {"r = \"a\"", "string scalar", "real scalar"},
        {"r = 1i", "complex scalar", "real scalar"},
        {"s = r", "real scalar", "string scalar"},
        {"p = r", "real scalar", "pointer scalar"},
        {"p = &r", nullptr, nullptr},
        {"r = A", nullptr, nullptr},
        {"s++", "string scalar", "real"},
        {"return(s)", "string scalar", "real scalar"},
        {"st.x = \"a\"", "string scalar", "real scalar"},
        {"st = tt", "struct t__ scalar", "struct s__ scalar"},
    };
    ms("struct s__ {\n real scalar x\n}\nstruct t__ {\n real scalar x\n}");
    for (const auto &r : rows) {
        cc_freeistmt("t__t");
        std::string got =
            ms_fails(std::string("real scalar t__t() {\nreal matrix A\nreal scalar r\n"
                                 "string scalar s\npointer scalar p\n"
                                 "struct s__ scalar st\nstruct t__ scalar tt\n") +
                     r.body + "\n}");
        for (char &c : got)
            c = c == '\n' ? ' ' : c;
        if (!r.found) {
            EXPECT_EQ(got.substr(0, 9), "compiled:") << r.body << got;
            continue;
        }
        std::string words = std::string(r.found) + " found where " + r.expected + " expected";
        EXPECT_NE(got.find("type mismatch:"), std::string::npos) << r.body << got;
        EXPECT_NE(got.find(words), std::string::npos) << r.body << got;
    }
    // What cannot be told is asserted where it is stored.
    cc_freeistmt("t__t");
    ASSERT_EQ(ms("real scalar t__t(x) {\nreal scalar r\nr = x\nreturn(r)\n}"), 0) << session_output;
    EXPECT_EQ(ms("t__t(\"a\")"), 3253);
    EXPECT_EQ(ms("t__t((1,2))"), 3204);
    EXPECT_EQ(ms_value("t__t(4)"), 4);
}

TEST(mosa_cc, functions_and_definitions)
{
    static const char *const program[] = {
        "real scalar t_add(real scalar a, | real scalar b) {\n"
        "  if (args()==1) b = 10\n  return(a + b)\n}",
        "real scalar t_apply(pointer(real scalar function) scalar f, real scalar x)\n"
        "{\n  return((*f)(x, 1))\n}",
        "real scalar t_pass(f(), x) return(f(x, 2))",
        "real scalar t_fact(real scalar n) {\n  if (n<2) return(1)\n  return(n*t_fact(n-1))\n}",
        "void t_set(x) {\n x = 99\n return()\n x = 98\n}",
        "real scalar t_byref() {\n real scalar y\n y = 1\n t_set(y)\n return(y)\n}",
        "real scalar t_skip() {\n real scalar i, n\n n = 0\n for (i=1; i<=10; i++) {\n"
        "  if (i==3) continue\n  if (i==6) break\n  n = n + i\n }\n return(n)\n}",
        "real scalar t_jump(real scalar k)\n{\n real scalar s\n s = 0\ntop:\n s = s + k\n k--\n"
        " if (k>0) goto top\n return(s)\n}",
        "real scalar t_do() {\n real scalar i\n i = 0\n do {\n i++\n if (i==2) continue\n }\n"
        " while (i<5)\n return(i)\n}",
        "real scalar t_else(x) {\n if (x==1) return(10)\n else if (x==2) return(20)\n\n"
        " else {\n return(30)\n }\n}",
        "void t_global() {\n external real scalar t_g\n t_g = 5\n}",
        "real scalar t_useglobal() {\n external real scalar t_g\n t_global()\n return(t_g*2)\n}",
        "struct pt {\n real scalar x, y\n pointer(struct pt scalar) scalar next\n}",
        "real scalar t_list(real scalar n) {\n struct pt scalar a\n struct pt vector v\n"
        " pointer(struct pt scalar) scalar p\n real scalar i, s\n v = pt(n)\n"
        " for (i=1; i<=n; i++) v[i].x = i\n for (i=1; i<n; i++) v[i].next = &(v[i+1])\n"
        " s = 0\n for (p = &(v[1]); p!=NULL; p = p->next) s = s + p->x\n a.x = s\n"
        " return(a.x)\n}",
        "version 10.1",
    };
    static const value_row rows[] = {
        {"t_add(1)", 11},        {"t_add(1, 2)", 3}, {"t_apply(&t_add(), 5)", 6},
        {"t_fact(10)", 3628800}, {"t_byref()", 99},  {"t_skip()", 12},
        {"t_jump(4)", 10},       {"t_do()", 5},      {"t_else(1) + t_else(2) + t_else(3)", 60},
        {"t_useglobal()", 10},   {"t_list(5)", 15},  {"t_pass(*&t_add(), 1)", 3},
    };
    for (bool optimise : {true, false}) {
        ms("");
        set_mosaoptimize = optimise;
        for (matobj *f = mo_nextfcn(nullptr), *next; f; f = next) {
            next = mo_nextfcn(f);
            mo_free(f);
        }
        for (const char *text : program)
            EXPECT_EQ(ms(text), 0) << text << session_output;
        for (const value_row &r : rows)
            EXPECT_EQ(ms_value(r.text), r.value) << r.text << session_output;
        EXPECT_EQ(ms("t_pass(t_add(), 1)"), 3001); // a call, not the function
    }
    set_mosaoptimize = true;
}

// Every allocation and every poll fails once: nothing half built stays, nothing is lost.
TEST(mosa_cc, failures_leave_nothing_behind)
{
    static const char *const texts[] = {
        "x = \"text\" + (1 ? \"a\" : \"b\")",
        "real scalar t__f(real scalar a) {\n struct t__u scalar b\n b.x = a\n return(b.x + 2.5)\n}",
        "struct t__s {\n pointer(struct t__s scalar) scalar p\n}",
        "class t__c {\n real scalar x\n virtual void f()\n}",
    };
    ASSERT_EQ(ms("struct t__u {\n real scalar x\n}"), 0);
    for (const char *text : texts)
        for (fault_kind kind : {F_MEM, F_BREAK}) {
            bool failed = true;
            for (int32_t n = 1; failed && n < 200; n++) {
                mem_use before = mem_live();
                int32_t objects = mo_cnt();
                fault_arm(kind, n, false);
                int32_t rc = ms(text, false);
                failed = fault_disarm() > 0;
                stopflag = 0;
                if (!failed) {
                    EXPECT_EQ(rc, 0) << text << session_output;
                    break;
                }
                EXPECT_EQ(rc, 3000) << text << n;
                EXPECT_NE(session_output, "") << text << n;
                EXPECT_EQ(dm_dtyp[DM_MOSASCRATCH], nullptr);
                EXPECT_LE(mo_cnt(), objects);
                EXPECT_LE(mem_live().blocks, before.blocks) << text << n;
            }
            EXPECT_FALSE(failed);
            for (const char *name : {"t__f", "t__s", "t__c"})
                cc_freeistmt(name);
            cc_freeistmt(name_istmt());
        }
}

TEST(mosa_cc, classes)
{
    static const char *const program[] = {
        "class A {\n public:\n void new()\n void destroy()\n virtual real scalar area()\n"
        " real scalar twice(), peek()\n static real scalar count\n static real scalar how()\n"
        " final real scalar fixed()\n virtual final real scalar sealed()\n"
        " final real scalar z\n real scalar pub\n protected:\n real scalar prot\n"
        " private:\n real scalar hidden\n}",
        "void A::new() {\n if (count>=.) count = 0\n count = count + 1\n hidden = 7\n prot = 3\n}",
        "void A::destroy() {\n count = count - 1\n}",
        "real scalar A::area() return(1)",
        "real scalar A::twice() return(2*area())",
        "real scalar A::peek()\n{\n hidden++\n return(this.hidden)\n}",
        "real scalar A::how() return(count)",
        "real scalar A::fixed() return(0)",
        "real scalar A::sealed() return(0)",
        "class B extends A {\n real scalar side\n virtual real scalar area()\n"
        " real scalar par()\n}",
        "real scalar B::area() return(side^2)",
        "real scalar B::par() return(super.area() + this.side + prot)",
        "real scalar t_objects() {\n class B scalar s\n class A scalar t\n pointer p\n"
        " s.side = 5\n p = &s\n return(s.twice()*10000 + t.twice()*1000 + s.par()*10 + s.count +"
        " p->area()*1000000)\n}",
        "real scalar t_more() {\n class A scalar t\n class A scalar u\n t.pub = 1\n"
        " u = t\n u.pub = 2\n return(t.peek()*100 + t.pub*10)\n}",
        "real scalar t_cast() {\n class B scalar b\n b.side = 3\n"
        " return(((class A scalar) b).area())\n}",
        "struct S2 {\n real scalar x\n}",
        "real scalar t_left() {\n class A scalar t\n x = t\n x = t\n return(t.how() + 0)\n}",
        "real scalar t_area(class A scalar a) return(a.area())",
        "real scalar t_wrong(real scalar k) {\n class A scalar a\n class B scalar b\n struct S2 "
        "scalar s\n b.side = 6\n return(k==1 ? t_area(a) : k==2 ? t_area(b) : t_area(s))\n}",
        "real scalar t_made() {\n pointer(class B scalar) scalar p\n p = &(B())\n p->side = 4\n"
        " return(p->area() + p->side)\n}",
        "void t_assign(transmorphic x) {\n class B scalar b\n b = x\n b.side = 1\n}",
        "class A scalar t_give(transmorphic x) return(x)",
        "void t_down(class A scalar a) {\n class B scalar b\n b = a\n b.side = 1\n}",
    };
    static const value_row rows[] = {
        {"t_objects()", 25502092},
        {"t_more()", 810},
        {"t_cast()", 9},
        {"t_made()", 20},
        {"t_wrong(1) + t_wrong(2)", 37},
        {"t_left()*10 + t_left()", 11},
    };
    for (bool optimise : {true, false}) {
        ms("");
        set_mosaoptimize = optimise;
        for (matobj *f = mo_nextfcn(nullptr), *next; f; f = next) {
            next = mo_nextfcn(f);
            mo_free(f);
        }
        for (const char *text : program)
            ASSERT_EQ(ms(text), 0) << text << session_output;
        for (const value_row &r : rows)
            EXPECT_EQ(ms_value(r.text), r.value) << r.text << session_output;
    }
    set_mosaoptimize = true;
    EXPECT_EQ(ms("t_wrong(3)"), 3260) << session_output;
    for (const char *bad : {"t_assign(3)", "t_assign(A())", "t_assign(NULL)", "(void) t_give(3)",
                            "(void) t_give(\"a\")", "t_down(A())"})
        EXPECT_EQ(ms(bad), 3260) << bad << session_output;
    for (const char *good : {"t_assign(B())", "(void) t_give(B())", "t_down(B())"})
        EXPECT_EQ(ms(good), 0) << good << session_output;
    static const struct {
        const char *text, *words;
    } errors[] = {
        {"void t_(class A scalar a) {\na.hidden\n}", "hidden is private to class A\n"},
        {"void t_(class B scalar a) {\na.prot\n}", "prot is protected in class A\n"},
        {"void t_(class A scalar a) {\na.none\n}",
         "none not found -- class A contains no such member\n"},
        {"void t_(class A scalar a) {\na.none()\n}", "none() not declared in class A\n"},
        {"void t_(class A scalar a) {\na.new()\n}",
         "new() and destroy() may not be called by user\n"},
        {"void t_(struct S scalar a) {\na.f()\n}", ".<name>() invalid\n"},
        {"void t_(struct S scalar a) {\na.(1)\n}", ".<exp> invalid\n"},
        {"void t_(struct S scalar a) {\na.none\n}",
         "none not found -- struct S contains no such member\n"},
        {"void t_(struct A scalar a) {\na.none\n}", "function A() is not a struct\n"},
        {"void t_(class S scalar a) {\na.none\n}", "function S() is not a class\n"},
        {"void S::f() {\n}", "function S() is not a class\n"},
        {"void A::none() {\n}", "function none not found in class A\n"},
        {"void C::f() {\n}", "C::f() previously declared as real scalar\n"},
        {"real scalar C::v() {\n}", "C::v() previously declared as void\n"},
        {"real scalar C::st() {\nreturn(f())\n}",
         "f(): static function may not call nonstatic functions\n"},
        {"real scalar C::f() {\nthis = 1\n}", "may not change this\n"},
        {"real scalar A::area() {\n}", "A::area() already exists\n"},
        {"class A {\n}", "A() already exists\n"},
        {"class D {\n static virtual void f()\n}", "virtual functions may not be static\n"},
        {"class D {\n static void new()\n}", "new() may not be static\n"},
        {"class D {\n virtual void destroy()\n}", "destroy() may not be virtual\n"},
        {"class D {\n final void new()\n}", "new() may not be final\n"},
        {"class D {\n real scalar new()\n}", "new() must be void\n"},
        {"class D extends A {\n real scalar fixed()\n}",
         "fixed():  function declared final may not be modified\n"},
        {"class D extends A {\n real scalar sealed()\n}",
         "sealed():  virtual function declared final may not be modified\n"},
        {"class D extends A {\n string scalar area()\n}",
         "area():  virtual function type mismatch\n"},
        {"class D extends A {\n real scalar z\n}",
         "z:  variable declared final may not be redefined\n"},
        {"class D extends C {\n real scalar sz\n}",
         "sz:  static variable declared final may not be redefined\n"},
        {"class D extends nosuch {\n}", "class nosuch undefined\n"},
        {"class D {\n real scalar x\n real scalar x\n}", "symbol x multiply defined\n"},
    };
    ASSERT_EQ(ms("struct S {\n real scalar x\n}\nclass C {\n real scalar f()\n void v()\n static "
                 "real scalar st()\n static final real scalar sz\n}"),
              0);
    for (const auto &r : errors) {
        std::string got = ms_fails(r.text);
        EXPECT_NE(got.find(r.words), std::string::npos) << r.text << "\n-> " << got;
    }
    EXPECT_EQ(ms("real scalar C::f() {\n}"), 0);
    EXPECT_EQ(session_output, "note: this function could be static\n");
    session_output.clear();
    matobj *c = mo_findfcn("", "C", "");
    EXPECT_FALSE(isclassdefcomplete(c));
    dispundefinedclsmbrfcn(c);
    omlflush(oml_cur);
    EXPECT_EQ(session_output,
              "C::v() declared but not defined\nC::st() declared but not defined\n");
    EXPECT_TRUE(isclassdefcomplete(mo_findfcn("", "A", "")));
}

TEST(mosa_cc, errors)
{
    static const struct {
        const char *text, *words;
    } rows[] = {
        {"x = 1) + 2", "too many ')'\n"},
        {"(class 1) x", "'1' found where name expected\n"},
        {"(struct .) x", "'.' found where name expected\n"},
        {"(real 2i) x", "'2i' found where ')' expected\n"},
        {"x = (1", "too many '(', '[', or '['\n"},
        {"x = 1)", "too many ')'\n"},
        {"x = (1]", "] found where ) expected\n"},
        {"x = ", "nothing found where subexp expected\n"},
        {"x = 1 +", "nothing found where subexp expected\n"},
        {"x = \"abc", "mismatched quotes\n"},
        {"x = 2abc", "'2abc' found where something else expected\n"},
        {"x = if", "'if' found where something else expected\n"},
        {"x = 1 :! 2", "':!' found where something else expected\n"},
        {"++i", "invalid use of ++ or --\n"},
        {"x[1]++", "invalid use of ++ or --\n"},
        {"x = a++*b++*a++*b++*a++*b++*a++*b++*a++", "too many postponed ++ or --\n"},
        {"1 = 2", "invalid lval\n"},
        {"a+b = 2", "invalid lval\n"},
        {"f(x) = 2", "invalid lval\n"},
        {"f(x)[1] = 2", "invalid subscripted lval\n"},
        {"x[1][2] = 2", "invalid subscripted lval\n"},
        {"a ? b : c = 2", "? ... : ... not allowed\n"},
        {"x = a ? b", "? :  matching ':' not found\n"},
        {"NULL = 2", "may not change NULL\n"},
        {"VOID = 2", "may not change VOID\n"},
        {"x = 1 2", "invalid expression\n"},
        {"x[1,2,3]", "too many subscripts\n"},
        {"break", "misplaced break or continue\n"},
        {"{\ncontinue\n}", "misplaced break or continue\n"},
        {"goto nowhere", "nowhere undefined tag\n"},
        {"{\ngoto overlong\n}", "overlong:  tag name too long\n"},
        {"{\na:\na:\n}", "symbol a multiply defined\n"},
        {"version 13", "version number invalid\n"},
        {"version 8.8", "version number invalid\n"},
        {"pragma polite x", "invalid pragma\n"},
        {"pragma unused nobody", "nobody not found\n"},
        {"sqrt()", "wrong number of arguments for sqrt()\n"},
        {"p = &sqrt()", "sqrt() built-in, may not evaluate address\n"},
        {"void sqrt(x) {\n}", "sqrt() is built-in\n"},
        {"real matrix (doppelganger) nosuch(x) {\n}", "nosuch() is not built-in\n"},
        {"real matrix (double) nosuch(x) {\n}", "'double' found where 'doppelganger' expected\n"},
        {"void f(x, x) {\n}", "symbol x multiply defined\n"},
        {"void f(x) {\nreal scalar x\n}", "symbol x multiply defined\n"},
        {"void f(x) {\nx = 1\nreal scalar y\n}", "'real' found where something else expected\n"},
        {"void f(| g()) {\n}", "function arguments cannot be optional\n"},
        {"void f(| struct s scalar x) {\n}", "struct scalars may not be received as optional "},
        {"void f(| class s scalar x) {\n}", "class scalars may not be received as optional "},
        {"void f(real 5) {\n}", "'5' found where name expected\n"},
        {"void f 5", "'5' found where '(' expected\n"},
        {"for (i=1; ; i++) x = 1", "nothing found where subexp expected\n"},
        {"x = a.b", "pointer or struct expected\n"},
        {"void f(struct nosuch scalar s) {\ns.x = 1\n}", "struct nosuch undefined\n"},
        {"void f(class nosuch scalar s) {\ns.x = 1\n}", "class nosuch undefined\n"},
        {"void nosuch::f() {\n}", "class nosuch undefined\n"},
        {"struct s {\nx\n}", "type declaration required\n"},
        {"struct s {\nreal scalar x, x\n}", "symbol x multiply defined\n"},
        {"class s ; {\n}", "; found where nothing or extends expected\n"},
        {"{\nx = 1", "unexpected end of text\n"},
        {"x = 1 /* no end", "unexpected end of text\n"},
    };
    for (const auto &r : rows) {
        std::string got = ms_fails(r.text);
        EXPECT_NE(got.find(r.words), std::string::npos) << r.text << "\n-> " << got;
        EXPECT_EQ(dm_dtyp[DM_MOSASCRATCH], nullptr) << r.text;
    }
}
