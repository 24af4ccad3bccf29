// The matrix language under strain: memory refused at every place in turn, breaks at every poll,
// recursion without end and chains without measure. What was there before stays, what was begun
// is given back, and the session goes on.
#include "mosahelp.h"
#include <chrono>
#include <csignal>
#include <sys/time.h>

namespace
{

struct script {
    const char *name;
    const char *definitions; // made while all goes well
    const char *text;        // made to fail
};

const script scripts[] = {
    {"scalars", "", "a = 1\nfor (i=1; i<=30; i++) a = a*2 - i/3\na = (a > 2 ? a : -a)"},
    {"matrices", "",
     "A = (1,2\\3,4)\nB = A*A' + A:^2\nC = ((A, B) \\ (B, A))\n"
     "C = C :/ (2 :+ abs(C))\nC = A # B\nD = (3..9, 1)\nA\nC"},
    {"complex", "", "Z = (1+2i, 3 \\ 4, 5i)\nZ = Z*Z' :+ 1\nr = (Re(Z), Im(Z))\nZ[1,2] = 9"},
    {"strings", "",
     "s = (\"one\", \"two\" \\ \"three\", \"\")\ns = s :+ \"x\"\nt = 3*\"ab\"\n"
     "u = strupper(s)\nv = s[.,2]\nw = tokens(\"a b c d\")\ns == s"},
    {"structs",
     "struct in {\n real scalar a\n string vector s\n}\n"
     "struct out {\n struct in scalar one\n struct in vector many\n pointer scalar p\n}\n"
     "void structs() {\n struct out scalar x, y\n x.one.a = 3\n x.many = in(4)\n"
     " x.many[2].a = 5\n x.one.s = (\"a\",\"b\")\n y = x\n x.p = &y\n y.one.a = x.one.a + 1\n}",
     "structs()\nstructs()"},
    {"classes",
     "class base {\n real scalar n\n static real scalar made\n void new(), destroy()\n"
     " virtual real scalar area()\n}\nvoid base::new() made = (made >= . ? 1 : made + 1)\n"
     "void base::destroy() made = made - 1\nreal scalar base::area() return(n)\n"
     "class square extends base {\n virtual real scalar area()\n}\n"
     "real scalar square::area() return(n*n)\n"
     "real scalar classes() {\n class square scalar s\n class base vector b\n b = base(3)\n"
     " s.n = 4\n return(s.area() + b[2].made)\n}",
     "classes()"},
    {"pointers",
     "real matrix half(x) return(x/2)\nreal matrix through(pointer(function) f, x) "
     "return((*f)(x))",
     "p = &(1,2,3)\nq = (p, &(*p*2), NULL)\n*q[2] = \"now a string\"\n"
     "r = through(&half(), *p)\np = &p\np = NULL"},
    {"recursion",
     "real scalar fib(real scalar n) {\n if (n<2) return(n)\n"
     " return(fib(n-1)+fib(n-2))\n}",
     "fib(8)"},
    {"sort", "",
     "S = (3,1\\2,5\\9,4\\1,1)\no = order(S,(1,-2))\nS = S[o,.]\n"
     "o = order((\"b\"\\\"a\"\\\"c\"),1)\nT = select(S, S[.,1]:>1)\nr = rowsum(S)"},
    {"subscripts", "",
     "M = J(4,4,0)\nM[2,.] = 1..4\nM[|2,2\\3,3|] = (7,8\\9,10)\n"
     "M[(1\\3),(2,4)] = J(2,2,5)\nv = 1..20\nv[3] = v[4]\nx = M[(1,2),.]\n"
     "y = M[|1,1\\.,2|]\nv[|2\\4|] = (0,0,0)"},
    {"printf", "",
     "printf(\"%g %s %9.2f\\n\", 3, \"text\", 4)\nt = sprintf(\"%5.1f\", c(\"pi\"))\n"
     "display(t)\nJ(3,3,1)\n(\"a\",\"b\")\n1+2i\nt = strofreal(1..5)"},
    {"lapack", "",
     "H = (4,1,0\\1,3,1\\0,1,2)\nK = H\n_cholesky(K)\nK = H\n(void) _luinv_la(K)\n"
     "K = H\nb = (1\\2\\3)\n(void) _lusolve_la(K,b)\nK = H\n(void) _svd_la(K,s=.,V=.)\n"
     "K = H\n(void) _symeigen_la(0,K,X=.,L=.)\n_invsym(K=H)\nP = invsym(H)\n"
     "Q = cross(H,1,H)"},
    {"views", "",
     "ov_view(W=., ., (\"va\",\"vb\"))\nW[2,1] = 77\nm = W'W\nn = W[.,2]\nW[.,2] = n\n"
     "ov_sview(T=., ., \"vs\")\nT[1] = \"new\"\nu = T :+ \"!\"\nW = W"},
    {"externals", "void ext() {\n external real matrix G\n G = (G \\ 1)\n}",
     "ext()\next()\np = findexternal(\"G\")\np = crexternal(\"G2\")\nrmexternal(\"G\")\n"
     "rmexternal(\"G2\")"},
    {"texts", "",
     "r = regexm((\"ab\", \"cd\"), \"(b)\")\ns = regexs(1)\ns = regexr((\"ab\", \"b\"), \"b\", "
     "\"<\\0>\")\n"
     "s = subinword(\"a b a\", \"a\", \"xx\")\ns = (soundex(\"abc\"), abbrev(\"abcdefgh\", 5), "
     "strtoname(\"a b\"), numtobase26(30))\nat = 1\ns = _tokenget(\"a b\", at, \" \", \"\", \"\", "
     "0, 0)\n"
     "h = hash1(s, 10)\nd = date((\"1jan1960\", \"x\"), \"DMY\")\nd = mdyhms(1, 2, (1960, 1961), "
     "0, 0, 0)\n"
     "w = fmtwidth(\"%9.0g\")\ns = \"abc\"\n_substr(s, \"x\", 2)"},
    {"values", "",
     "i = w = .\nminindex((3, 1, 2, 1), 2, i, w)\nX = (1, . \\ 3, 4)\n_editmissing(X, 9)\n"
     "_negate(X)\n_diag(X, (1, 2))\n_transposeonly(X)\n_runningsum(i, X)\nJ2(2, 1, X)\n"
     "S = (\"a\", \"b\")\n_editvalue(S, \"a\", \"long text\")\n_transposeonly(S)\n"
     "r = (rowmaxabs(X), rownonmissing(X))\nr = chebyeval((1, 2), X)\nt = timer_value(1)\n"
     "ov_view(V = ., ., (\"va\", \"vb\"))\n_runningsum(V, V)\nr = J2(1, 2, V)"},
    {"library", "",
     "A = asarray_create()\nasarray(A, \"one\", (1, 2))\nasarray(A, \"two\", \"text\")\n"
     "x = asarray(A, \"one\")\nasarray_remove(A, \"one\")\nA = .\nt = tokeninit()\n"
     "tokenset(t, \"a b\")\ns = tokengetall(t)\nt = .\nu = uniqrows((1 \\ 2 \\ 1), 1)"},
    {"definitions", "mosa_dummy = 1",
     "real scalar f1(real scalar x, | string vector s) {\n real matrix loc\n loc = x*2\n"
     " if (args()==2) return(cols(s))\n return(loc)\n}\nf1(1)\nf1(1,(\"a\",\"b\"))\n"
     "struct sd {\n real scalar a\n}\nclass cd {\n real scalar a\n}"},
    {"streams",
     "struct st {\n real scalar a\n pointer scalar p\n}\nvoid streams() {\n"
     " struct st scalar x\n real scalar f\n x.p = &(1,2,3)\n (void) _unlink(\"fs\")\n"
     " f = fopen(\"fs\", \"w\")\n fautoclose(f)\n fputmatrix(f, x)\n"
     " fputmatrix(f, (\"a\",\"bc\"))\n fput(f, 3*\"line \")\n fclose(f)\n"
     " f = fopen(\"fs\", \"r\")\n fautoclose(f)\n x = fgetmatrix(f)\n *x.p = fgetmatrix(f)\n"
     " *x.p = fget(f)\n *x.p = dir(\".\", \"files\", \"f*\")\n fclose(f)\n}",
     "streams()"},
    {"host", "",
     "ovata(\"quietly mosa: inner = 5\")\nrc = _ovata(\"capture mosa: 1+\")\n"
     "ov_local(\"here\", \"x\")\nst = c(\"pi\")"},
};

// The host's commands that a script stands on.
void rows()
{
    for (const char *line : {"drop _all", "set obs 3", "generate double va = _n",
                             "generate vb = 2*_n", "generate str4 vs = \"s\" + string(_n)"})
        ASSERT_EQ(run(line), 0) << session_output;
}

void prepare(const script &s)
{
    rows();
    ASSERT_EQ(run("mosa_clear"), 0);
    ASSERT_EQ(ms("kept = (1,2\\3,4)\nkepts = (\"a\",\"bb\")\nkeptp = &kept"), 0) << session_output;
    if (*s.definitions) {
        ASSERT_EQ(ms(s.definitions), 0) << s.name << "\n" << session_output;
    }
}

void check_kept(int64_t n)
{
    ASSERT_EQ(ms_value("all(kept :== (1,2\\3,4)) & rows(kept)==2 & kepts[2]==\"bb\" & "
                       "(*keptp)[2,1]==3 & mosa_ok() == 5"),
              1)
        << "n=" << n << session_output;
    ASSERT_EQ(mosa_xeq_depth, 0) << "n=" << n;
    ASSERT_EQ(dsa_check(sysdsa), 0) << "n=" << n;
}

struct use {
    m_sums sums;
    mem_use mem;
};

use used()
{
    EXPECT_EQ(run("drop _all"), 0);
    EXPECT_EQ(run("mosa_clear"), 0);
    use u{m_getsum(), mem_live()};
    return u;
}

class MosaFaults : public testing::TestWithParam<size_t>
{
};

// The script once for each n while the n-th event fails. Base: what a clean run leaves.
void fail_each(const script &s, fault_kind kind, bool stay)
{
    use base{};
    for (int64_t n = 0; n < 30000; n++) {
        prepare(s);
        ASSERT_EQ(ms("real scalar mosa_ok() return(5)"), 0);
        if (n)
            fault_arm(kind, n, stay);
        int32_t rc = ms(s.text);
        int64_t hits = fault_disarm();
        std::string words = session_output;
        stopflag = 0;
        altstopflag = 0;
        ASSERT_NO_FATAL_FAILURE(check_kept(n)) << rc << words;
        if (n && !hits)
            return;
        if (rc && kind == F_MEM) {
            ASSERT_FALSE(words.empty()) << "n=" << n << " rc=" << rc;
        }
        if (rc && kind == F_BREAK) {
            ASSERT_TRUE(rc == 1 || rc == 3000) << "n=" << n << " " << words;
            ASSERT_EQ(words.find("function returned error"), std::string::npos) << words;
        }
        use now = used();
        if (!n) {
            ASSERT_EQ(rc, 0) << s.name << "\n" << words;
            base = now;
            continue;
        }
        ASSERT_EQ(now.sums.nmat, base.sums.nmat) << "n=" << n << " rc=" << rc << words;
        ASSERT_EQ(now.sums.nfcn, base.sums.nfcn) << "n=" << n << " rc=" << rc << words;
        ASSERT_LE(now.mem.blocks, base.mem.blocks) << "n=" << n << " rc=" << rc << words;
    }
    FAIL() << "the fault is always hit";
}

} // namespace

TEST_P(MosaFaults, RefusedMemoryIsToldAndGivenBack)
{
    const script &s = scripts[GetParam()];
    SCOPED_TRACE(s.name);
    ms_begin();
    fail_each(s, F_MEM, false);
    fail_each(s, F_MEM, true);
}

TEST_P(MosaFaults, BreaksUnwindInSilence)
{
    const script &s = scripts[GetParam()];
    SCOPED_TRACE(s.name);
    ms_begin();
    fail_each(s, F_BREAK, false);
}

INSTANTIATE_TEST_SUITE_P(All, MosaFaults, testing::Range(size_t{0}, std::size(scripts)));
