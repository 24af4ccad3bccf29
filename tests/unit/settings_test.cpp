#include "core/files.h"
#include "core/settings.h"
#include "expr/expr.h"
#include "output/oml.h"
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <set>
#include <string>

// Each row: reached by its least abbreviation, distinct, and its own text is good for it.
TEST(settings, every_row)
{
    std::set<std::string> names;
    char buf[500], range[500];
    for (int32_t i = 0; i < nsettings; i++) {
        const setting *s = &settings[i];
        EXPECT_TRUE(names.insert(s->name).second) << s->name;
        EXPECT_EQ(setting_exact(s->name), s);
        EXPECT_EQ(setting_find(std::string(s->name, s->min).c_str()), s) << s->name;
        if (s->min > 1) {
            EXPECT_NE(setting_find(std::string(s->name, s->min - 1).c_str()), s) << s->name;
        }
        if (s->kind == SK_ACT) {
            EXPECT_EQ(s->at, nullptr);
            EXPECT_NE(s->hook, SH_NONE);
            continue;
        }
        std::string was = setting_text(s, buf);
        EXPECT_EQ(setting_put(s, was.c_str(), true), 0) << s->name << " " << was;
        EXPECT_EQ(was, setting_text(s, buf)) << s->name;
        EXPECT_NE(*setting_range(s, range), 0) << s->name;
        if (s->kind != SK_TEXT) {
            EXPECT_EQ(setting_put(s, "nonsense", true), 1) << s->name;
            EXPECT_EQ(was, setting_text(s, buf)) << s->name;
        }
        if (s->kind != SK_INT)
            continue;
        int32_t low = int32_t(s->low), high = int32_t(s->high);
        EXPECT_EQ(setting_put(s, std::to_string(low - 1).c_str(), true), 2) << s->name;
        EXPECT_EQ(setting_put(s, std::to_string(high + 1).c_str(), true), 2) << s->name;
        EXPECT_EQ(setting_put(s, std::to_string(high).c_str(), true), 0) << s->name;
        EXPECT_EQ(std::to_string(high), setting_text(s, buf));
        EXPECT_EQ(setting_put(s, was.c_str(), true), 0) << s->name;
    }
}

TEST(settings, kinds)
{
    char buf[500];
    const setting *level = setting_exact("level"), *type = setting_exact("type");
    EXPECT_EQ(setting_put(level, "99.99", true), 0);
    EXPECT_EQ(set_level, 99.99);
    EXPECT_EQ(setting_put(level, "9.9", true), 2);
    EXPECT_EQ(setting_put(level, ".", true), 2);
    EXPECT_EQ(setting_put(level, "95", true), 0);
    EXPECT_EQ(setting_put(type, "doub", true), 1);
    EXPECT_EQ(setting_put(type, "byte|int", true), 1);
    EXPECT_STREQ(setting_range(type, buf), "byte, int, long, float or double");
    EXPECT_STREQ(setting_range(setting_exact("lstretch"), buf), "on or off");
    EXPECT_EQ(setting_find("foo"), nullptr);
    EXPECT_EQ(setting_find(""), nullptr);
}

TEST(settings, preferences_survive)
{
    char dir[] = "/tmp/prefsXXXXXX";
    ASSERT_NE(mkdtemp(dir), nullptr);
    setenv("XDG_CONFIG_HOME", dir, 1);
    open_prefs();  // nothing there
    EXPECT_EQ(sprefs_get("type"), nullptr);
    sprefs_put("type", "int");
    sprefs_put("type", "double");
    sprefs_put("scheme", "one two");
    sprefs_put("linesize", "100");  // not a lasting setting
    write_prefs();
    close_prefs();
    std::string file = std::string(dir) + "/ovata/preferences";
    int32_t fd = ov_open(file.c_str(), OV_APPEND);
    ASSERT_GE(fd, 0);
    const char bad[] = "nosuch 5\nlevel nonsense\nnovalue\n\n more on";
    EXPECT_EQ(ovata_write(fd, bad, sizeof bad - 1), int32_t(sizeof bad - 1));
    ov_close(fd);
    open_prefs();
    sprefs_load();
    EXPECT_STREQ(set_type, "double");
    EXPECT_STREQ(set_scheme, "one two");
    EXPECT_EQ(set_linesize, 79);
    EXPECT_EQ(set_level, 95);
    setting_put(setting_exact("type"), "float", true);
    setting_put(setting_exact("scheme"), "standard", true);
    close_prefs();
    system(("rm -r " + std::string(dir)).c_str());
    unsetenv("XDG_CONFIG_HOME");
}

// Every name of c() answers, with the kind the row tells, and none is listed twice.
TEST(creturn, every_name)
{
    EXPECT_EQ(ncrows, 150);
    std::set<std::string> names;
    for (int32_t i = 0; i < ncrows; i++) {
        char text[500] = "?", s[500] = "?";
        double z = -77;
        EXPECT_TRUE(names.insert(crows[i].name).second) << crows[i].name;
        int32_t kind = cfcn(crows[i].name, s, &z);
        EXPECT_TRUE(kind == 1 || kind == 2) << crows[i].name;
        EXPECT_EQ(kind == 1, z != -77) << crows[i].name;
        EXPECT_EQ(cfcnstr(crows[i].name, text), kind);
        EXPECT_STRNE(text, "?");
    }
    char s[500];
    double z;
    EXPECT_EQ(cfcn("nosuch", s, &z), 0);
    EXPECT_EQ(cfcn("", s, &z), 0);
    EXPECT_EQ(cfcnstr("ALPHA", s), 2);
    EXPECT_STREQ(s, "A B C D E F G H I J K L M N O P Q R S T U V W X Y Z");
    EXPECT_EQ(cfcnstr("version", s), 1);
    EXPECT_STREQ(s, "12.1");
}
