lux_bench(bench_AnalogParameters LINK lux_analysis)
lux_bench(bench_ResultList LINK lux_analyzer)
