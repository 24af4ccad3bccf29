// commands/stattab.h - what the commands that summarize columns of numbers share.
#pragma once
#include <cstdint>

// Numbers of a column taken out of the dataset, with their weights. RAII over safemalloc.
struct sample {
    double *x = nullptr, *w = nullptr;  // w null when unweighted
    int64_t n = 0;
    sample() = default;
    sample(const sample &) = delete;
    sample &operator=(const sample &) = delete;
    ~sample();
};

// Sum with the error of each addition carried along (Neumaier 1974), so that the order of the
// observations does not show in the result.
struct carrysum {
    double s = 0, c = 0;
    void add(double x)
    {
        double t = s + x;
        double a = s < 0 ? -s : s, b = x < 0 ? -x : x;
        c += a >= b ? (s - t) + x : (x - t) + s;
        s = t;
    }
    double value() const { return s + c; }
};

// Moments of a sample, in two passes: the mean, then powers of deviations from it. Weights
// count as given; n is the number of observations.
struct moments {
    int64_t n;
    double sum_w, sum, mean, m2, m3, m4, min, max;  // m2..m4 are weighted sums of powers
};
void moments_of(const sample *s, moments *m, bool higher);

// Sorts a sample ascending, weights along. 0 or 1 after a break.
[[nodiscard]] int32_t sample_sort(sample *s);
// The p-th percentile of a sorted sample (0 < p < 100): the value at which the running sum of
// weights passes p per cent of their total, the mean of two where it meets it exactly.
double sample_pctile(const sample *s, double sum_w, double p);

// Reads the selected observations of a numeric variable, missing ones left out, with weights
// where the parse has them. Frequency weights must be whole (401); negative weights are 402.
// Missing and zero weights leave an observation out. 0 or a code with words.
[[nodiscard]] int32_t sample_read(sample *s, int32_t var);
