// Help: every word of the language has a page, and every page is sound.
#include "../session.h"
#include "commands/helptopics.h"
#include "core/settings.h"
#include "expr/expr.h"
#include "output/oml_int.h"
#include <dirent.h>
#include <gtest/gtest.h>
#include <set>

namespace
{
std::string whole(const std::string &path)
{
    std::string text;
    FILE *f = fopen(path.c_str(), "r");
    for (int c; f && (c = fgetc(f)) != EOF;)
        text += char(c);
    if (f)
        fclose(f);
    return text;
}

std::vector<std::string> names_in(const std::string &dir, const std::string &ending)
{
    std::vector<std::string> out;
    if (DIR *d = opendir(dir.c_str())) {
        while (const dirent *e = readdir(d)) {
            std::string name = e->d_name;
            if (name.size() > ending.size() && name.ends_with(ending))
                out.push_back(name.substr(0, name.size() - ending.size()));
        }
        closedir(d);
    }
    return out;
}

const cmdrow *row_named(const char *word)
{
    for (int32_t i = 0; i < ncmdtable; i++)
        if (!strcmp(cmdtable[i].word, word))
            return &cmdtable[i];
    return nullptr;
}
const std::string pages = std::string(OVATA_SOURCE_DIR) + "/help/";
} // namespace

// Commands, functions and aliases; the row nobody can type asks the same.
TEST(help, every_word_has_a_page)
{
    session();
    session_output.clear();
    EXPECT_EQ(row_named("HELPCHK")->handler(0), 0);
    omlflush(oml_cur);
    EXPECT_EQ(session_output, "");
    helppage page;
    for (char c = '_'; c <= 'z'; c++)
        for (const std::string &name :
             names_in(std::string(OVATA_SOURCE_DIR) + "/ado/base/" + c, ".ado"))
            if (name.find('_') == name.npos) {
                EXPECT_TRUE(help_find(name, &page)) << name;
            }
    std::string about = whole(pages + "set.ovhlp");
    for (int32_t i = 0; i < nsettings; i++) {
        EXPECT_NE(about.find(settings[i].name), about.npos) << settings[i].name;
        EXPECT_TRUE(help_find(settings[i].name, &page)) << settings[i].name;
    }
    EXPECT_TRUE(help_find("g", &page) && page.name == "generate");
    EXPECT_TRUE(help_find("Ftail(2, 3, x)", &page) && page.name == "probability_functions");
    EXPECT_TRUE(help_find("date  formats", &page) && page.name == "date_formats");
    EXPECT_TRUE(help_find("merge 1:1", &page) && page.name == "merge");
    EXPECT_TRUE(help_find("MERGE", &page) && page.name == "merge");
    EXPECT_FALSE(help_find("nosuchword", &page));
    EXPECT_FALSE(help_find("../README", &page));
}

// Tags are rows of the table, links lead somewhere, braces match, and an alias is no page.
TEST(help, pages_are_sound)
{
    session();
    std::vector<std::string> all = names_in(pages, ".ovhlp");
    ASSERT_GT(all.size(), 100u);
    helppage page;
    for (const std::string &name : all) {
        std::string text = whole(pages + name + ".ovhlp");
        EXPECT_EQ(text.substr(0, 7), "{omcl}\n") << name;
        EXPECT_EQ(text.find("{bf:" + name + "} {hline 2} "), 7u) << name;
        for (size_t at = 7; (at = text.find('{', at)) != text.npos;) {
            size_t end = text.find_first_of(" :}", ++at);
            std::string tag = text.substr(at, end - at);
            if (tag[0] == '&')
                tag = "&";
            EXPECT_TRUE(oml_tag(tag.data(), tag.size())) << name << ": {" << tag << "}";
            if (tag != "help")
                continue;
            end = text.find_first_of(":}", at);
            std::string topic = text.substr(at + 5, end - at - 5);
            EXPECT_TRUE(topic[0] == 'r' && topic[1] == '(' ? true : help_find(topic, &page))
                << name << ": help " << topic;
        }
        oml *o = omlopen(OML_PLAIN);
        std::string shown;
        omlset_user(o, session_sink, nullptr);
        session_output.clear();
        omlsend(o, text.c_str() + 7);
        EXPECT_EQ(o->nframe, 0) << name;
        omlclose(o);
        int32_t open = 0;
        for (size_t i = 0; i < text.size(); i++) {
            open += text[i] == '{';
            open -= text[i] == '}';
            if (text[i] != '\n')
                continue;
            EXPECT_EQ(open, 0) << name << ": a tag is open at the end of a line";
            open = 0;
        }
    }
    std::string rows = whole(pages + "aliases"), last;
    for (size_t at = rows.find("\n") + 1; at < rows.size();) {
        size_t end = rows.find('\n', at), blank = rows.find(' ', at);
        std::string word = rows.substr(at, blank - at);
        EXPECT_LT(last, word);
        EXPECT_TRUE(access((pages + word + ".ovhlp").c_str(), F_OK)) << word << " is a page";
        EXPECT_EQ(
            access((pages + rows.substr(blank + 1, end - blank - 1) + ".ovhlp").c_str(), F_OK), 0)
            << word;
        last = word;
        at = end + 1;
    }
}

TEST(help, answers_and_refusals)
{
    EXPECT_EQ(run("help nosuchword"), 111);
    EXPECT_EQ(session_output.find("help for nosuchword not found"), 0u);
    EXPECT_EQ(session_output.find("did you mean"), session_output.npos); // nobody is there
    EXPECT_EQ(run("help xmluse"), 0);
    EXPECT_EQ(run("help r(198)"), 0);
    EXPECT_NE(session_output.find("invalid syntax"), session_output.npos);
    EXPECT_EQ(run("search r(601)"), 0);
    EXPECT_NE(session_output.find("No file of that name"), session_output.npos) << session_output;
    EXPECT_EQ(run("search MERGE"), 0);
    EXPECT_EQ(session_output.find("  merge "), 0u) << session_output;
    EXPECT_EQ(run("search"), 198);
    EXPECT_EQ(run("search zzzzzz"), 0);
    EXPECT_EQ(run("_findhlpalias strlen()"), 0);
    EXPECT_EQ(run("display r(page)"), 0);
    EXPECT_EQ(session_output, "string_functions\n");
    EXPECT_EQ(help_nearest("genrate", 3).at(0), "generate");
    EXPECT_EQ(help_nearest("stlren", 3).at(0), "strlen()");
}

// The nearest names are for who sits at the keyboard; a log does not hold them.
TEST(help, names_are_offered_on_the_screen_only)
{
    ASSERT_EQ(run("log using offered.log"), 0);
    nokbrd = false;
    EXPECT_EQ(run("help genrate"), 111);
    EXPECT_NE(session_output.find("(did you mean generate?)\n"), std::string::npos)
        << session_output;
    EXPECT_EQ(run("capture help genrate"), 0);
    EXPECT_EQ(session_output, "");
    nokbrd = true;
    ASSERT_EQ(run("log close"), 0);
    std::string log = whole("offered.log");
    EXPECT_NE(log.find("help for genrate not found"), log.npos);
    EXPECT_EQ(log.find("did you mean"), log.npos);
}
