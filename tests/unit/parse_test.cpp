// The parser of commands: clauses, ranges, weights, options, lists, and the parse kept for by.
#include "area.h"
#include "core/settings.h"
#include "expr/generate.h"
#include "expr/parse.h"
#include "expr/varlist.h"
#include "output/print.h"
#include <cstring>

class parse : public testing::Test
{
  protected:
    void SetUp() override
    {
        fresh_system(false);
        numconst_init();
        if (!parinfo->ifpgm) {
            ASSERT_EQ(pi_init(parinfo), 0);
        }
        byvar = 0;
        lastby = true;
        vernum = ver_current;
        s_outlev = 5;
        for (const char *name : {"x", "y", "xa", "xb", "z1"})
            add_user(T_FLOAT, name);
        add_user(10, "name");
        (void)!dsa_add_obs(sysdsa, 10, true);
        for (uint32_t i = 1; i <= 10; i++) {
            dsa_store(i, sysdsa, 1, i);
            dsa_store(i % 3 == 0 ? misval : 0, sysdsa, 2, i);
        }
        allow();
    }
    // Everything allowed, nothing required.
    void allow()
    {
        pi_allow_reset(parinfo);
        parinfo->pi_in = parinfo->pi_if = parinfo->pi_vlist = parinfo->pi_wgt = PI_OK;
        parinfo->pi_using = parinfo->pi_by = parinfo->pi_opts = PI_OK;
        parinfo->pi_wgtmask = W_ALL4;
        parinfo->pi_blankall = 0;
    }
    int32_t run(const char *line)
    {
        snprintf(console, sizeof console, "%s", line);
        ti_settok(tokinfo, console);
        return ti_pi_parse(tokinfo, parinfo);
    }
    std::string vars()
    {
        std::string s;
        for (int32_t i = 0; i < parinfo->pi_nvar; i++)
            s += (i ? " " : "") + std::string(_varlist[parinfo->vl_vr[i] - 1]);
        return s;
    }
    int32_t selected()
    {
        int32_t n = 0;
        for (int32_t obs = parinfo->pi_obs1; obs <= parinfo->pi_obs2; obs++)
            n += selobs(obs);
        return n;
    }
};

TEST_F(parse, clauses_in_any_order)
{
    ASSERT_EQ(run("x y if x>2 in 2/8 using \"my file\" [aw=x], detail"), 0);
    EXPECT_EQ(vars(), "x y");
    EXPECT_EQ(selected(), 6);
    EXPECT_STREQ(parinfo->pi_using_name, "my file");
    EXPECT_STREQ(parinfo->pi_intext, "2/8");
    EXPECT_EQ(parinfo->pi_wtype, W_AW);
    EXPECT_EQ(parinfo->pi_nopt, 1);
    ASSERT_EQ(run("in f/5 [fw=x] if x>2"), 0);
    EXPECT_EQ(selected(), 3);
    ASSERT_EQ(run("if y"), 0);
    EXPECT_EQ(selected(), 3) << "missing is true";
    ASSERT_EQ(run("x, detail, in 1/2"), 0) << "a second comma ends the options";
    EXPECT_EQ(parinfo->pi_obs2, 2);
    for (const char *twice :
         {"x if x if y", "in 1 in 2", "[aw=x] [fw=x]", "using a using b", "x ("})
        EXPECT_EQ(run(twice), 198) << twice;
}

TEST_F(parse, what_is_not_allowed_or_missing)
{
    pi_allow_reset(parinfo);
    EXPECT_EQ(run("if x"), 101);
    EXPECT_EQ(run("in 1"), 101);
    EXPECT_EQ(run("using a"), 101);
    EXPECT_EQ(run("[fw=x]"), 101);
    EXPECT_EQ(run(", detail"), 101);
    EXPECT_EQ(run("= x"), 101);
    EXPECT_EQ(run("[]"), 0);
    allow();
    parinfo->pi_vlist = PI_REQ;
    EXPECT_EQ(run("if x"), 100);
    parinfo->pi_vlist = PI_OK;
    parinfo->pi_orin = 1;
    EXPECT_EQ(run(""), 100);
    EXPECT_EQ(run("in 1"), 0);
    parinfo->pi_stopunknown = 1;
    EXPECT_EQ(run("in 1 : rest"), 0);
    EXPECT_STREQ(ti_gettok(tokinfo, prsestd), ":");
    allow();
    EXPECT_EQ(run("x = y"), 198) << "the old form of a weight";
    vernum = 200;
    EXPECT_EQ(run("x = y"), 0);
    EXPECT_TRUE(parinfo->pi_oldwgt);
}

TEST_F(parse, ranges)
{
    struct row {
        const char *text;
        int32_t rc, a, b;
    } rows[] = {
        {"in 3", 0, 3, 3}, {"in 2/l", 0, 2, 10}, {"in f/-2", 0, 1, 9}, {"in -1", 0, 10, 10},
        {"in 1 / 4", 0, 1, 4}, {"in 5/3", 198, 0, 0}, {"in 0", 198, 0, 0}, {"in 1/11", 198, 0, 0},
        {"in -11/l", 198, 0, 0}, {"in x", 198, 0, 0}, {"in", 198, 0, 0}, {"in 1x", 198, 0, 0},
        {"in 99999999999999999999", 198, 0, 0},
    };
    for (const row &r : rows) {
        EXPECT_EQ(run(r.text), r.rc) << r.text;
        if (!r.rc) {
            EXPECT_EQ(parinfo->pi_obs1, r.a) << r.text;
            EXPECT_EQ(parinfo->pi_obs2, r.b) << r.text;
        }
    }
    parinfo->pi_in = PI_WIDE;
    EXPECT_EQ(run("in 1/11"), 0);
    byvar = 1;
    EXPECT_EQ(run("in 1"), 190);
    parinfo->pi_by = PI_NO;
    EXPECT_EQ(run("x"), 190);
}

TEST_F(parse, weights)
{
    struct row {
        const char *text;
        int32_t rc, kind;
    } rows[] = {
        {"[w=x]", 0, 0}, {"[weight=x]", 0, 0}, {"[aw=x]", 0, W_AW}, {"[pweight = x*2]", 0, W_PW},
        {"[iw=x]", 0, W_IW}, {"[cell=x]", 0, W_AW}, {"[freq=x]", 0, W_FW}, {"[fw=x]", 0, W_FW},
        {"[f=x]", 198, 0}, {"[cel=x]", 198, 0}, {"[zz=x]", 198, 0}, {"[aw x]", 198, 0},
        {"[aw=x", 198, 0}, {"[aw=x[1]]", 0, W_AW},
    };
    for (const row &r : rows) {
        int32_t rc = run(r.text);
        EXPECT_EQ(rc != 0, r.rc != 0) << r.text << " " << rc;
        if (!r.rc) {
            EXPECT_EQ(parinfo->pi_wtype, r.kind) << r.text;
        }
    }
    parinfo->pi_wgtmask = W_FW;
    EXPECT_EQ(run("[aw=x]"), 101);
    ASSERT_EQ(run("[w=x]"), 0);
    pi_wgtdflt(parinfo, W_FW);
    EXPECT_EQ(parinfo->pi_wtype, W_FW);
}

TEST_F(parse, variable_lists)
{
    struct row {
        const char *text;
        int32_t rc;
        const char *want;
    } rows[] = {
        {"x y", 0, "x y"}, {"x-xb", 0, "x y xa xb"}, {"xa - z1", 0, "xa xb z1"},
        {"x*", 0, "x xa xb"},
        {"x?", 0, "xa xb"}, {"*a*", 0, "xa name"}, {"_all", 0, "x y xa xb z1 name"},
        {"*", 0, "x y xa xb z1 name"}, {"na~e", 0, "name"}, {"z", 0, "z1"}, {"x x", 0, "x x"},
        {"nam", 0, "name"}, {"q", 111, ""}, {"q*", 111, ""}, {"x~", 111, ""}, {"y-x", 111, ""},
        {"L.x", 101, ""}, {"i.x", 101, ""}, {"x-", 198, ""}, {"x#y", 101, ""}, {"3x", 198, ""},
    };
    for (const row &r : rows) {
        EXPECT_EQ(run(r.text), r.rc) << r.text;
        if (!r.rc) {
            EXPECT_EQ(vars(), r.want) << r.text;
        }
    }
    ovata_varabbrev = false;
    EXPECT_EQ(run("nam"), 111);
    ovata_varabbrev = true;
    parinfo->pi_blankall = 1;
    ASSERT_EQ(run("if x"), 0);
    EXPECT_EQ(parinfo->pi_nvar, 6);
    EXPECT_FALSE(parinfo->pi_hasvlist);
    int32_t list[4], n;
    EXPECT_EQ(vlist_text("x-xb", list, &n, 4), 0);
    EXPECT_EQ(vlist_text("x*  *", list, &n, 4), 103);
    EXPECT_EQ(vlist_text("x if", list, &n, 4), 198);
}

TEST_F(parse, new_variables)
{
    pi_vlmode = VL_NEW;
    ASSERT_EQ(run("byte a str5 b c1-c3 double(d e) f:lab"), 0);
    EXPECT_EQ(vars(), "a b c1 c2 c3 d e f");
    EXPECT_EQ(_typlist[6], T_BYTE);
    EXPECT_EQ(_typlist[7], 5);
    EXPECT_EQ(_typlist[8], type_ofword(set_type));
    EXPECT_EQ(_typlist[12], T_DOUBLE);
    EXPECT_STREQ(_lbllist[13], "lab");
    EXPECT_EQ(_i_Kvar, 6);
    dsa_truncate_var(sysdsa, 6, true);
    EXPECT_EQ(run("x"), 110);
    EXPECT_EQ(run("a*"), 198);
    EXPECT_EQ(run("c3-c1"), 198);
    EXPECT_EQ(run("double(a"), 100);
    pi_vlmode = VL_NEW1;
    EXPECT_EQ(run(""), 102);
    EXPECT_EQ(run("a b"), 103);
    EXPECT_EQ(_Kvar, 6);
}

TEST_F(parse, options_are_claimed_by_name)
{
    char buf[40];
    double v[8];
    int32_t list[8];
    ASSERT_EQ(run("x, det nolabel level(90) n(3) cut(1 2/4, 8) "
                  "title( \"a (b\" ) by(x y) as( raw )"), 0);
    EXPECT_EQ(ti_pi_findopt(tokinfo, parinfo, "detail", 1, 0), 1);
    EXPECT_EQ(ti_pi_findopt(tokinfo, parinfo, "label", 3, 1), 0);
    EXPECT_EQ(ti_pi_findopt(tokinfo, parinfo, "other", 1, 7), 7);
    EXPECT_EQ(ti_pi_findlevel(tokinfo, parinfo, 1), 90);
    EXPECT_EQ(ti_pi_findopta(tokinfo, parinfo, "n", 1, 0), 3);
    EXPECT_EQ(ti_pi_findoptv(tokinfo, parinfo, "cut", 2, v, 8, 0), 5);
    EXPECT_EQ(v[4], 8);
    EXPECT_EQ(ti_pi_findargn(tokinfo, parinfo, "title", 1, buf, 40, 1), 1);
    EXPECT_STREQ(buf, "a (b");
    EXPECT_EQ(ti_pi_findvlist(tokinfo, parinfo, "by", 2, list, 8), 2);
    EXPECT_EQ(ti_pi_chkopt(tokinfo, parinfo), 198) << "as() is left";
    EXPECT_EQ(ti_pi_findargasis(tokinfo, parinfo, "as", 2, buf, 40), 1);
    EXPECT_STREQ(buf, " raw ");
    EXPECT_EQ(ti_pi_chkopt(tokinfo, parinfo), 0);
    pi_resetopt(parinfo);
    EXPECT_EQ(ti_pi_chkopt(tokinfo, parinfo), 198);
}

TEST_F(parse, malformed_options)
{
    char buf[8];
    ASSERT_EQ(run(", n(x)"), 0);
    EXPECT_EQ(ti_pi_findopta(tokinfo, parinfo, "n", 1, 5), 5);
    EXPECT_EQ(ti_pi_chkopt(tokinfo, parinfo), 198);
    ASSERT_EQ(run(", detail(3)"), 0);
    EXPECT_EQ(ti_pi_findopt(tokinfo, parinfo, "detail", 1, 0), 0) << "takes no argument";
    EXPECT_EQ(ti_pi_chkopt(tokinfo, parinfo), 198);
    ASSERT_EQ(run(", by(zz)"), 0);
    int32_t list[2];
    EXPECT_EQ(ti_pi_findvlist(tokinfo, parinfo, "by", 2, list, 2), 0);
    EXPECT_EQ(ti_pi_chkopt(tokinfo, parinfo), 111);
    ASSERT_EQ(run(", detail detail"), 0);
    EXPECT_EQ(ti_pi_findopt(tokinfo, parinfo, "detail", 1, 0), 1);
    EXPECT_EQ(ti_pi_chkopt(tokinfo, parinfo), 198) << "the second is left over";
    ASSERT_EQ(run(", title(too long a text)"), 0);
    EXPECT_EQ(ti_pi_findargn(tokinfo, parinfo, "title", 1, buf, 8, 9), 0);
    ASSERT_EQ(run(", DETail"), 0);
    EXPECT_EQ(ti_findopt_lc(tokinfo, "detail", 3, 0), 1);
    EXPECT_EQ(run(", n(3"), 100);
    EXPECT_EQ(run(", n(\"3)"), 100);
    std::string many = ",";
    for (int i = 0; i < 70; i++)
        many += " a";
    EXPECT_EQ(run(many.c_str()), 0);
    EXPECT_EQ(run((many + " a").c_str()), 1003);
}

TEST_F(parse, replay_for_by)
{
    byvar = 1;
    lastby = false;
    nobss1 = 1;
    nobss2 = 4;
    ASSERT_EQ(run("xa x if x>2.5, n(3)"), 0);
    EXPECT_EQ(selected(), 2);
    // What the groups in between do to the pools and the line must not matter.
    initialize_compexp_shared();
    systak[0] = 99;
    memset(console, '#', 40);
    byvar = 2;
    lastby = true;
    nobss1 = 5;
    nobss2 = 10;
    parinfo->pi_nvar = 0;
    ASSERT_EQ(ti_pi_parse(tokinfo, parinfo), 0);
    EXPECT_EQ(vars(), "xa x");
    EXPECT_EQ(selected(), 6);
    pi_resetopt(parinfo);
    EXPECT_EQ(ti_pi_findopta(tokinfo, parinfo, "n", 1, 0), 3);
    EXPECT_EQ(dmfind0("symbol", DM_VARLIST), nullptr);
}

TEST_F(parse, numlists)
{
    struct row {
        const char *text;
        int32_t rc;
        std::vector<double> want;
    } rows[] = {
        {"1 2,3", 0, {1, 2, 3}}, {"1/4", 0, {1, 2, 3, 4}}, {"3/1", 0, {3, 2, 1}},
        {"1(2)6", 0, {1, 3, 5}}, {"6[-2]1", 0, {6, 4, 2}}, {"0 (.1) .3", 0, {0, .1, .2, 3 * .1}},
        {"1 3 to 9", 0, {1, 3, 5, 7, 9}}, {"1 2: 4 9", 0, {1, 2, 3, 4, 9}},
        {"-2/0", 0, {-2, -1, 0}},
        {"", 0, {}}, {"1/", 121, {}}, {"a", 121, {}}, {"1(0)5", 121, {}}, {"1(-1)5", 121, {}},
        {"1 to 5", 121, {}}, {".", 127, {}}, {"1/9", 123, {}}, {"1(1)1e300", 123, {}},
    };
    for (const row &r : rows) {
        double out[8];
        int32_t n;
        EXPECT_EQ(numlist_text(r.text, out, &n, 8), r.rc) << r.text;
        if (!r.rc) {
            EXPECT_EQ(std::vector<double>(out, out + n), r.want) << r.text;
        }
    }
}
