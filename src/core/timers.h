// core/timers.h - a hundred stop-watches, numbered from 1.
//
// A watch that runs counts the time up to now. Numbers outside 1 to 100 must not come here.
#pragma once
#include <cstdint>

inline constexpr int32_t ntimers = 100;
struct timer_reading {
    double seconds;
    int32_t runs; // how often it was started
};
void timer_clear(int32_t i);
void timer_on(int32_t i);  // one that runs goes on
void timer_off(int32_t i); // one that stands stays so
timer_reading timer_read(int32_t i);
