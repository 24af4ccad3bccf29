#include "output/dates.h"
#include "core/missing.h"
#include <algorithm>
#include <cmath>

static constexpr double day_ms = 86400000, hour_ms = 3600000, minute_ms = 60000;
static constexpr int32_t year_lo = 100, year_hi = 9999;

// Days from 1 January 1960 to the first of a month, and back: the proleptic Gregorian
// calendar counted in eras of 400 years from 1 March 0 (H. Hinnant, chrono-compatible
// low-level date algorithms, 2013). The ten years to 1970 have 3653 days.
static constexpr int32_t era_days = 146097, to1960 = 719468 - 3653;

static int32_t dayof(int32_t y, int32_t m, int32_t d)
{
    y -= m <= 2;
    int32_t era = (y >= 0 ? y : y - 399) / 400, yoe = y - era * 400;
    int32_t doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1;
    int32_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * era_days + doe - to1960;
}

void dt_ymd(double day, int32_t *y, int32_t *m, int32_t *d)
{
    int32_t z = int32_t(std::floor(day)) + to1960;
    int32_t era = (z >= 0 ? z : z - (era_days - 1)) / era_days, doe = z - era * era_days;
    int32_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    int32_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100), mp = (5 * doy + 2) / 153;
    *d = doy - (153 * mp + 2) / 5 + 1;
    *m = mp < 10 ? mp + 3 : mp - 9;
    *y = yoe + era * 400 + (*m <= 2);
}

static bool leap(int32_t y)
{
    return y % 4 == 0 && (y % 100 != 0 || y % 400 == 0);
}

static int32_t monthdays(int32_t y, int32_t m)
{
    return m == 2 ? 28 + leap(y) : m == 4 || m == 6 || m == 9 || m == 11 ? 30 : 31;
}

// A part cut downward, when it lies between lo and hi.
static bool part(double z, int32_t lo, int32_t hi, int32_t *out)
{
    z = std::floor(z);
    if (!(z >= lo && z <= hi))
        return false;
    *out = int32_t(z);
    return true;
}

bool dt_inrange(double day)
{
    static const double lo = dayof(year_lo, 1, 1), hi = dayof(year_hi, 12, 31) + 1.0;
    return day >= lo && day < hi;
}

double dt_mdy(double month, double day, double year)
{
    int32_t y, m, d;
    if (!part(year, year_lo, year_hi, &y) || !part(month, 1, 12, &m) ||
        !part(day, 1, monthdays(y, m), &d))
        return misval;
    return dayof(y, m, d);
}

// ---- leap seconds

// The days at whose end a second was put in: bulletins C of the IERS, 1972 to 2016.
static constexpr struct {
    int16_t y;
    int8_t m, d;
} leapdays[] = {
    {1972, 6, 30},  {1972, 12, 31}, {1973, 12, 31}, {1974, 12, 31}, {1975, 12, 31},
    {1976, 12, 31}, {1977, 12, 31}, {1978, 12, 31}, {1979, 12, 31}, {1981, 6, 30},
    {1982, 6, 30},  {1983, 6, 30},  {1985, 6, 30},  {1987, 12, 31}, {1989, 12, 31},
    {1990, 12, 31}, {1992, 6, 30},  {1993, 6, 30},  {1994, 6, 30},  {1995, 12, 31},
    {1997, 6, 30},  {1998, 12, 31}, {2005, 12, 31}, {2008, 12, 31}, {2012, 6, 30},
    {2015, 6, 30},  {2016, 12, 31},
};
static constexpr int32_t nleap = int32_t(sizeof leapdays / sizeof *leapdays);

// The midnight behind leap second i, in milliseconds without leap seconds.
static double leapend(int32_t i)
{
    static const auto ends = [] {
        struct {
            double at[nleap];
        } t;
        for (int32_t k = 0; k < nleap; k++)
            t.at[k] = (dayof(leapdays[k].y, leapdays[k].m, leapdays[k].d) + 1.0) * day_ms;
        return t;
    }();
    return ends.at[i];
}

static bool timeok(double c)
{
    return c < misval && dt_inrange(std::floor(c / day_ms));
}

double dt_Cofc(double c)
{
    if (!timeok(c))
        return misval;
    int32_t n = 0;
    while (n < nleap && c >= leapend(n))
        n++;
    return c + 1000.0 * n;
}

// Leap seconds that are over or running at C; inside tells that one is running.
static int32_t leapsbefore(double C, bool *inside)
{
    int32_t n = 0;
    while (n < nleap && C >= leapend(n) + 1000.0 * n)
        n++;
    *inside = n > 0 && C < leapend(n - 1) + 1000.0 * n;
    return n;
}

// A running leap second shares its number with the second behind it.
double dt_cofC(double C)
{
    if (!(C < misval))
        return misval;
    bool inside;
    int32_t n = leapsbefore(C, &inside);
    double c = C - 1000.0 * (inside ? n - 1 : n);
    return timeok(c) ? c : misval;
}

double dt_dofc(double c)
{
    return timeok(c) ? std::floor(c / day_ms) : misval;
}

// The second before, which is in the same minute when a leap second is running.
static double steady(double C, bool *inside)
{
    int32_t n = leapsbefore(C, inside);
    return C - 1000.0 * n;
}

double dt_dofC(double C)
{
    bool inside;
    return C < misval ? dt_dofc(steady(std::floor(C), &inside)) : misval;
}

static double within(double c, double period)
{
    return c - std::floor(c / period) * period;
}

double dt_hh(double c)
{
    return timeok(c) ? std::floor(within(std::floor(c), day_ms) / hour_ms) : misval;
}

double dt_mm(double c)
{
    return timeok(c) ? std::floor(within(std::floor(c), hour_ms) / minute_ms) : misval;
}

double dt_ss(double c)
{
    return timeok(c) ? within(std::floor(c), minute_ms) / 1000 : misval;
}

double dt_hhC(double C)
{
    bool inside;
    return C < misval ? dt_hh(steady(std::floor(C), &inside)) : misval;
}

double dt_mmC(double C)
{
    bool inside;
    return C < misval ? dt_mm(steady(std::floor(C), &inside)) : misval;
}

double dt_ssC(double C)
{
    if (!(C < misval))
        return misval;
    bool inside;
    double c = steady(std::floor(C), &inside), s = dt_ss(c);
    return s < misval && inside ? s + 1 : s;
}

// ---- putting times together

static double timeof(double h, double mi, double s, double slimit)
{
    int32_t hour, minute;
    if (!part(h, 0, 23, &hour) || !part(mi, 0, 59, &minute) || !(s >= 0 && s < slimit))
        return misval;
    // The nearest millisecond, but never the next minute.
    double ms = std::min(std::floor(s * 1000 + .5), slimit * 1000 - 1);
    return hour * hour_ms + minute * minute_ms + ms;
}

double dt_dhms(double day, double h, double mi, double s)
{
    double t = timeof(h, mi, s, 60);
    return t < misval && dt_inrange(std::floor(day)) ? std::floor(day) * day_ms + t : misval;
}

double dt_Cdhms(double day, double h, double mi, double s)
{
    if (!(s >= 60 && s < 61))
        return dt_Cofc(dt_dhms(day, h, mi, s));
    double t = timeof(h, mi, s, 61), c = std::floor(day) * day_ms + t;
    if (!(t < misval) || !dt_inrange(std::floor(day)))
        return misval;
    for (int32_t i = 0; i < nleap; i++)
        if (c >= leapend(i) && c < leapend(i) + 1000 && t >= day_ms)
            return c + 1000.0 * i;
    return misval;
}

double dt_mdyhms(double m, double d, double y, double h, double mi, double s)
{
    return dt_dhms(dt_mdy(m, d, y), h, mi, s);
}

double dt_Cmdyhms(double m, double d, double y, double h, double mi, double s)
{
    return dt_Cdhms(dt_mdy(m, d, y), h, mi, s);
}

double dt_hms(double h, double mi, double s)
{
    return dt_dhms(0, h, mi, s);
}

double dt_Chms(double h, double mi, double s)
{
    return dt_Cdhms(0, h, mi, s);
}

// ---- parts of a day

struct ymd {
    int32_t y, m, d;
};
static bool split(double day, ymd *t)
{
    if (!dt_inrange(day))
        return false;
    dt_ymd(day, &t->y, &t->m, &t->d);
    return true;
}

double dt_year(double day)
{
    ymd t;
    return split(day, &t) ? t.y : misval;
}

double dt_month(double day)
{
    ymd t;
    return split(day, &t) ? t.m : misval;
}

double dt_day(double day)
{
    ymd t;
    return split(day, &t) ? t.d : misval;
}

double dt_dow(double day)
{
    return dt_inrange(day) ? within(std::floor(day) + 5, 7) : misval;
}

double dt_doy(double day)
{
    ymd t;
    return split(day, &t) ? std::floor(day) - dayof(t.y, 1, 1) + 1 : misval;
}

double dt_week(double day)
{
    double doy = dt_doy(day);
    return doy < misval ? std::min(52.0, std::floor((doy - 1) / 7) + 1) : misval;
}

double dt_quarter(double day)
{
    ymd t;
    return split(day, &t) ? (t.m - 1) / 3 + 1 : misval;
}

double dt_halfyear(double day)
{
    ymd t;
    return split(day, &t) ? (t.m - 1) / 6 + 1 : misval;
}

// ---- units

static int32_t peryear(char unit)
{
    return unit == 'w' ? 52 : unit == 'm' ? 12 : unit == 'q' ? 4 : unit == 'h' ? 2 : 1;
}

static double unitof(double y, double k, char unit)
{
    int32_t year, n, per = peryear(unit);
    if (!part(y, year_lo, year_hi, &year) || !part(k, 1, per, &n))
        return misval;
    return double(year - 1960) * per + n - 1;
}

double dt_yw(double y, double w) { return unitof(y, w, 'w'); }
double dt_ym(double y, double m) { return unitof(y, m, 'm'); }
double dt_yq(double y, double q) { return unitof(y, q, 'q'); }
double dt_yh(double y, double h) { return unitof(y, h, 'h'); }

double dt_fromday(double day, char unit)
{
    double y = dt_year(day);
    if (!(y < misval))
        return misval;
    switch (unit) {
    case 'w': return dt_yw(y, dt_week(day));
    case 'm': return dt_ym(y, dt_month(day));
    case 'q': return dt_yq(y, dt_quarter(day));
    case 'h': return dt_yh(y, dt_halfyear(day));
    case 'y': return y;
    default: return std::floor(day);
    }
}

double dt_today(double z, char unit)
{
    if (!(z < misval))
        return misval;
    z = std::floor(z);
    if (unit == 'd')
        return dt_inrange(z) ? z : misval;
    if (unit == 'y')
        return dt_mdy(1, 1, z);
    int32_t per = peryear(unit);
    double y = std::floor(z / per), k = z - y * per;
    if (unit == 'w') {
        double first = dt_mdy(1, 1, y + 1960);
        return first < misval ? first + 7 * k : misval;
    }
    return dt_mdy(k * (12 / per) + 1, 1, y + 1960);
}
