// bench/bench_core.cpp - the paths every command goes through: cells, expressions, macros,
// dispatch, number text.
#include "../tests/session.h"
#include "core/numtext.h"
#include "expr/expr.h"
#include "output/fmt.h"
#include <benchmark/benchmark.h>

namespace {

constexpr int32_t rows = 6000;

void data()
{
    session();
    static bool made;
    if (made)
        return;
    made = true;
    for (const char *line : {"set obs 6000", "generate double x = _n", "generate y = x/7",
                             "generate int k = mod(_n, 100)", "generate str8 s = string(_n)"})
        if (run(line))
            abort();
    s_outlev = 5;
}

void cell_read(benchmark::State &state)
{
    data();
    for (auto _ : state) {
        double sum = 0;
        for (uint32_t obs = 1; obs <= rows; obs++)
            sum += dsa_data(sysdsa, uint32_t(state.range(0)), obs);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * rows);
}
BENCHMARK(cell_read)->Arg(1)->Arg(2)->Arg(3);

void expression(benchmark::State &state)
{
    static const char *const texts[] = {"x", "x*2 + 1", "cond(x > 10 & y < 5, ln(x), k/3)",
                                        "x[_n-1] + sum(y)"};
    data();
    char text[100];
    snprintf(text, sizeof text, "%s", texts[state.range(0)]);
    toktype ti;
    xeqpgm pgm;
    ti_settok(&ti, text);
    initialize_compexp_shared();
    if (ti_compexp(&ti, &pgm, W_NUM, false, false, nullptr, 0))
        abort();
    pgm.obs1 = pgm.nobss1 = 1;
    pgm.obs2 = pgm.nobss2 = rows;
    for (auto _ : state) {
        double sum = 0;
        for (int32_t obs = 1; obs <= rows; obs++)
            sum += xeqforby(&pgm, obs);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * rows);
    state.SetLabel(texts[state.range(0)]);
}
BENCHMARK(expression)->DenseRange(0, 3);

void macro_line(benchmark::State &state)
{
    data();
    if (macresave("_a", "12") || macresave("_b", "price weight"))
        abort();
    for (auto _ : state) {
        strcpy(console, "summarize `b' if x > `a', detail");
        if (macexp())
            abort();
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(macro_line);

void command(benchmark::State &state)
{
    data();
    for (auto _ : state)
        if (run_line("local z 5"))
            abort();
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(command);

void number_to_text(benchmark::State &state)
{
    char out[64];
    double z = 1;
    for (auto _ : state) {
        fmtnum(out, sizeof out, z, "%9.0g");
        z = z * 1.1 > 1e12 ? 1e-5 : z * 1.1;
        benchmark::DoNotOptimize(out);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(number_to_text);

void text_to_number(benchmark::State &state)
{
    double z;
    for (auto _ : state)
        benchmark::DoNotOptimize(cnvstoz("-12345.678e-3", &z));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(text_to_number);

}  // namespace
