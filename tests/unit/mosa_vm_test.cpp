// The machine: frames, calls, tracebacks, links, limits, and the check of code.
#include "../mosa_asm.h"
#include "core/mem.h"
#include "mosa/classdef.h"
#include <gtest/gtest.h>

// Runs a statement as the console does. Its words are in session_output.
static int32_t statement(assembler &s)
{
    session();
    session_output.clear();
    s.store("<istmt0>");
    int32_t rc = ixeq();
    omlflush(oml_cur);
    return rc;
}

static matobj *twice()
{
    assembler s;
    return s.op("argc", 1).op("ld", 0).num(2).op("mult").op("ret").store("twice");
}

TEST(MosaVm, OptionalArgumentsKeepTheirSlots)
{
    assembler s;
    matobj *f = s.op("argcrange", 1, 3)
                    .named("olc_rm", 2, "b")
                    .named("olc_ss", 3, "c")
                    .named("alc_rs", "z")
                    .op("ld", 0)
                    .op("ld", 1)
                    .op("addc")
                    .op("ld", 3)
                    .op("addc")
                    .op("ret")
                    .store("f");
    EXPECT_EQ(call_values(f, {"R1,1:1"}), "R1,2:1 ."); // b is 0 by 0, z is missing
    EXPECT_EQ(call_values(f, {"R1,1:1", "R1,2:2 3"}), "R1,4:1 2 3 .");
    EXPECT_EQ(call_values(f, {"R1,1:1", "R1,1:2", "S1,1:a"}), "R1,3:1 2 .");
    EXPECT_EQ(call_values(f, {}), "3001");
    EXPECT_EQ(session_output,
              "                     f():  3001  expected 1 to 3 arguments but received 0\n");
    mo_freefcn(f);
}

TEST(MosaVm, ArgumentsAreTheCallersVariables)
{
    twice();
    assembler g;
    matobj *f = g.op("argc", 1).num(5).op("stopop", 0).op("ld0").op("ret").store("setfive");
    matobj *x = value_of("R1,2:1 2");
    x->links++;
    EXPECT_EQ(call_with(f, {x}), "R1,1:0");
    EXPECT_EQ(show(x), "R1,1:5");
    EXPECT_EQ(x->links, 1);
    mo_unlink(x);
}

TEST(MosaVm, ReturnedLocalIsNotCopied)
{
    assembler g;
    g.op("argc", 0).named("alc_rm", "local").num(1).num(50).op("rowto").op("stopop", 0);
    g.op("ld", 0).op("ret").store("make");
    assembler s;
    s.op("argc", 0).findf("make").op("call", 0, 0).op("ret");
    matobj *f = s.store("f");
    session();
    int32_t before = live_matrices();
    ASSERT_EQ(mosastakinit(1), 0);
    m_callfcn(f, 0);
    matobj *top = *m_stak;
    EXPECT_EQ(top->info, nullptr);
    EXPECT_EQ(top->links, 1);
    EXPECT_LE(top->level, 1);
    EXPECT_EQ(mo_count(top), 50);
    m_drop();
    EXPECT_EQ(live_matrices(), before);
}

TEST(MosaVm, TracebackNamesEachFrame)
{
    assembler inner;
    inner.op("argc", 0).op("line", 7).num(1).num(2).num(3).op("addc").op("mult");
    inner.num(1).num(2).op("addc").op("mult").op("ret").store("inner");
    assembler outer;
    outer.op("argc", 0).findf("inner").op("call", 0, 0).op("ret").store("outer");
    assembler s;
    s.op("argc", 0).findf("outer").op("call", 0, 0).op("list2").op("pop").op("stop");
    EXPECT_EQ(statement(s), 3200);
    EXPECT_EQ(session_output, "                       *:  3200  conformability error\n"
                              "                 inner():     -  function returned error [7]\n"
                              "                 outer():     -  function returned error\n"
                              "                 <istmt>:     -  function returned error\n");
    assembler missing;
    missing.op("argc", 0).findf("nosuch").op("call", 0, 0).op("stop");
    EXPECT_EQ(statement(missing), 3499);
    EXPECT_EQ(session_output, "                 <istmt>:  3499  nosuch() not found\n");
    assembler bad;
    bad.op("argc", 0).num(1).num(2).op("addr").op("isrvec").op("stop");
    EXPECT_EQ(statement(bad), 3202);
    EXPECT_EQ(session_output,
              "                 <istmt>:  3202  <tmp>[2,1] found where rowvector required\n");
}

TEST(MosaVm, CodesHaveTheirWords)
{
    EXPECT_STREQ(m_rctext(3204), "matrix found where scalar required");
    EXPECT_STREQ(m_rctext(601), "file not found");
    EXPECT_STREQ(m_rctext(631), "host not found");
    EXPECT_STREQ(m_rctext(650), "file error");
    EXPECT_STREQ(m_rctext(198), "Ovata returned error");
}

TEST(MosaVm, TypesAreAsserted)
{
    struct {
        const char *op, *value, *want;
    } rows[] = {
        {"isscalar", "R1,2:1 2", "<tmp>[1,2] found where scalar required"},
        {"iscvec", "R1,2:1 2", "<tmp>[1,2] found where colvector required"},
        {"isvec", "R2,2:1 2 3 4", "<tmp>[2,2] found where vector required"},
        {"isvoid", "R1,1:1", "<tmp>[1,1] found where void required"},
        {"isreal", "S1,1:a", "<tmp>[1,1] found where real required"},
        {"iscx", "R1,1:1", "<tmp>[1,1] found where complex required"},
        {"isnumer", "S1,1:a", "<tmp>[1,1] found where real or complex"},
        {"isstr", "R1,1:1", "<tmp>[1,1] found where string required"},
        {"isfcn", "R1,1:1", "<tmp> not a function"},
        {"isstr", "P1,1:0", ""},
        {"isnumer", "C1,1:1+1i", ""},
        {"isvec", "R0,1:", ""},
    };
    for (auto &row : rows) {
        assembler s;
        matobj *f = s.op("argc", 1).op("ld", 0).op(row.op).op("ret").store("f");
        call_values(f, {row.value});
        if (*row.want) {
            EXPECT_NE(session_output.find(row.want), std::string::npos) << session_output;
        } else {
            EXPECT_EQ(session_output, "");
        }
        mo_freefcn(f);
    }
    matobj *real = twice();
    real->cols = MT_REAL;
    real->eltype = OT_SCALAR;
    assembler s;
    matobj *f =
        s.op("argc", 1).op("ld", 0).op("isreal").op("isvec").op("iscx").op("ret").store("f");
    EXPECT_EQ(call_with(f, {real}), "3252");
    EXPECT_NE(session_output.find("twice() does not return complex"), std::string::npos);
    mo_freefcn(f);
}

// sum of i from 1 to n by a loop, as the optimiser leaves it.
TEST(MosaVm, LoopsAndConditions)
{
    assembler s;
    matobj *f = s.op("argc", 1)
                    .named("alc_rs", "s")
                    .named("alc_rs", "i")
                    .op("ld0")
                    .op("stopop", 1)
                    .op("ld1")
                    .op("stopop", 2)
                    .label("top")
                    .op("ld", 2)
                    .op("ld", 0)
                    .op("le")
                    .jump("jumpcond", "end")
                    .op("ld", 1)
                    .op("ld", 2)
                    .op("plus")
                    .op("stopop", 1)
                    .op("inc", 2)
                    .jump("jump", "top")
                    .label("end")
                    .op("ld", 1)
                    .op("ret")
                    .store("f");
    session();
    call_values(f, {"R1,1:3"});
    auto use = mem_live();
    EXPECT_EQ(call_values(f, {"R1,1:100000"}), "R1,1:5000050000");
    EXPECT_LE(mem_live().blocks, use.blocks + 2); // scalars live in the pools
    assembler t;
    matobj *g = t.op("argc", 1)
                    .op("ld", 0)
                    .jump("jumpf", "no")
                    .op("ld1")
                    .op("ret")
                    .label("no")
                    .op("ld0")
                    .op("ret")
                    .store("g");
    EXPECT_EQ(call_values(g, {"R1,1:."}), "R1,1:1");
    EXPECT_EQ(call_values(g, {"R1,1:0"}), "R1,1:0");
    EXPECT_EQ(call_values(g, {"C1,1:0+2i"}), "R1,1:1");
    EXPECT_EQ(call_values(g, {"P1,1:0"}), "R1,1:0");
    EXPECT_EQ(call_values(g, {"R1,2:1 1"}), "3204");
    EXPECT_EQ(call_values(g, {"S1,1:a"}), "3250");
}

TEST(MosaVm, BreakIsSilent)
{
    assembler s;
    s.op("argc", 0).label("top").jump("jump", "top");
    session();
    s.store("<istmt0>");
    session_output.clear();
    stopflag = 1;
    EXPECT_EQ(ixeq(), 1);
    EXPECT_EQ(session_output, "");
    stopflag = 0;
    // In the middle of a long operation, with the operands given back.
    assembler c;
    matobj *f = c.op("argc", 2).op("cadd").op("ret").store("f");
    int32_t before = live_matrices();
    matobj *a = m_mktmat(MO_REAL, 3000, 10), *b = m_mktmat(MO_REAL, 3000, 1);
    fillwithmissing(a);
    fillwithmissing(b);
    fault_arm(F_BREAK, 50, false);
    EXPECT_EQ(call_with(f, {a, b}), "1");
    fault_disarm();
    stopflag = 0;
    EXPECT_EQ(live_matrices(), before);
}

TEST(MosaVm, RecursionEndsInStackOverflow)
{
    session();
    s_outlev = 5; // the lines of every frame are not wanted
    assembler f;
    f.op("argc", 0).findf("f").op("call", 0, 0).op("ret").store("f");
    assembler s;
    s.op("argc", 0).findf("f").op("call", 0, 0).op("stop");
    EXPECT_EQ(statement(s), 3998);
    EXPECT_EQ(m_stak, m_stakbase - 1);
    // A frame that holds nothing is stopped by the native stack.
    assembler g;
    matobj *self = g.op("argc", 1).op("ld", 0).op("ld", 0).op("callind", 1).op("ret").store("g");
    EXPECT_EQ(call_with(self, {self}), "3998");
    EXPECT_EQ(m_stak, m_stakbase - 1);
    s_outlev = 0;
    // Deep recursion that ends is no trouble: n down to 0.
    assembler d;
    matobj *down = d.op("argc", 1)
                       .findf("down")
                       .op("ld", 0)
                       .jump("jumpf", "end")
                       .op("ld", 0)
                       .op("ld1")
                       .op("sub")
                       .op("call", 1, 1)
                       .op("ld1")
                       .op("plus")
                       .op("ret")
                       .label("end")
                       .op("ld0")
                       .op("ret")
                       .store("down");
    EXPECT_EQ(call_values(down, {"R1,1:5000"}), "R1,1:5000");
}

TEST(MosaVm, LinksDieWithTheirFunction)
{
    matobj *t = twice();
    assembler s;
    matobj *f = s.op("argc", 1).findf("twice").op("ld", 0).op("call", 1, 1).op("ret").store("f");
    EXPECT_EQ(call_values(f, {"R1,1:4"}), "R1,1:8");
    EXPECT_EQ(t->links, 1);
    m_rmobject(t);
    m_newstatement();
    EXPECT_EQ(call_values(f, {"R1,1:4"}), "3499");
    assembler three;
    three.op("argc", 1).op("ld", 0).num(3).op("mult").op("ret").store("twice");
    EXPECT_EQ(call_values(f, {"R1,1:4"}), "R1,1:12");
}

TEST(MosaVm, GlobalsAndStatements)
{
    assembler set;
    set.op("argc", 0).named("find", 1, "gx").num(41).op("stopop", 0).op("inc", 0).op("stop");
    EXPECT_EQ(statement(set), 0);
    assembler get;
    matobj *f = get.op("argc", 0)
                    .named("extern", 1 * 256 + 5, "gx")
                    .named("extern", 3 * 256 + 4, "gs")
                    .op("ld", 0)
                    .op("ret")
                    .store("f");
    EXPECT_EQ(call_values(f, {}), "R1,1:42");
    EXPECT_EQ(show(findglobalmat("gs")), "S0,1:");
    EXPECT_EQ(findglobalmat("gx")->links, 1);
    assembler none;
    none.op("argc", 0).named("find", 3, "nothing").op("stop");
    EXPECT_EQ(statement(none), 3499);
    EXPECT_NE(session_output.find("nothing not found"), std::string::npos);
}

TEST(MosaVm, PointersHoldWhatTheyPointTo)
{
    assembler s;
    matobj *f = s.op("argc", 1)
                    .named("alc_ps", "p")
                    .op("ld", 0)
                    .op("ref")
                    .op("stopop", 1)
                    .num(7)
                    .op("ld", 1)
                    .op("deref")
                    .op("sstomat")
                    .op("ret")
                    .store("f");
    EXPECT_EQ(call_values(f, {"R1,2:1 2"}), "R1,1:7");
    assembler n;
    matobj *g = n.op("argc", 1).op("ld", 0).op("deref").op("ret").store("g");
    EXPECT_EQ(call_values(g, {"P1,1:0"}), "3010");
    EXPECT_EQ(call_values(g, {"P1,2:0 0"}), "3204");
    EXPECT_EQ(call_values(g, {"R1,1:0"}), "3257");
    // A local outlives its frame while something points to it.
    assembler m;
    m.op("argc", 0).named("alc_rs", "z").num(9).op("stopop", 0).op("ld", 0).op("ref").op("ret");
    matobj *make = m.store("make");
    assembler d;
    matobj *h = d.op("argc", 1).op("ld", 0).op("callind", 0).op("deref").op("ret").store("h");
    int32_t before = live_matrices();
    EXPECT_EQ(call_with(h, {make}), "R1,1:9");
    EXPECT_EQ(live_matrices(), before);
    assembler t; // a temporary is no place to store into
    matobj *bad = t.op("argc", 0).num(1).num(2).op("sstomat").op("ret").store("bad");
    EXPECT_EQ(call_values(bad, {}), "3011");
    assembler post;
    matobj *k =
        post.op("argc", 1).op("ld", 0).op("postinc").op("ld", 0).op("addc").op("ret").store("k");
    EXPECT_EQ(call_values(k, {"R1,1:5"}), "R1,2:5 6");
    EXPECT_EQ(call_values(k, {"S1,1:a"}), "3253");
}

// struct pair { real scalar a; string matrix b }
static matobj *store_pair()
{
    std::vector<int32_t> w{1210, 1210, sd_mark, 2};
    w.insert(w.end(), {0, 10, 22, 0, 16, 25}); // two members from word 4
    w.insert(w.end(), {1, MT_REAL, OT_SCALAR, 0, -1, -1});
    w.insert(w.end(), {1, MT_STRING, OT_MATRIX, 0, -1, -1});
    w.insert(w.end(), {2, 2, 'a', 2, 2, 'b', 3});
    matobj *f = mo_allocfcn("", "pair", "", int64_t(w.size()) * 4);
    memcpy(f->data, w.data(), w.size() * 4);
    f->rows = int32_t(w.size());
    f->cols = MT_STRUCTDEF;
    return f;
}

TEST(MosaVm, StructsCopyTheirMembers)
{
    session();
    EXPECT_EQ(sd_check(mo_code(store_pair()), 29), nullptr);
    int32_t before = live_matrices();
    assembler s;
    matobj *f = s.op("argc", 0)
                    .named("alc_stcs", "x")
                    .named("alc_stcs", "y")
                    .findf("pair")
                    .op("call", 2, 0)
                    .op("stopop", 0)
                    .num(5)
                    .op("ldmatd", 0, 0)
                    .op("sstomat")
                    .op("pop")
                    .op("ld", 0)
                    .op("stopop", 1)
                    .num(6)
                    .op("ld", 1)
                    .op("drill", 0)
                    .op("sstomat")
                    .op("pop")
                    .op("ldmatd", 0, 0)
                    .op("ldmatd", 1, 0)
                    .op("addc")
                    .op("ld", 0)
                    .op("ld", 1)
                    .op("ee")
                    .op("addc")
                    .op("ret")
                    .store("f");
    EXPECT_EQ(call_values(f, {}), "R1,3:5 6 0");
    EXPECT_EQ(live_matrices(), before);
    assembler many;
    matobj *g =
        many.op("argc", 1).findf("pair").op("ld", 0).num(3).op("call", 1, 2).op("ret").store("g");
    EXPECT_EQ(call_values(g, {"R1,1:2"}), "T2,3:1 1 1 1 1 1");
    EXPECT_EQ(call_values(g, {"R1,1:-1"}), "3300");
    EXPECT_EQ(call_values(g, {"S1,1:a"}), "3253");
    assembler out;
    matobj *h =
        out.op("argc", 0).findf("pair").op("call", 0, 0).op("drill", 2).op("ret").store("h");
    EXPECT_EQ(call_values(h, {}), "3259");
    EXPECT_EQ(live_matrices(), before);
}

// A class with one real scalar x, optionally behind a parent; new() and destroy() as told.
static matobj *store_class(const char *name, const char *parent, int32_t firstslot, bool special)
{
    std::vector<int32_t> w(CW_HEAD, 0);
    auto text = [&w](const char *s) {
        auto at = int32_t(w.size());
        size_t n = strlen(s) / 4 + 1;
        w.insert(w.end(), {CR_TEXT, int32_t(n)});
        w.resize(w.size() + n);
        memcpy(&w[w.size() - n], s, strlen(s));
        return at;
    };
    w[CW_FORMAT] = w[CW_VERSION] = 1210;
    w[CW_MARK] = cls_mark;
    w[CW_STAMP] = 77;
    w[CW_NAME] = text(name);
    w[CW_PARENT] = *parent ? text(parent) : -1;
    w[CW_PARENTSTAMP] = 77;
    w[CW_FIRSTSLOT] = firstslot;
    auto type = int32_t(w.size());
    w.insert(w.end(), {CR_TYPE, MT_REAL, OT_SCALAR, 0, -1, -1});
    int32_t x = text("x"), total = text("total"), area = text("area"), make = text("new"),
            end = text("destroy");
    w[CW_NVARS] = w[CW_NSTATICS] = 1;
    w[CW_VARS] = int32_t(w.size());
    w.insert(w.end(), {CR_VAR, type, x, 0, 0});
    w[CW_STATICS] = int32_t(w.size());
    w.insert(w.end(), {CR_STATIC, type, total, 0, CF_STATIC, 0x1234, 0x5678});
    w[CW_FCNS] = int32_t(w.size());
    w[CW_NFCNS] = special ? 3 : 1;
    w.insert(w.end(), {CR_VIRT, type, area, 0, CF_VIRTUAL, 0, 0, 1, 1});
    w[CW_NEW] = w[CW_DESTROY] = -1;
    if (special) {
        w[CW_NEW] = int32_t(w.size());
        w.insert(w.end(), {CR_FCN, type, make, 0, 0, 1, 1, 0, 0});
        w[CW_DESTROY] = int32_t(w.size());
        w.insert(w.end(), {CR_FCN, type, end, 0, 0, 1, 1, 0, 0});
    }
    w.push_back(CR_END);
    w[CW_WORDS] = int32_t(w.size());
    matobj *f = mo_allocfcn("", name, "", int64_t(w.size()) * 4);
    memcpy(f->data, w.data(), w.size() * 4);
    f->rows = int32_t(w.size());
    f->cols = MT_CLASSDEF;
    return f;
}

// A member function that adds a letter to the global "log".
static void store_logger(const char *cls, const char *member, const char *letter)
{
    assembler s;
    s.op("argc", 1).named("extern", 3 * 256 + 5, "log").op("ld", 1).str(letter).op("plus");
    s.op("stopop", 1).op("stop").store(cls, MT_TRANSMORPHIC, OT_VOID, member);
}

static std::string taken_log()
{
    matobj *log = findglobalmat("log");
    std::string text = log ? show(log).substr(5) : "";
    if (log)
        fillwithmissing(log);
    return text;
}

TEST(MosaVm, ClassesBuildAndEndOnce)
{
    session();
    matobj *shape = store_class("shape", "", 1, true);
    EXPECT_EQ(cls_check(mo_code(shape), shape->rows), nullptr);
    store_class("square", "shape", 2, true);
    store_class("dot", "shape", 2, false);
    store_class("stale", "shape", 5, false);
    store_logger("shape", "new", "a");
    store_logger("shape", "destroy", "d");
    store_logger("shape", "area", "S");
    store_logger("square", "new", "b");
    store_logger("square", "destroy", "c");
    store_logger("square", "area", "Q");
    // x = square(); x.area() through the parent's name; y = x copies.
    assembler t;
    t.op("argc", 0).named("alc_clss", "x").named("alc_clss", "y").findf("square");
    t.op("call", 2, 0).op("stopop", 0).op("ld", 0);
    t.w.push_back(165);
    t.w.push_back(0);
    t.literal("shape");
    t.w.push_back(0);
    t.literal("area");
    t.w.push_back(1);
    t.w.push_back(77);
    t.op("pop").op("ld", 0).op("stopop", 1).op("ld", 0).op("ld", 1).op("ee").op("ret");
    matobj *g = t.store("g");
    int32_t before = live_matrices();
    EXPECT_EQ(call_values(g, {}), "R1,1:1");
    EXPECT_EQ(taken_log(), "abQcd");        // the copy was never built, so it does not end
    EXPECT_LE(live_matrices(), before + 3); // the log and a static of each class
    // A class without new() of its own has its parent's; statics are one for all.
    assembler u;
    u.op("argc", 0).findf("dot").op("call", 0, 0);
    u.op("ldstatic", 0, 0, 0, 0).literal("shape");
    u.w.push_back(0);
    u.literal("total");
    u.w.push_back(0);
    u.w.push_back(77);
    u.op("preinc").op("isscalar").op("ret");
    matobj *h = u.store("h");
    EXPECT_EQ(call_values(h, {}), "R1,1:.");
    EXPECT_EQ(taken_log(), "ad");
    assembler v;
    matobj *k = v.op("argc", 0).findf("stale").op("call", 0, 0).op("ret").store("k");
    EXPECT_EQ(call_values(k, {}), "3020");
}

TEST(MosaVm, StatementsNest)
{
    // A statement that fails leaves nothing of its own, and the machine as it was.
    session();
    assembler s;
    s.op("argc", 0).num(1).num(2).op("addc").num(1).op("plus").op("stop");
    int32_t before = live_matrices();
    EXPECT_EQ(statement(s), 3200);
    EXPECT_EQ(live_matrices(), before);
    EXPECT_EQ(m_stak, m_stakbase - 1);
    EXPECT_EQ(m_level, -1);
    EXPECT_EQ(mosa_xeq_depth, 0);
    EXPECT_EQ(m_xrc, 0);
}

TEST(MosaVm, CheckerRefuses)
{
    session();
    auto why = [](assembler s) {
        s.finish();
        const char *text = m_checkcode(s.w.data(), int32_t(s.w.size()));
        return std::string(text ? text : "good");
    };
    EXPECT_EQ(why(assembler().op("argc", 1).op("ld", 0).op("ret")), "good");
    EXPECT_EQ(why(assembler().op("argc", 1).op("ld", 1).op("ret")), "slot that is not there");
    EXPECT_EQ(why(assembler().op("argc", 0).op("pop").op("stop")), "stack empty");
    EXPECT_EQ(why(assembler().op("argc", 1).op("pop").op("argc", 1).op("stop")),
              "argument counts out of place or range");
    EXPECT_EQ(why(assembler().op("argcrange", 0, 2).named("olc_rm", 2, "b").op("stop")),
              "optional argument out of order");
    EXPECT_EQ(why(assembler().op("argcrange", 0, 1).op("stop")),
              "optional arguments are not settled");
    EXPECT_EQ(why(assembler().op("argc", 0)), "code runs off its end");
    EXPECT_EQ(why(assembler().op("jump", 3)), "jump to no instruction");
    EXPECT_EQ(why(assembler().op("lddbl", 2).op("ret")), "operand out of range");
    EXPECT_EQ(why(assembler().op("builtin", 9999, 0).op("ret")), "operand out of range");
    // A loop that takes one more from the stack at each turn.
    EXPECT_EQ(why(assembler().op("argc", 0).op("ld0").op("ld0").label("top").op("pop").jump("jump",
                                                                                            "top")),
              "stack empty");
    assembler unknown;
    unknown.w.insert(unknown.w.end(), {45, 30});
    EXPECT_EQ(why(unknown), "unknown or cut instruction");
    assembler unended;
    unended.w.insert(unended.w.end(), {37, 1, 0x41414141, 30});
    EXPECT_EQ(why(unended), "text without an end");
    EXPECT_NE(m_checkcode(nullptr, 0), nullptr);
}

TEST(MosaVm, RowsAgreeWithTheirLengths)
{
    struct {
        int32_t op, words;
    } fixed[] = {{1, 2},   {3, 1},   {25, 3},  {31, 2},  {35, 3},  {55, 3},  {84, 2},
                 {92, 2},  {119, 2}, {121, 2}, {140, 2}, {141, 3}, {142, 4}, {163, 8},
                 {164, 9}, {165, 5}, {167, 3}, {150, 1}, {112, 1}, {89, 2}};
    for (auto &row : fixed) {
        int32_t words[12] = {row.op};
        EXPECT_EQ(m_lofmop(words, 12), row.words) << row.op;
        EXPECT_EQ(m_lofmop(words, row.words - 1), 0) << row.op;
    }
    struct {
        int32_t op, at, words;
    } texts[] = {{37, 1, 4},  {122, 2, 5}, {34, 2, 5}, {120, 2, 5},
                 {138, 4, 7}, {166, 4, 8}, {168, 1, 5}};
    for (auto &row : texts) {
        int32_t words[12] = {row.op};
        words[row.at] = 2;
        EXPECT_EQ(m_lofmop(words, 12), row.words) << row.op;
    }
    assembler s;
    s.op("argc", 0).findf("g").str("text").num(2.5).op("stop");
    s.finish();
    s.w[5] = 123; // a cached link
    m_cleanpgm(s.w.data(), int32_t(s.w.size()));
    EXPECT_EQ(s.w[5], 0);
    std::string list = m_disasm(s.w.data(), int32_t(s.w.size()));
    EXPECT_NE(list.find("findf \"g\""), std::string::npos);
    EXPECT_NE(list.find("ldstr \"text\""), std::string::npos);
    EXPECT_NE(list.find("lddbl 2.5"), std::string::npos);
}

// Turned and turned back every image is what it was, and what is turned reads backwards word
// for word, but for the bytes of its texts.
TEST(MosaVm, ImagesTurnIntoTheOtherByteOrder)
{
    assembler a;
    a.op("argc", 1).op("ld", 0).num(2.5).op("plus").op("ret");
    matobj *f = a.store("turned");
    ASSERT_NE(f, nullptr);
    std::vector<int32_t> code(mo_code(f), mo_code(f) + f->rows), was = code;
    ASSERT_EQ(m_revpgm(code.data(), f->rows, false), 0);
    EXPECT_EQ(code[0], int32_t(__builtin_bswap32(1210)));
    EXPECT_EQ(code[2], int32_t(__builtin_bswap32(4)));
    EXPECT_NE(code, was);
    ASSERT_EQ(m_revpgm(code.data(), f->rows, true), 0);
    EXPECT_EQ(code, was);

    std::vector<int32_t> text{1210, 1210, 138, 7, 8, 9, 2, 0x64636261, 0x66656867, 163, 1, 2, 3, 4, 5, 6, 7};
    was = text;
    ASSERT_EQ(m_revpgm(text.data(), int32_t(text.size()), false), 0);
    EXPECT_EQ(text[7], 0x64636261) << "text is no number";
    EXPECT_EQ(text[10], 0) << "a link to a static is forgotten";
    ASSERT_EQ(m_revpgm(text.data(), int32_t(text.size()), true), 0);
    was[10] = was[11] = was[12] = 0;
    EXPECT_EQ(text, was);

    for (std::vector<int32_t> bad : {std::vector<int32_t>{1210, 1210, 0}, {1210, 1210, 200},
                                     {1210, 1210, 40}, {1210, 1210, 38, 5, 0}, {1210, 1210, 39, 1, -4}})
        EXPECT_EQ(m_revpgm(bad.data(), int32_t(bad.size()), false), 9711);
}
