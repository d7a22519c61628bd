lux_bench(bench_SmpData LINK lux_acquisition)
lux_bench(bench_TriggerScan LINK lux_acquisition)
lux_bench(bench_Streaming LINK lux_acquisition)
