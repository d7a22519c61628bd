lux_bench(bench_Runtime LINK lux_runtime)
