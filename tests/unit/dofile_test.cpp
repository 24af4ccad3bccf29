#include "core/limits.h"
#include "core/rc.h"
#include "interp/interp.h"
#include "interp/startup.h"
#include "output/oml.h"
#include "output/print.h"
#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

std::string shown;
int32_t collect(const char *text, size_t n, void *)
{
    if (text)
        shown.append(text, n);
    return 0;
}

// Reads a whole do-file; the commands, and what was echoed.
struct filereader : testing::Test {
    oml *was = oml_cur;
    void SetUp() override
    {
        oml_cur = omlopen(OML_PLAIN);
        omlset_fd(oml_cur, -1);
        omlset_user(oml_cur, collect, nullptr);
        s_outlev = 0;
        stopflag = 0;
    }
    void TearDown() override
    {
        omlclose(oml_cur);
        oml_cur = was;
        s_outlev = 0;
    }
    std::vector<std::string> read(const std::string &text)
    {
        char path[] = "/tmp/ovtestXXXXXX";
        int fd = mkstemp(path);
        EXPECT_EQ(write(fd, text.data(), text.size()), ssize_t(text.size()));
        close(fd);
        int32_t rc;
        dofilep = dofopen(path, &rc);
        EXPECT_EQ(rc, 0);
        unlink(path);
        shown.clear();
        doeof = false;
        delimit = 0;
        dofile_rc = 0;
        std::vector<std::string> out;
        while (!readcons(conslen, true, false, false) && !doeof)
            out.push_back(console);
        omlflush(oml_cur);
        dofclos(dofilep);
        dofilep = nullptr;
        doeof = false;
        return out;
    }
};
using lines = std::vector<std::string>;

TEST_F(filereader, comments)
{
    EXPECT_EQ(read("a /* x /* y */ z */ b\n"), lines{"a  b"});
    EXPECT_EQ(read("a /* x\n y */ b\nc\n"), (lines{"a  b", "c"}));
    EXPECT_EQ(read("a // b\nc//d\n//e\nf /// g\nh\n"), (lines{"a", "c//d", "", "f h"}));
    EXPECT_EQ(read("d \"/* no // */\" x\n"), lines{"d \"/* no // */\" x"});
    EXPECT_EQ(read("d `\"a \"// b\" /* \"' y // z\n"), lines{"d `\"a \"// b\" /* \"' y"});
    EXPECT_EQ(read("* all ///\nswallowed\nnext\n"), (lines{"* all swallowed", "next"}));
    EXPECT_EQ(read("x */ y\n"), lines{"x */ y"});
    EXPECT_EQ(read("a /* never closed\nb\n"), lines{"a"});
    EXPECT_EQ(read("/*/ still */b\n"), lines{"b"});
    EXPECT_EQ(read("a /\nb / c\n"), (lines{"a /", "b / c"}));
    // An open quote ends with its line.
    EXPECT_EQ(read("d \"a // b\nc // d\n"), (lines{"d \"a // b", "c"}));
}

TEST_F(filereader, line_ends_and_odd_characters)
{
    EXPECT_EQ(read("a\r\nb\rc\nd"), (lines{"a", "b", "c", "d"}));
    EXPECT_EQ(read("a\r"), lines{"a"});
    EXPECT_EQ(read("a\r\r\nb"), (lines{"a", "", "b"}));
    EXPECT_EQ(read(std::string("a\x01\0b\xff\x1f" "c\n", 8)), lines{"abc"});
    EXPECT_EQ(read("\tx\n"), lines{"        x"});
    EXPECT_EQ(read("abc\tx\n1234567\ty\n12345678\tz\n"),
              (lines{"abc     x", "1234567 y", "12345678        z"}));
    // What a comment shows counts for the column, though it is not kept.
    EXPECT_EQ(read("/*a*/\tx\n"), lines{"   x"});
    EXPECT_EQ(read("a\t// b\n"), lines{"a"});
    EXPECT_EQ(read(""), lines{});
    EXPECT_EQ(read("   "), lines{});
    EXPECT_EQ(read("a   \n"), lines{"a"});
}

TEST_F(filereader, semicolons)
{
    EXPECT_EQ(read("#delimit ;\na\nb; c;\n\"d;e\n\"; f /* ; */ g // ;\n;\n#delimit cr\nh\ni\n"),
              (lines{"a b", " c", "\"d;e \"", " f  g", "h", "i"}));
    EXPECT_EQ(read("#d ;\na /// b\nc;\n#delimit nonsense\nd;e"), (lines{"a  c", "d", "e"}));
    EXPECT_EQ(read("#delimit ;\na\n"), lines{"a"});
}

TEST_F(filereader, echo)
{
    read("a /* x\n y */ b\nc /// d\ne\n");
    EXPECT_EQ(shown, ". a /* x\n>  y */ b\n. c /// d\n> e\n. ");
    read("\ta // b\n* c");
    EXPECT_EQ(shown, ".         a // b\n. * c\n. ");
    read("#delimit ;\nx\n{y}; z;\n");
    EXPECT_EQ(shown, ". #delimit ;\ndelimiter now ;\n. x\n> {y};\n.  z;\n. ");
    read("#nonsense\n");
    EXPECT_EQ(shown, ". #nonsense\nUnknown #command\n. ");
    s_outlev = 3;
    read("a\n#bad\n");
    EXPECT_EQ(shown, "Unknown #command\n");
}

// Every construct at every place around the end of the 512-byte buffer.
TEST_F(filereader, buffer_ends_anywhere)
{
    const std::string piece = "a /* c\r\nd */ b ///\r\n e\rf \"//\" // g\n";
    const lines want = {"a  b  e", "f \"//\""};
    for (int n = 470; n < 530; n++) {
        std::string pad = "* " + std::string(size_t(n), 'p');
        auto got = read(pad + "\n" + piece);
        ASSERT_EQ(got.size(), 3u) << n;
        EXPECT_EQ(got[0], pad);
        EXPECT_EQ(lines(got.begin() + 1, got.end()), want) << n;
    }
}

TEST_F(filereader, length)
{
    std::string full(size_t(conslen - 1), 'x');
    EXPECT_EQ(read(full + "\ny\n"), (lines{full, "y"}));
    EXPECT_EQ(dofile_rc, 0);
    EXPECT_EQ(read("a\n" + full + "x\ny\n"), lines{"a"});
    EXPECT_EQ(dofile_rc, RC_LONGCMD);
    EXPECT_NE(shown.find("input too long\n"), std::string::npos);
    std::string joined;
    for (int i = 0; i < 200; i++)
        joined += std::string(60, 'y') + " ///\n";
    EXPECT_EQ(read(joined), lines{});
}

TEST(start, names_of_batch_logs)
{
    const char *const rows[][2] = {
        {"do foo ", "foo.log"},       {"do foo.do ", "foo.log"},
        {"run /a/b.c/x.y.z ", "x.log"}, {"do \"my file.do\" a ", "my file.log"},
        {"do ", "ovata.log"},         {"display 1 ", "ovata.log"},
        {"doit x ", "ovata.log"},     {"include foo ", "ovata.log"},
        {"do .do ", "ovata.log"},
    };
    for (auto &r : rows)
        EXPECT_EQ(batch_logname(r[0], false), r[1]) << r[0];
    EXPECT_EQ(batch_logname("do a/foo.do ", true), "foo.omcl");
    EXPECT_EQ(batch_logname("x ", true), "ovata.omcl");
    EXPECT_EQ(batch_logname("do " + std::string(498, 'n') + " ", false),
              std::string(498, 'n') + ".log");
    EXPECT_EQ(batch_logname("do " + std::string(499, 'n') + " ", false), "ovata.log");
}

TEST(start, file_name_picks_the_command)
{
    auto command = [](std::vector<std::string> args) {
        std::vector<char *> argv;
        for (auto &a : args)
            argv.push_back(a.data());
        return start_command(int32_t(argv.size()), argv.data());
    };
    EXPECT_EQ(command({"a.DTA", "b.do"}), "use a.DTA b.do ");
    EXPECT_EQ(command({"a.do", "1", "2"}), "do a.do 1 2 ");
    EXPECT_EQ(command({"\"x y.do\""}), "do \"x y.do\" ");
    EXPECT_EQ(command({"x y.do"}), "do \"x y.do\" ");
    EXPECT_EQ(command({"h.ovhlp"}), "view h.ovhlp ");
    EXPECT_EQ(command({"h.omcl"}), "view h.omcl ");
    EXPECT_EQ(command({"g.gph"}), "graph use g.gph ");
    EXPECT_EQ(command({"m.ovsem"}), "sembuilder m.ovsem ");
    EXPECT_EQ(command({"do", "a.do"}), "do a.do ");
    EXPECT_EQ(command({}), "");
}

TEST(start, break_waits_under_nobreak)
{
    stopflag = 0;
    altstopflag = 0;
    EXPECT_EQ(setbreak(false), 1);
    state_break();
    EXPECT_EQ(stopflag, 0);
    EXPECT_EQ(altstopflag, 1);
    EXPECT_EQ(setbreak(true), 0);
    EXPECT_EQ(stopflag, 1);
    EXPECT_EQ(altstopflag, 0);
    setbreak(false);
    EXPECT_EQ(stopflag, 0);
    EXPECT_EQ(altstopflag, 1);
    setbreak(true);
    stopflag = 0;
}

}  // namespace
