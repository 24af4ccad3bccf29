// core/clock.h - time.
#pragma once
#include <cstdint>

// Seconds from an arbitrary moment, never going back. Tests may shift it.
double clock_secs();
void clock_shift(double secs);

struct wallclock {
    int32_t year, month, day, hour, minute, second, millisecond;  // month and day from 1
};
wallclock clock_wall();  // local time

// "21 Nov 2026" with the day padded to two places, and "03:17:59". buf holds 24 bytes.
char *mkwdate(char *buf);
char *mkwtime(char *buf);
// "21 Nov 2026 03:17": 17 characters, the stamp of a dataset file.
char *getstamp(char *buf);
