// stats/distquad.h - the quadrature and the root finder of the distributions.
#pragma once
#include "core/mem.h"
#include "core/missing.h"
#include <cmath>

inline constexpr double gl_x[16] = {
    0.048307665687738316235, 0.14447196158279649349, 0.23928736225213707454,
    0.33186860228212764978,  0.42135127613063534536, 0.50689990893222939002,
    0.58771575724076232904,  0.66304426693021520098, 0.73218211874028968039,
    0.79448379596794240696,  0.84936761373256997013, 0.89632115576605212397,
    0.93490607593773968917,  0.96476225558750643077, 0.9856115115452683354,
    0.99726386184948156354};
inline constexpr double gl_w[16] = {
    0.096540088514727800567, 0.095638720079274859419, 0.093844399080804565639,
    0.091173878695763884713, 0.087652093004403811143, 0.083311924226946755222,
    0.078193895787070306472, 0.072345794108848506225, 0.065822222776361846838,
    0.058684093478535547145, 0.050998059262376176196, 0.042835898022226680657,
    0.034273862913021433103, 0.025392065309262059456, 0.016274394730905670605,
    0.0070186100094700966004};

// The Gauss-Legendre rule of 32 points.
template <class F> double dist_rule(F f, double from, double to)
{
    double sum = 0, half = (to - from) / 2, mid = (to + from) / 2;
    for (int i = 0; i < 16; i++)
        sum += gl_w[i] * (f(mid - half * gl_x[i]) + f(mid + half * gl_x[i]));
    return sum * half;
}

// The integral of exp(-c(s)) over s from 0 on; c(0) is 0, c is convex and does not fall.
// first and second are its derivatives at 0.
template <class F> double dist_falling(F c, double first, double second)
{
    double top = std::fmin(39 / first, std::sqrt(78 / second)), at = 0, before = 0, was = 0;
    for (int i = 0; i < 60; i++) {  // a secant in logarithms finds c near 39 in a few steps
        at = c(top);
        if (at > 37.5 && at < 46)
            break;
        if (!(at < 1e4)) {
            top /= top > 4 ? 2 : 1.2;
            continue;
        }
        double slope = was > 0 && top != before ? std::log(at / was) / std::log(top / before) : 1.5;
        before = top;
        was = at;
        top *= std::pow(40 / at, 1 / (slope > 0.9 && slope < 1e3 ? slope : 1.5));
    }
    return dist_rule([&](double s) { return std::exp(-c(s)); }, 0, top);
}

// The x above 0 and below limit where f, which rises or falls all the way, is p; misval when
// it is nowhere. The search runs over log x and log f, along chords of the bracket of which an
// end that stays too long is lightened (M. Dowell and P. Jarratt, A modified regula falsi
// method for computing the root of an equation, BIT 11, 1971).
template <class F> double dist_root(F f, double p, bool rising, double start, double limit)
{
    // How far f is above p on the way up, in logarithms; missing values spoil the search.
    auto above = [&](double x, double *h) {
        double z = f(x), near = (z - p) / p;
        *h = z <= 0 ? -750 : std::fabs(near) < 0.1 ? std::log1p(near) : std::log(z / p);
        *h = rising ? *h : -*h;
        return z < misval && !fault_poll();
    };
    double low = start, high = start, hl, hh, factor = 1.5;
    if (!above(start, &hl))
        return misval;
    for (hh = hl; hh < 0; factor *= factor) {
        if (high >= limit)
            return misval;
        low = high;
        hl = hh;
        high = std::fmin(high * factor, limit);
        if (!above(high, &hh))
            return misval;
    }
    for (factor = 1.5; hl >= 0; factor *= factor) {
        if (low <= 1e-300)
            return 0;
        high = low;
        hh = hl;
        low = std::fmax(low / factor, 1e-300);
        if (!above(low, &hl))
            return misval;
    }
    int side = 0;
    for (int i = 0; i < 200 && high / low - 1 > 4e-16; i++) {
        double width = std::log1p((high - low) / low), t = hl / (hl - hh);
        bool chord = i % 8 != 7 && t > 0 && t < 1 && hl > -700;
        double x = chord && width < 1   ? low * (1 + std::expm1(t * width))
                   : chord             ? low * std::exp(t * width)
                   : high / low < 1.5  ? low + (high - low) / 2
                                       : std::sqrt(low) * std::sqrt(high);
        double h;
        if (!(x > low && x < high))
            x = low + (high - low) / 2;
        if (!(x > low && x < high))
            break;
        if (!above(x, &h))
            return misval;
        if (h == 0)
            return x;
        if (h < 0) {
            hh *= side < 0 ? 0.5 : 1;
            low = x;
            hl = h;
            side = -1;
        } else {
            hl *= side > 0 ? 0.5 : 1;
            high = x;
            hh = h;
            side = 1;
        }
    }
    return low + (high - low) / 2;
}
