# An emulated instrument behind a node of umockdev, for what is measured through the real libusb.
find_package(PkgConfig)
if(PkgConfig_FOUND)
  pkg_check_modules(UMOCKDEV IMPORTED_TARGET umockdev-1.0)
endif()
if(TARGET PkgConfig::UMOCKDEV AND TARGET PkgConfig::LIBUSB)
  lux_bench(bench_UsbStream LINK lux_platform PkgConfig::UMOCKDEV PkgConfig::LIBUSB Threads::Threads)
  target_sources(bench_UsbStream PRIVATE ${CMAKE_SOURCE_DIR}/tests/support/UmockdevBus.cpp)
endif()

# An emulated instrument in the process of the program.
lux_bench(bench_MixedCapture LINK lux_window lux_res lux_platform lux_testimages Qt5::Test Threads::Threads)
lux_bench(bench_StopButton LINK lux_window lux_res lux_platform lux_testimages Qt5::Test Threads::Threads)
