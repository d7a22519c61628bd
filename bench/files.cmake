lux_bench(bench_DataFile LINK lux_files)
