// The parts of the terminal that need none: what Tab offers, the history, text of any bytes.
#include "../session.h"
#include "terminal/complete.h"
#include "terminal/history.h"
#include "terminal/lineedit.h"
#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/stat.h>
#include <sys/wait.h>

static std::string offered(const std::string &line)
{
    std::vector<candidate> words;
    size_t from = complete(line, &words);
    std::string out = line.substr(0, from) + ">";
    for (const candidate &w : words) {
        out += " " + w.text;
        if (w.after && w.after != ' ')
            out += w.after;
    }
    return out;
}

TEST(Complete, KnowsWhereItStands)
{
    run("set obs 2");
    run("generate price = 1");
    run("generate pricey = 2");
    run("generate weight = 3");
    run("global there x");
    mkdir("dir", 0777);
    std::ofstream("dir/a file.dta") << "x";
    std::ofstream("dir/other.dta") << "x";
    const struct {
        const char *line, *want;
    } rows[] = {
        {"summ", "> summarize"},
        {"quietly: noisily summ", "quietly: noisily > summarize"},
        {"by weight: summ", "by weight: > summarize"},
        {"by wei", "by > weight"},
        {"bootstrap r(mean), reps(5): summ", "bootstrap r(mean), reps(5): > summarize"},
        {"list pri", "list > price pricey"},
        {"list if price>wei", "list if price>> weight"},
        {"regress price, clu", "regress price, > cluster("},
        {"regress price, vce(cluster wei", "regress price, vce(cluster > weight"},
        {"bootstrap, str", "bootstrap, > strata("},
        {"use dir/", "use > \"dir/a file.dta\" dir/other.dta"},
        {"use \"dir/a", "use \"> dir/a file.dta\""},
        {"insheet using dir/o", "insheet using > dir/other.dta"},
        {"merge 1:1 price using dir/o", "merge 1:1 price using > dir/other.dta"},
        {"cd di", "cd > dir/"},
        {"display \"$the", "display \"$> there"},
        {"display ${the", "display ${> there}"},
        {"set varabb", "set > varabbrev"},
        {"display strle", "display > strlen("},
        {"nosuch zzz", "nosuch >"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(offered(row.line), row.want) << row.line;
    // Lines of any kind are looked at without harm.
    for (const char *line : {"`", "$", "\"", "!", ":", ",", "by :", "(", "use \"~", "${", "x,(\"`"})
        offered(line);
}

TEST(Complete, ReadsOptionsOfProgramsAndPages)
{
    auto names = [](const std::vector<candidate> &words) {
        std::string out;
        for (const candidate &w : words)
            out += w.text + w.after;
        return out;
    };
    std::vector<candidate> words;
    options_of_syntax("varlist [if] [, ONE TWo(string asis) three(numlist min=1 max=3) NOFour *]",
                      &words);
    EXPECT_EQ(names(words), "one two(three(nofour ");
    words.clear();
    options_of_page("{synopt:{opt det:ail}}x\n{synopt:{opth gen:erate(newvar)}}y\n"
                    "{synopt:{cmd:level(}{it:#}{cmd:)}}z\n{cmd:use} [{cmd:, clear}]\n",
                    &words);
    EXPECT_EQ(names(words), "detail generate(level(clear ");
}

TEST(Lineedit, TextOfAnyBytesComesBackWhole)
{
    std::string all = "plain \xc3\xbc\xe2\x82\xac\xf0\x9f\x99\x82 ", again;
    for (int i = 1; i < 256; i++)
        all += char(i);
    all += "\xc3"; // cut off
    all += "\xe2\x82";
    all += "\xed\xa0\x80\xc0\xaf"; // no characters
    std::wstring wide = le_wide(all);
    EXPECT_EQ(le_bytes(wide.data(), wide.size()), all);
    EXPECT_EQ(le_wide("\xc3\xbc\xe2\x82\xac"), L"\u00fc\u20ac");
}

static std::string file_text(const char *name)
{
    std::stringstream s;
    s << std::ifstream(name).rdbuf();
    return s.str();
}

TEST(History, KeepsWholeCommandsOnceInARow)
{
    session();
    hist_open("h/one");
    hist_line("display 1", true);
    hist_line("display 1", true);
    hist_line("   ", true);
    hist_line("program x", true);
    hist_line("display \"a\\n\"", false);
    hist_line("end", false);
    hist_close();
    EXPECT_EQ(*hist_back(0), "program x\ndisplay \"a\\n\"\nend");
    EXPECT_EQ(*hist_back(1), "display 1");
    EXPECT_EQ(hist_back(2), nullptr);
    hist_open("h/one");
    EXPECT_EQ(*hist_back(0), "program x\ndisplay \"a\\n\"\nend");
    EXPECT_EQ(hist_back(2), nullptr);
    struct stat st;
    ASSERT_EQ(stat("h/one", &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);
}

TEST(History, SessionsSideBySideLoseNothingWhileItIsShortened)
{
    session();
    // Long enough that both shorten it at their start.
    std::ofstream out("many");
    for (int i = 0; i < 5000; i++)
        out << "old " << i << "\n";
    out.close();
    constexpr int each = 200;
    for (int k = 0; k < 3; k++)
        if (fork() == 0) {
            hist_open("many");
            for (int i = 0; i < each; i++)
                hist_line(("s" + std::to_string(k) + " " + std::to_string(i)).c_str(), true);
            hist_close();
            _exit(0);
        }
    for (int k = 0, status; k < 3; k++)
        wait(&status);
    std::string text = file_text("many");
    for (int k = 0; k < 3; k++)
        for (int i = 0; i < each; i++)
            EXPECT_NE(text.find("s" + std::to_string(k) + " " + std::to_string(i) + "\n"),
                      text.npos);
    EXPECT_LE(std::count(text.begin(), text.end(), '\n'), int64_t(hist_limit) + 3 * each);
    EXPECT_NE(text.find("old 4999\n"), text.npos);
    // A place that cannot be written costs nothing but the file.
    hist_open("/proc/none/history");
    hist_line("display 3", true);
    hist_close();
    EXPECT_EQ(*hist_back(0), "display 3");
}
