// Six levels deep - do-file, program, program file, include, do-file, program - everything a
// level can change is changed and then something fails. What was there before must be there
// afterwards, whatever the failure.
#include "../session.h"
#include "core/rc.h"
#include "core/settings.h"
#include "data/variables.h"
#include "interp/dm.h"
#include "interp/programs.h"
#include "interp/trace.h"
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <sstream>

namespace
{

// The payload of a record, but for those that keep the time of their last use, and the name of the
// file last saved, which is a temporary one.
std::string content(int32_t type, const dmrec *r)
{
    if (type == DM_PROGRAM || type == DM_LASTCMD || !strncmp(r->name, "S_FN", 4))
        return "";
    return "=" + std::to_string(std::hash<std::string_view>()(
                     {reinterpret_cast<const char *>(r) + dm_hdrsize, size_t(r->len)}));
}

bool any_of(const std::string &line, std::initializer_list<const char *> words)
{
    for (const char *w : words)
        if (line.find(w) != std::string::npos)
            return true;
    return false;
}

// What commands show of the data, the results and the settings; the clock left out.
std::string shown()
{
    std::string all;
    for (const char *line : {"list, clean nolabel", "describe", "char list", "notes list",
                             "label dir", "scalar dir", "matrix dir", "ereturn list",
                             "sreturn list", "creturn list", "sysdir list", "macro dir"}) {
        EXPECT_EQ(run(line), 0) << line;
        std::istringstream lines(session_output);
        for (std::string l; std::getline(lines, l);)
            if (!any_of(l, {"_time)", "c(rc)", "S_TIME", "/Ov", "filedate", "S_FNDATE", "vars:"}))
                all += l + '\n';
    }
    return all;
}

// Everything that a level may change, as text: one line each, so that a difference reads well.
std::string state()
{
    std::ostringstream s;
    s << shown() << "level " << ovata_level << ' ' << typelmac << ' ' << doreq_nest << ' '
      << load_depth << '\n'
      << "version " << vernum << ' ' << caller_vernum << ' ' << mvmodern << '\n'
      << "output " << int(s_outlev) << ' ' << int(ls_outlev) << '\n'
      << "reader " << (dofilep != nullptr) << ' ' << doeof << ' ' << delimit << ' ' << dofile_rc
      << '\n'
      << "program " << runprog << " [" << sys_pgmname << "] [" << sys_pgmclass << "] " << sys_upline
      << ' ' << sys_is_cls << ' ' << int(program_class) << ' ' << resort_on_exit << '\n'
      << "load " << sysldtime << ' ' << not_autoload << ' ' << reading_cls_pgm << '\n'
      << "flow " << procflg << ' ' << syselseflg << ' ' << breakallowed << ' ' << int(breakdetail)
      << ' ' << exitflg << ' ' << gexitflg << '\n'
      << "break " << stopflag << ' ' << altstopflag << ' ' << stopflag_val << ' ' << altstopflag_val
      << '\n'
      << "leftovers " << psvfctr << ' ' << hastmp_fhopened << ' ' << hastmp_hreturn << ' '
      << hastmp_estheld << ' ' << estrestore << '\n'
      << "temporary files " << tmpfctr << '\n'
      << "settings " << set_more << ' ' << set_trace << ' ' << trace_low << ' ' << set_rmsg << ' '
      << ovata_varabbrev << ' ' << ovata_dpc << '\n'
      << "by " << by_env.on << ' ' << by_waiting.on << ' ' << byvar << ' ' << lastby << '\n'
      << "data " << _Kvar << ' ' << _i_Kvar << ' ' << _Nobs << '\n';
    // The store, but for r(), which a failure may leave as it likes.
    std::map<int32_t, std::string> kinds;
    for (int32_t type = 0; type < DM_NTYPE; type++)
        for (dmrec *r = dm_dtyp[type]; r; r = r->tnext)
            if (type < 20 || type > 24)
                kinds[type] += std::string(" ") + r->name + content(type, r);
    for (auto &[type, names] : kinds)
        s << "type " << type << names << '\n';
    std::vector<std::string> files;
    for (auto &e : std::filesystem::directory_iterator("."))
        files.push_back(e.path().filename());
    std::sort(files.begin(), files.end());
    for (auto &f : files)
        s << f << '\n';
    return s.str();
}

void put(const char *name, const std::string &text)
{
    std::ofstream(name) << text;
}

// What each level does before it enters the next.
const char spoil[] = "local mine spoiled\n"
                     "tempvar v\n"
                     "generate `v' = 1\n"
                     "tempfile f\n"
                     "quietly save `f'\n"
                     "set more off\n";

struct unwind : testing::Test {
    void SetUp() override
    {
        session();
        put("u1.do", std::string("#delimit ;\nlocal mine spoiled; version 7;\n#delimit cr\n") +
                         spoil + "program u2, rclass sortpreserve\nversion 6\n" + spoil +
                         "foreach x in a b {\nif \"`x'\" == \"b\" {\nu3 `0'\n}\n}\nend\n"
                         "capture noisily u2 `0'\nlocal rc = _rc\nprogram drop u2\nexit `rc'\n");
        put("u3.ado",
            std::string("program u3\n") + spoil + "preserve\ndrop in 1\ninclude u4.do\nend\n");
        put("u4.do",
            "local fromfour 1\n#delimit ;\nnobreak quietly noisily novarabbrev do u5 `0';\n");
        put("u5.do", std::string(spoil) +
                         "replace x = 99\ngenerate kept = 1\nlabel data other\n"
                         "label define la 9 nine, modify\nchar x[note] changed\nsort kept\n"
                         "program u6, byable(recall)\n" +
                         spoil +
                         "tempname p h\npostfile `p' a using post, replace\n"
                         "file open `h' using handle, write replace\n"
                         "set rmsg on\nset trace on\nforvalues i = 1/3 {\nwhile 1 {\n"
                         "if 1 {\ninclude fail.do\n}\n}\n}\nend\n"
                         "capture noisily u6\nlocal rc = _rc\nprogram drop u6\nexit `rc'\n");
        ASSERT_EQ(run("set obs 3"), 0);
        ASSERT_EQ(run("generate x = 4 - _n"), 0);
        put("before.do", "label data first\nlabel define la 1 one\nchar x[note] kept\nsort x\n"
                         "local mine mine\nlocal fromfour here\nscalar sc = 3\nmatrix m = (1,2)\n"
                         "global mine G\nprogram setboth, eclass\nereturn local cmd me\nsets\nend\n"
                         "program sets, sclass\nsreturn local word kept\nend\nsetboth\n");
        ASSERT_EQ(run("include before.do"), 0);
        put("post.dta", "");
        put("handle", "");
        put("fail.do", "error 9");
        // Program files stay in memory once they were loaded.
        (void)run("run u1");
    }
    void TearDown() override { (void)run("clear"); }

    void fails(const std::string &how, int32_t code)
    {
        put("fail.do", how);
        std::string before = state();
        EXPECT_EQ(run("do u1"), code) << how << "\n" << session_output;
        stopflag = 0;
        EXPECT_EQ(state(), before) << how;
        EXPECT_EQ(run("capture do u1"), 0) << how;
        EXPECT_EQ(captrc, code) << how;
        EXPECT_EQ(state(), before) << how;
        EXPECT_EQ(run("quietly run u1, nostop"), 0) << how;
        EXPECT_EQ(state(), before) << how;
    }
};

TEST_F(unwind, every_failure)
{
    fails("error 459\n", 459);
    fails("exit 3\n", 3);
    fails("nosuchcommand\n", 199);
    fails("display 1 +\n", 198);
    fails("display \"" + std::string(9000, 'x') + "\"\n", RC_LONGCMD);
    fails("local a ``a'\nlocal a \\`a'\ndisplay `a'\n", 920);
    fails("program never_ended\ndisplay 1\n", 612);
    fails("foreach x in 1 2 {\ndisplay `x'\n", 612);
    fails("if 1 {\nif 0 {\n}\n", 198);
    fails("capture noisily {\nerror 5\n}\nexit _rc\n", 5);
    fails("program again\ndo fail\nend\ncapture noisily again\nlocal rc = _rc\nprogram drop again\n"
          "exit `rc'\n",
          110);
    fails("do u1\n", 110);
    fails("nobreak error 1\n", 1);
}

// Work variables go also when there is no memory left, however they lie among the others.
TEST_F(unwind, work_variables_without_memory)
{
    char name[9];
    int32_t start = tmpvctr;
    std::vector<std::string> kept = {"assert x == _n"};
    for (int32_t i = 0; i < 30; i++) {
        std::string v = "keep" + std::to_string(i);
        mktmpvn(name);
        ASSERT_EQ(run("generate byte " + std::string(name) + " = 100"), 0);
        if (i % 3 == 0)
            continue;
        ASSERT_EQ(run("generate int " + v + " = _n * 100 + " + std::to_string(i)), 0);
        kept.push_back("assert " + v + " == _n * 100 + " + std::to_string(i));
    }
    int32_t K = _Kvar;
    fault_arm(F_MEM, 1, true);
    rmtmpvn(start);
    fault_disarm();
    EXPECT_EQ(_Kvar, K - 30);
    EXPECT_EQ(_Kvar, _i_Kvar);
    EXPECT_EQ(dsa_check(sysdsa), 0);
    for (const std::string &line : kept)
        EXPECT_EQ(run(line), 0) << line;
    EXPECT_EQ(run("drop keep*"), 0);
}

// The deepest level is refused, and every level below it given back.
TEST_F(unwind, too_deep)
{
    put("deep.do", spoil + std::string("do deep\n"));
    std::string before = state();
    EXPECT_EQ(run("do deep"), RC_LIMIT);
    EXPECT_EQ(state(), before);
    EXPECT_EQ(run("capture do deep"), 0);
    EXPECT_EQ(captrc, RC_LIMIT);
    EXPECT_EQ(state(), before);
}

} // namespace
