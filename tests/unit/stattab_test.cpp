// Samples: moments that do not depend on order or offset, percentiles by their definition.
#include "../session.h"
#include "commands/stattab.h"
#include "core/missing.h"
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace {

void give(sample *s, const std::vector<double> &x, const std::vector<double> &w = {})
{
    s->x = static_cast<double *>(safemalloc(sizeof(double) * (x.size() + 1)));
    std::copy(x.begin(), x.end(), s->x);
    if (!w.empty()) {
        s->w = static_cast<double *>(safemalloc(sizeof(double) * w.size()));
        std::copy(w.begin(), w.end(), s->w);
    }
    s->n = int64_t(x.size());
}

}  // namespace

TEST(Moments, HoldTheirDigitsFarFromZero)
{
    // 1e9 + 4, 7, 13, 16: mean 1e9 + 10, variance 30, exactly.
    for (double offset : {0.0, 1e6, 1e9, 1e12}) {
        sample s;
        give(&s, {offset + 4, offset + 7, offset + 13, offset + 16});
        moments m;
        moments_of(&s, &m, true);
        EXPECT_EQ(m.mean, offset + 10);
        EXPECT_EQ(m.m2, 90) << offset;
        EXPECT_EQ(m.m3, 0);
        EXPECT_EQ(m.min, offset + 4);
        EXPECT_EQ(m.max, offset + 16);
    }
}

TEST(Moments, SmallPartsOfALargeSumAreNotLost)
{
    std::vector<double> x{1e16};
    x.insert(x.end(), 10000, 1);
    x.push_back(-1e16);
    sample s;
    give(&s, x);
    moments m;
    moments_of(&s, &m, false);
    EXPECT_EQ(m.sum, 10000);
}

TEST(Moments, FrequencyWeightsCountAsCopies)
{
    std::mt19937 draw(3);
    std::vector<double> x, w, copies;
    for (int i = 0; i < 40; i++) {
        x.push_back(double(draw() % 1000) / 7);
        w.push_back(1 + draw() % 4);
        copies.insert(copies.end(), size_t(w.back()), x.back());
    }
    sample a, b;
    give(&a, x, w);
    give(&b, copies);
    moments ma, mb;
    moments_of(&a, &ma, true);
    moments_of(&b, &mb, true);
    EXPECT_EQ(ma.sum_w, mb.sum_w);
    EXPECT_NEAR(ma.mean, mb.mean, 1e-12 * std::fabs(mb.mean));
    EXPECT_NEAR(ma.m2, mb.m2, 1e-12 * mb.m2);
    EXPECT_NEAR(ma.m4, mb.m4, 1e-12 * mb.m4);
    ASSERT_EQ(sample_sort(&a), 0);
    ASSERT_EQ(sample_sort(&b), 0);
    for (double p : {1.0, 5.0, 10.0, 25.0, 50.0, 75.0, 90.0, 99.0})
        EXPECT_EQ(sample_pctile(&a, ma.sum_w, p), sample_pctile(&b, mb.sum_w, p)) << p;
}

TEST(Percentiles, FollowTheirDefinition)
{
    sample s;
    give(&s, {1, 2, 3, 4});
    EXPECT_EQ(sample_pctile(&s, 4, 50), 2.5);
    EXPECT_EQ(sample_pctile(&s, 4, 25), 1.5);
    EXPECT_EQ(sample_pctile(&s, 4, 26), 2);
    EXPECT_EQ(sample_pctile(&s, 4, 1), 1);
    EXPECT_EQ(sample_pctile(&s, 4, 99), 4);
    sample one;
    give(&one, {7});
    for (double p : {1.0, 50.0, 99.0})
        EXPECT_EQ(sample_pctile(&one, 1, p), 7);
    sample none;
    give(&none, {});
    EXPECT_EQ(sample_pctile(&none, 0, 50), misval);
    sample weighted;
    give(&weighted, {1, 2, 3}, {1, 2, 1});
    EXPECT_EQ(sample_pctile(&weighted, 4, 25), 1.5);
    EXPECT_EQ(sample_pctile(&weighted, 4, 50), 2);
    EXPECT_EQ(sample_pctile(&weighted, 4, 75), 2.5);
}

TEST(Summarize, LeavesMissingWeightsAndObservationsOut)
{
    for (const char *line : {"drop _all", "set obs 6", "generate x = _n", "generate w = _n - 2",
                             "replace w = . in 6", "replace x = .c in 5"})
        ASSERT_EQ(run(line), 0) << line;
    EXPECT_EQ(run("summarize x [fweight=w]"), 402) << session_output;
    ASSERT_EQ(run("summarize x [fweight=w] if w >= 0"), 0) << session_output;
    ASSERT_EQ(run("assert r(N) == 3 & r(sum) == 3 + 2*4 & r(min) == 3 & r(max) == 4"), 0)
        << session_output;
    ASSERT_EQ(run("summarize x in 5"), 0);
    ASSERT_EQ(run("assert r(N) == 0 & r(mean) == . & r(Var) == ."), 0);
}
