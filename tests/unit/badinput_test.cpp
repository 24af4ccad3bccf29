// Every command of the vocabulary under wrong words, wrong types and empty data: a code and a
// message, never a broken dataset, and nothing left behind.
#include "../session.h"
#include "core/rc.h"
#include <gtest/gtest.h>
#include <set>
#include <vector>

namespace {

// Commands that leave the process, wait, or talk to another program.
bool unsafe(const std::string &word)
{
    static const std::set<std::string> words{"exit", "shell", "xshell", "winexec", "sleep", "cd",
                                             "chdir", "view", "ls", "dir", "more", "log",
                                             "cmdlog", "beep", "program", "input", "while",
                                             "if", "else", "mkdir", "rmdir", "version"};
    return words.count(word) != 0;
}

std::vector<std::string> built_words()
{
    std::vector<std::string> words;
    constexpr int V_MAX = 0;  // rows for every version
#define CMD(word, len, handler, arg, below, from, flags)                                          \
    if (std::string(#handler) != "notbuilt" && (below) == V_MAX && !unsafe(word))                                     \
        words.push_back(word);
#include "interp/commands.def"
#undef CMD
    return words;
}

const char *const arguments[] = {
    "", "x", "nosuch", "x, nosuchoption", "x if", "x if s", "x if x = ", "x in 0", "x in 5/2",
    "x in 1/999999", "x [fweight=s]", "x [nosuch=x]", "s", "x s b", "using nosuchfile", "x using nosuchfile",
    ",", ", ,", "x, generate(", "x, generate()", "x, generate(x)", "x, generate(1bad)", "(", ")", "x (",
    "\"", "`\"open", "=", "x = ", "x = \"text\"", "s = 5", "x = s", "x[", "x[1]", "1", "-1", "1e400",
    "_all", "x-b", "b-x", "x*", "*", "?", "~", "#", "x == 3", "x = y = 3", "define", "list nosuch",
    "drop", "drop nosuch", "define L", "define L 1", "A = (1,2\\3)", "A = B", "A = (1,2)*(1,2)",
    "list A", "x 1", "x %9.0q", "x %s", "local", "local a b", "x: y", ": x", "define L 1.5 \"a\"",
    "999999999999999999999", ".", ".a", "x, by(nosuch)", "x, by(s) by(s)", "x\\y", "}",
};

void with_data(int32_t obs)
{
    ASSERT_EQ(run("drop _all"), 0);
    ASSERT_EQ(run("label drop _all"), 0);
    if (obs) {
        ASSERT_EQ(run("set obs " + std::to_string(obs)), 0);
        for (const char *line :
             {"generate x = _n", "generate str4 s = \"t\" + string(_n)", "generate byte b = mod(_n,2)"})
            ASSERT_EQ(run(line), 0) << line;
    }
}

void sweep(int32_t obs)
{
    for (const std::string &word : built_words())
        for (const char *arg : arguments) {
            std::string line = word + " " + arg;
            SCOPED_TRACE(line);
            if (_Nobs != obs || (obs && _Kvar != 3))
                with_data(obs);
            int32_t rc = run(line);
            ASSERT_EQ(dsa_check(sysdsa), 0);
            ASSERT_TRUE(rc >= 0 || word == "error") << rc;
            // A prefix hands the rest on as a command: unknown words and silence are its business.
            static const std::set<std::string> prefixes{"varabbrev", "novarabbrev", "version", "by",
                                                        "bysort", "quietly", "noisily", "capture",
                                                        "nobreak", "break", "error", "unabcmd",
                                                        // stands where no word reaches it
                                                        "HELPCHK"};
            if (prefixes.count(word))
                continue;
            if (rc) {
                EXPECT_FALSE(session_output.empty()) << rc;
            }
            EXPECT_NE(rc, 199) << "a word of the vocabulary is known";
            EXPECT_EQ(session_output.find("SYSTEM ERROR"), std::string::npos) << session_output;
            // What the line left standing must not reach the next.
            run("postclose nosuch");
            stopflag = 0;
        }
}

}  // namespace

TEST(BadInput, NoDataAtAll) { sweep(0); }
TEST(BadInput, OneObservation) { sweep(1); }
TEST(BadInput, SomeData) { sweep(7); }
