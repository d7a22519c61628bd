lux_bench(bench_Markers LINK lux_window lux_res Qt5::Test)
lux_bench(bench_Picture LINK lux_window lux_res)
lux_bench(bench_Stalls LINK lux_window lux_res Qt5::Test)
lux_bench(bench_StartUp LINK lux_window lux_res Qt5::Test)
# The program's decoders are beside it.
get_property(plugins GLOBAL PROPERTY LUX_PLUGINS)
foreach(name bench_Stalls bench_StartUp)
  add_dependencies(${name} ${plugins})
endforeach()
