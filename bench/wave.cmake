lux_bench(bench_WavePaint LINK lux_wave Qt5::Test)
