// bench/bench_dist.cpp - distribution functions, a million evaluations a figure.
#include "stats/dist.h"
#include "stats/normal.h"
#include <benchmark/benchmark.h>
#include <initializer_list>

namespace {

constexpr int million = 1000000;

// Runs f over a million values spread evenly from low to high.
template <class F> void spread(benchmark::State &state, double low, double high, F f)
{
    for (auto _ : state) {
        double sum = 0;
        for (int i = 0; i < million; i++)
            sum += f(low + (high - low) * (i + 0.5) / million);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * million);
    state.SetLabel("a million");
}

void normal_lower(benchmark::State &s) { spread(s, -8, 8, ovnormal); }
BENCHMARK(normal_lower)->Unit(benchmark::kMillisecond);

void normal_inverse(benchmark::State &s) { spread(s, 0, 1, ovinvnormal); }
BENCHMARK(normal_inverse)->Unit(benchmark::kMillisecond);

void chi2_upper(benchmark::State &s)
{
    double df = double(s.range(0));
    spread(s, 0, 3 * df, [=](double x) { return chi2tail2(df, x); });
}
BENCHMARK(chi2_upper)->Arg(1)->Arg(5)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);

void beta_lower(benchmark::State &s)
{
    double a = double(s.range(0)), b = double(s.range(1));
    spread(s, 0, 1, [=](double x) { return ibeta2(a, b, x); });
}
BENCHMARK(beta_lower)->Args({2, 3})->Args({20, 30})->Args({1000, 2000})->Unit(benchmark::kMillisecond);

void t_upper(benchmark::State &s)
{
    double df = double(s.range(0));
    spread(s, -5, 5, [=](double t) { return ttail2(df, t); });
}
BENCHMARK(t_upper)->Arg(5)->Arg(100)->Arg(10000)->Unit(benchmark::kMillisecond);

void t_inverse(benchmark::State &s)
{
    double df = double(s.range(0));
    spread(s, 0, 1, [=](double p) { return invttail2(df, p); });
}
BENCHMARK(t_inverse)->Arg(5)->Arg(100)->Unit(benchmark::kMillisecond);

}
