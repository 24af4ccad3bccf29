// The compiler of the matrix language: what text becomes, and what it refuses.
#include "mosahelp.h"
#include <cmath>
#include <random>

namespace
{

[[maybe_unused]] std::string repeated(const std::string &text, int32_t n)
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

TEST(mosa_cc, probe)
{
    static const struct {
        const char *args, *body;
    } rows[] = {
        {"a, b", "a[1,b] = b"},
        {"a", "b = a\nreturn(b)"},
        {"a", "b = a\nL: return(b)\nif (a) goto L"},
        {"a", "a\nb = c = a"},
        {"a", "a++"},
        {"a", "while (a < 3) a++"},
        {"a", "while (a) if (a==1) break"},
        {"a", "for (;a<1;a++) a"},
        {"a", "do a = a - 1; while (a>0)"},
        {"a", "if (a) return(1); else return(2)"},
        {"a", "if (a) ;"},
        {"real scalar a, | string vector b", "x = a + a"},
        {"struct s__ scalar a", "a.x = a.y.x; a.y.y"},
        {"f()", "return(f(1))"},
        {"a", "(*a)(1, 2)"},
        {"a", "return(a ? 1 : 2)"},
        {"a", "goto L\na = 1\nL:"},
        {"a", "{\nA: goto B\nB: goto A\n}"},
        {"a", "a[|1\\2|] = (a[1] = 3)"},
    };
    ms("struct s__ {\n real scalar x\n struct s__ vector y\n}");
    for (const auto &r : rows)
        printf("{\"%s\", \"%s\", \"%s\"},\n", r.args, r.body, body_code(r.args, r.body).c_str());
}

TEST(mosa_cc, errors)
{
    static const struct {
        const char *text, *words;
    } rows[] = {
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
