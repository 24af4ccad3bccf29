// Dates and times, element by element, over the routines the expressions use (output/dates.h).
#include "mosa/bi_map.h"
#include "mosa/bihandlers.h"
#include "output/dates.h"

// Of numbers; a missing or impossible argument gives missing.
#define OF(name, expr)                                                                             \
    void bi##name(int32_t argc)                                                                    \
    {                                                                                              \
        bi_mapreal(argc, #name "()", [](const double *x) -> double { return expr; });              \
    }
// Days
OF(month, dt_month(x[0]))
OF(day, dt_day(x[0]))
OF(year, dt_year(x[0]))
OF(dow, dt_dow(x[0]))
OF(doy, dt_doy(x[0]))
OF(week, dt_week(x[0]))
OF(quarter, dt_quarter(x[0]))
OF(halfyear, dt_halfyear(x[0]))
OF(mdy, dt_mdy(x[0], x[1], x[2]))
// Days to longer units and back
OF(yofd, dt_year(x[0]))
OF(hofd, dt_fromday(x[0], 'h'))
OF(qofd, dt_fromday(x[0], 'q'))
OF(mofd, dt_fromday(x[0], 'm'))
OF(wofd, dt_fromday(x[0], 'w'))
OF(dofy, dt_today(x[0], 'y'))
OF(dofh, dt_today(x[0], 'h'))
OF(dofq, dt_today(x[0], 'q'))
OF(dofm, dt_today(x[0], 'm'))
OF(dofw, dt_today(x[0], 'w'))
OF(dofd, dt_today(x[0], 'd'))
OF(yw, dt_yw(x[0], x[1]))
OF(ym, dt_ym(x[0], x[1]))
OF(yq, dt_yq(x[0], x[1]))
OF(yh, dt_yh(x[0], x[1]))
// Times of day
OF(cofC, dt_cofC(x[0]))
OF(Cofc, dt_Cofc(x[0]))
OF(hh, dt_hh(x[0]))
OF(mm, dt_mm(x[0]))
OF(ss, dt_ss(x[0]))
OF(hhC, dt_hhC(x[0]))
OF(mmC, dt_mmC(x[0]))
OF(ssC, dt_ssC(x[0]))
OF(dofc, dt_dofc(x[0]))
OF(dofC, dt_dofC(x[0]))
OF(cofd, dt_dhms(x[0], 0, 0, 0))
OF(Cofd, dt_Cdhms(x[0], 0, 0, 0))
OF(hms, dt_hms(x[0], x[1], x[2]))
OF(Chms, dt_Chms(x[0], x[1], x[2]))
OF(dhms, dt_dhms(x[0], x[1], x[2], x[3]))
OF(Cdhms, dt_Cdhms(x[0], x[1], x[2], x[3]))
OF(mdyhms, dt_mdyhms(x[0], x[1], x[2], x[3], x[4], x[5]))
OF(Cmdyhms, dt_Cmdyhms(x[0], x[1], x[2], x[3], x[4], x[5]))
// Spans
OF(hours, dt_hours(x[0]))
OF(minutes, dt_minutes(x[0]))
OF(seconds, dt_seconds(x[0]))
OF(msofhours, dt_msofhours(x[0]))
OF(msofminutes, dt_msofminutes(x[0]))
OF(msofseconds, dt_msofseconds(x[0]))
#undef OF

// ovatadatepack(year, month, day [, hour, minute, second [, millisecond]]): days, or
// milliseconds when there is a time of day.
void biovatadatepack(int32_t argc)
{
    auto days = [](const double *x) { return dt_mdy(x[1], x[2], x[0]); };
    auto time = [](const double *x) { return dt_mdyhms(x[1], x[2], x[0], x[3], x[4], x[5]); };
    auto milli = [](const double *x) {
        return dt_mdyhms(x[1], x[2], x[0], x[3], x[4], x[5] + x[6] / 1000);
    };
    if (argc == 4 || argc == 5) {
        m_xeqerrid = "ovatadatepack()";
        m_xrc = 3001;
    } else if (argc == 3)
        bi_mapreal(argc, "ovatadatepack()", days);
    else if (argc == 6)
        bi_mapreal(argc, "ovatadatepack()", time);
    else
        bi_mapreal(argc, "ovatadatepack()", milli);
}

// ---- texts

namespace
{

constexpr size_t longest = 1024; // a longer text is no date

// The element as a C text; false when it cannot be one.
bool c_text(const matobj *m, int32_t i, int32_t j, char *text)
{
    char view[bi_textroom];
    std::string_view s = bi_textc(m, i, j, view);
    if (s.size() >= longest || s.find('\0') != s.npos)
        return false;
    memcpy(text, s.data(), s.size());
    text[s.size()] = '\0';
    return true;
}

// (text, mask [, last year of two digits]); kind as the readers of output/dates.h have it, with
// o for the older masks.
void read_text(int32_t argc, const char *id, char kind)
{
    m_xeqerrid = id;
    const matobj *s = bi_arg(argc, 1), *mask = bi_arg(argc, 2),
                 *top = argc > 2 ? bi_arg(argc, 3) : nullptr;
    int32_t rows, cols;
    if (!bi_isstring(s) || !bi_isstring(mask) || (top && !bi_isreal(top)) ||
        !bi_conform(argc, 1, argc, &rows, &cols))
        return;
    matobj *r = m_mktmat(MO_REAL, rows, cols);
    if (!r)
        return;
    char t[longest], k[longest];
    for (int64_t n = 0, all = mo_count(r); n < all; n++) {
        if (bi_stop(n))
            return;
        auto i = int32_t(n / cols), j = int32_t(n % cols);
        double pivot = top ? bi_elc(top, i, j) : misval, z = misval;
        if (c_text(s, i, j, t) && c_text(mask, i, j, k))
            z = kind == 'o'           ? ovdate(t, k, pivot)
                : strchr("dcC", kind) ? ovclock(t, k, pivot, kind)
                                      : ovyhqmwd(t, k, pivot, kind);
        mo_re(r)[n] = bi_inrange(z);
    }
    m_result(argc, r);
}

} // namespace

void bidate(int32_t argc)
{
    read_text(argc, "date()", 'd');
}
// As it was below version 10.
void bidate_old(int32_t argc)
{
    read_text(argc, "date()", 'o');
}
void biclock(int32_t argc)
{
    read_text(argc, "clock()", 'c');
}
void biClock(int32_t argc)
{
    read_text(argc, "Clock()", 'C');
}
void biyearly(int32_t argc)
{
    read_text(argc, "yearly()", 'y');
}
void bihalfyearly(int32_t argc)
{
    read_text(argc, "halfyearly()", 'h');
}
void biquarterly(int32_t argc)
{
    read_text(argc, "quarterly()", 'q');
}
void bimonthly(int32_t argc)
{
    read_text(argc, "monthly()", 'm');
}
void biweekly(int32_t argc)
{
    read_text(argc, "weekly()", 'w');
}
