lux_bench(bench_SmpData LINK lux_acquisition)
