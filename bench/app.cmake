lux_bench(bench_Markers LINK lux_window lux_res Qt5::Test)
lux_bench(bench_Stalls LINK lux_window lux_res Qt5::Test)
lux_bench(bench_StartUp LINK lux_window lux_res Qt5::Test)
