#include "core/clock.h"
#include <chrono>
#include <cstdio>
#include <ctime>

static double shift;

double clock_secs()
{
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count() + shift;
}

void clock_shift(double secs) { shift += secs; }

wallclock clock_wall()
{
    struct timespec ts;
    struct tm tm;
    clock_gettime(CLOCK_REALTIME, &ts);
    localtime_r(&ts.tv_sec, &tm);
    return {tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday,
            tm.tm_hour,        tm.tm_min,     tm.tm_sec,
            int32_t(ts.tv_nsec / 1000000)};
}

char *mkwdate(char *buf)
{
    static const char *const mon[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                      "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    wallclock w = clock_wall();
    snprintf(buf, 24, "%2d %s %04d", w.day, mon[w.month - 1], w.year);
    return buf;
}

char *mkwtime(char *buf)
{
    wallclock w = clock_wall();
    snprintf(buf, 24, "%02d:%02d:%02d", w.hour, w.minute, w.second);
    return buf;
}

char *getstamp(char *buf)
{
    wallclock w = clock_wall();
    mkwdate(buf);
    snprintf(buf + 11, 13, " %02d:%02d", w.hour, w.minute);
    return buf;
}
