// Any text behind a command word, and any text as a number, a list, a format or a date. The
// first line chooses which, the rest is the text. The storage area must stay whole.
#include "core/numtext.h"
#include "core/regexp.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/variables.h"
#include "expr/generate.h"
#include "expr/parse.h"
#include "expr/strfun.h"
#include "interp/dm.h"
#include "output/dates.h"
#include "output/fmt.h"
#include "output/print.h"
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

int32_t gen(int32_t);
int32_t replace(int32_t);
int32_t drop(int32_t);
int32_t renvar(int32_t);
int32_t formatcmd(int32_t);
int32_t ordercmd(int32_t);
int32_t compresscmd(int32_t);
int32_t recastcmd(int32_t);

static void make_data()
{
    drop_all();
    const uint8_t types[] = {T_BYTE, T_INT, T_FLOAT, T_DOUBLE, 8};
    const char *const names[] = {"x", "year", "price", "z", "name"};
    if (dsa_add_obs(sysdsa, 5, true))
        abort();
    for (int i = 0; i < 5; i++)
        if (addvar(types[i], names[i]) < 0)
            abort();
    for (uint32_t obs = 1; obs <= 5; obs++) {
        for (uint32_t v = 1; v <= 4; v++)
            dsa_store(obs == 3 ? misval : obs * v, sysdsa, v, obs);
        dsa_safe_sstore(sysdsa, 5, obs, "name");
    }
    _i_Kvar = _Kvar;
}

static void command(const std::string &word, const std::string &text)
{
    static const struct {
        const char *word;
        int32_t (*handler)(int32_t);
    } rows[] = {{"gen", gen},           {"replace", replace},   {"drop", drop},
                {"rename", renvar},     {"format", formatcmd},  {"order", ordercmd},
                {"compress", compresscmd}, {"recast", recastcmd}};
    for (const auto &r : rows)
        if (word == r.word) {
            make_data();
            pi_allow_reset(parinfo);
            snprintf(console, sizeof console, "%s", text.c_str());
            ti_settok(tokinfo, console);
            (void)r.handler(0);
            if (_Kvar > _i_Kvar)
                dsa_truncate_var(sysdsa, uint32_t(_i_Kvar), true);
            if (dsa_check(sysdsa))
                abort();
        }
}

// Every finder asks for the option named o.
static void options(const std::string &text)
{
    pi_allow_reset(parinfo);
    parinfo->pi_opts = PI_OK;
    snprintf(console, sizeof console, ",%s", text.c_str());
    ti_settok(tokinfo, console);
    if (ti_pi_parse(tokinfo, parinfo))
        return;
    char buf[40];
    double v[5];
    int32_t list[5];
    (void)ti_pi_findopt(tokinfo, parinfo, "o", 1, 0);
    (void)ti_pi_findopta(tokinfo, parinfo, "o", 1, 0);
    (void)ti_pi_findoptv(tokinfo, parinfo, "o", 1, v, 5, 0);
    (void)ti_pi_findargn(tokinfo, parinfo, "o", 1, buf, sizeof buf, 2);
    (void)ti_pi_findargasis(tokinfo, parinfo, "o", 1, buf, sizeof buf);
    (void)ti_pi_findvlist(tokinfo, parinfo, "o", 1, list, 5);
    (void)ti_pi_findlevellike(tokinfo, parinfo, "o", 1);
    (void)ti_pi_chkopt(tokinfo, parinfo);
}

static void texts(const std::string &word, const std::string &text)
{
    char buf[300], out[246];
    double z = 0, v[20];
    int32_t n;
    const char *t = text.c_str();
    if (word == "number" && !cnvstoz(t, &z)) {
        cnvztos(z, buf);
        double back;
        if (z < misval && (cnvstoz(buf, &back) || back != z))
            abort();
        (void)cnvstoint4(t, &n);
    }
    if (word == "numlist")
        (void)numlist_text(t, v, &n, 20);
    if (word == "format")
        for (double x : {0.0, 1.0 / 3, -1e300, 123456.789, misval, mis_of(3)}) {
            (void)fmtnum(buf, sizeof buf, x, t);
            str_string(out, x, t);
        }
    if (word == "date") {
        for (const char *mask : {"DMY", "YMDhms", "#MD20Y", "hm"})
            for (char kind : {'d', 'c', 'C'})
                (void)ovclock(t, mask, 2050, kind);
        (void)ovclock("21nov2026 3:17 pm", t, misval, 'c');
        for (char unit : {'h', 'q', 'm', 'w', 'y'})
            (void)ovyhqmwd(t, "yq", 2000, unit);
    }
    if (word == "regex") {
        (void)regx_match("some text 123", t, buf, sizeof buf);
        regx_replace("some text 123", "t(.)x", t, buf, sizeof buf);
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *p, size_t n)
{
    static bool ready;
    if (!ready) {
        dminit();
        if (sinit0_dsa() || pi_init(parinfo))
            abort();
        sysdsa->noisy = 0;
        ready = true;
    }
    s_outlev = 5;
    stopflag = 0;
    std::string all(reinterpret_cast<const char *>(p), n);
    all = all.substr(0, all.find('\0'));
    size_t end = all.find('\n');
    if (end == std::string::npos)
        return 0;
    std::string word = all.substr(0, end), text = all.substr(end + 1);
    command(word, text);
    texts(word, text);
    if (word == "options")
        options(text);
    return 0;
}
