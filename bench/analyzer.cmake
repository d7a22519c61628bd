lux_bench(bench_ResultList LINK lux_analyzer)
