lux_bench(bench_DecodedPaint LINK lux_protocol Qt5::Test)
lux_bench(bench_WavePaint LINK lux_wave Qt5::Test)
lux_bench(bench_WaveDataGen LINK lux_wave)
lux_bench(bench_PulseCount LINK lux_analysis)
