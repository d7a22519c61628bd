lux_bench(bench_SmpData LINK lux_store)
lux_bench(bench_TriggerScan LINK lux_store)
lux_bench(bench_Streaming LINK lux_acquisition)
