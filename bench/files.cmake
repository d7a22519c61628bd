lux_bench(bench_DataFile LINK lux_files)
lux_bench(bench_DataExport LINK lux_files)
lux_bench(bench_Foreign LINK lux_files)
