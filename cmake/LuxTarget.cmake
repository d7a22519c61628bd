# How a folder becomes a target. The rank of a target decides what it may link: only what stands below it.

# lux_build is what all that is linked together must agree in, lux_flags that and the warnings: each target takes
# lux_flags for itself and passes lux_build on.
add_library(lux_build INTERFACE)
add_library(lux_flags INTERFACE)
target_link_libraries(lux_flags INTERFACE lux_build)
target_include_directories(lux_build INTERFACE ${CMAKE_SOURCE_DIR}/src)
target_compile_definitions(lux_build INTERFACE QT_NO_CAST_FROM_ASCII QT_NO_FOREACH QT_DEPRECATED_WARNINGS)
target_compile_options(lux_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual)
if(LUX_WERROR)
  target_compile_options(lux_flags INTERFACE -Werror)
endif()
set(LUX_SANITIZED_LEVEL -O1 CACHE STRING "The level of optimization of a debug build with sanitizers")
if(CMAKE_BUILD_TYPE STREQUAL "Debug")
  # A test runs once for each time it is compiled, the product many times; sanitizers make slow what is not optimized.
  if(LUX_SANITIZE)
    target_compile_options(lux_build INTERFACE ${LUX_SANITIZED_LEVEL})
  else()
    target_compile_options(lux_build INTERFACE $<IF:$<BOOL:$<TARGET_PROPERTY:LUX_TEST_PLAIN>>,-O0,-O1>)
  endif()
endif()
if(LUX_SANITIZE OR LUX_LINE_TABLES)
  # Lines for stacks, and no more: compiles and links in three quarters of the time.
  target_compile_options(lux_build INTERFACE -g1)
endif()
find_program(LUX_LLD ld.lld)
if(LUX_LLD AND NOT CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT CMAKE_CROSSCOMPILING)
  # Each test is a program of its own, and linking them all is a matter of minutes for the standard linker.
  target_link_options(lux_build INTERFACE -fuse-ld=lld)
endif()
# What is shipped reads files and devices of strangers. An index out of range ends the program, in all builds.
target_compile_options(lux_build INTERFACE -D_GLIBCXX_ASSERTIONS)
if(CMAKE_BUILD_TYPE STREQUAL "Release")
  # As Debian builds its own packages.
  target_compile_options(lux_build INTERFACE -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 -fstack-protector-strong)
  if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    target_link_options(lux_build INTERFACE -Wl,-z,relro -Wl,-z,now)
  elseif(WIN32)
    # Without -fstack-protector-strong here the linker does not find what the checks call.
    target_link_options(lux_build INTERFACE
      -fstack-protector-strong -Wl,--dynamicbase -Wl,--high-entropy-va -Wl,--nxcompat)
  endif()
endif()
if(LUX_SANITIZE)
  list(JOIN LUX_SANITIZE "," _sanitizers)
  # UBSan takes two fifths of the time to build a test, and finds nothing of the product there.
  foreach(sanitizer IN LISTS LUX_SANITIZE)
    if(sanitizer STREQUAL "undefined")
      target_compile_options(lux_build INTERFACE $<$<NOT:$<BOOL:$<TARGET_PROPERTY:LUX_TEST_PLAIN>>>:-fsanitize=undefined>)
    else()
      target_compile_options(lux_build INTERFACE -fsanitize=${sanitizer})
    endif()
  endforeach()
  target_compile_options(lux_build INTERFACE -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(lux_build INTERFACE -fsanitize=${_sanitizers})
endif()
if(LUX_SANITIZE MATCHES "address" AND NOT LUX_FUZZ)
  # Each program ends behind its threads, so that what they give back last is not taken for a leak.
  add_library(lux_lastthreads OBJECT ${CMAKE_CURRENT_LIST_DIR}/sanitizers/LastThreads.cpp)
  target_link_libraries(lux_lastthreads PRIVATE lux_build)
  target_sources(lux_flags INTERFACE
    $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:$<TARGET_OBJECTS:lux_lastthreads>>)
endif()
if(LUX_FUZZ)
  # Coverage in every folder, the driver's main only in the fuzz targets.
  target_compile_options(lux_build INTERFACE -fsanitize=fuzzer-no-link)
endif()

set(CMAKE_AUTOMOC_MOC_OPTIONS --include ${CMAKE_SOURCE_DIR}/cmake/MocFirst.h)
if(LUX_PCH AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(lux_build INTERFACE -fpch-preprocess) # ccache asks for it
endif()
include(LuxPch)

# What each folder may include, itself left out, one line each; a test holds the include lines against it.
set(LUX_FOLDER_TABLE ${CMAKE_BINARY_DIR}/folders.txt)
file(WRITE ${LUX_FOLDER_TABLE} "")

# lux_library(<folder> RANK <n> [CORE] SOURCES <files> [LINK <folders below>] [QT <Qt5 components>] [SYSTEM <libraries>])
# CORE: neither the folder nor what it links may have Qt's Gui or Widgets.
function(lux_library name)
  cmake_parse_arguments(ARG "CORE" "RANK" "SOURCES;LINK;QT;SYSTEM" ${ARGN})
  add_library(lux_${name} STATIC ${ARG_SOURCES})
  set_target_properties(lux_${name} PROPERTIES LUX_RANK ${ARG_RANK} AUTOMOC ON)
  target_link_libraries(lux_${name} PUBLIC lux_build Threads::Threads PRIVATE lux_flags)
  foreach(component IN LISTS ARG_QT)
    target_link_libraries(lux_${name} PUBLIC Qt5::${component})
  endforeach()
  foreach(below IN LISTS ARG_LINK)
    if(NOT TARGET lux_${below})
      message(FATAL_ERROR "${name} links ${below}, which is not below it")
    endif()
    get_target_property(rank lux_${below} LUX_RANK)
    if(NOT rank LESS ARG_RANK)
      message(FATAL_ERROR "${name} (rank ${ARG_RANK}) must not link ${below} (rank ${rank})")
    endif()
    target_link_libraries(lux_${name} PUBLIC lux_${below})
  endforeach()
  if(ARG_SYSTEM)
    target_link_libraries(lux_${name} PRIVATE ${ARG_SYSTEM})
  endif()

  set(reach ${ARG_LINK})
  foreach(below IN LISTS ARG_LINK)
    get_target_property(further lux_${below} LUX_REACH)
    list(APPEND reach ${further})
  endforeach()
  list(REMOVE_DUPLICATES reach)
  list(SORT reach)
  set_target_properties(lux_${name} PROPERTIES LUX_REACH "${reach}")
  get_filename_component(folder ${CMAKE_CURRENT_SOURCE_DIR} NAME)
  list(JOIN reach " " words)
  file(APPEND ${LUX_FOLDER_TABLE} "${folder} ${ARG_RANK}: ${words}\n")
  if(ARG_CORE)
    lux_reaches(gui lux_${name} Qt5::Gui Qt5::Widgets)
    if(gui)
      message(FATAL_ERROR "${name} is of the core: neither it nor what it links may have Qt's Gui or Widgets")
    endif()
  endif()
  lux_precompile(lux_${name})
endfunction()

# lux_no_gui_test(<program>): a test that the built program is not linked to Qt's Gui or Widgets.
function(lux_no_gui_test program)
  if(CMAKE_SYSTEM_NAME STREQUAL "Linux" AND NOT CMAKE_CROSSCOMPILING)
    add_test(NAME no_gui_${program}
      COMMAND ${CMAKE_COMMAND} -DPROGRAM=$<TARGET_FILE:${program}> -P ${CMAKE_SOURCE_DIR}/cmake/NoGui.cmake)
  endif()
endfunction()

# What tests and their helpers are compiled with. Where much of the product stands in headers, its tests are of it; the
# others are "plain": little of the product is compiled with them.
function(lux_test_options target)
  if(NOT CMAKE_CURRENT_SOURCE_DIR MATCHES "/tests/(analysis|decoders|emulator|runtime|store)$")
    set_target_properties(${target} PROPERTIES LUX_TEST_PLAIN ON)
  endif()
  if(CMAKE_BUILD_TYPE STREQUAL "Release")
    target_compile_options(${target} PRIVATE -O1) # what is tested is as it is shipped; the test itself is built faster
  endif()
endfunction()

# lux_test_environment(<test>): offscreen, with a home of its own below the build folder.
function(lux_test_environment name)
  set(home ${CMAKE_BINARY_DIR}/tests/home/${name})
  file(MAKE_DIRECTORY ${home})
  set(suppressions ${CMAKE_SOURCE_DIR}/cmake/sanitizers)
  set_tests_properties(${name} PROPERTIES
    TIMEOUT 300
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;HOME=${home};XDG_DATA_HOME=${home}/data;XDG_CONFIG_HOME=${home}/config;XDG_CACHE_HOME=${home}/cache;LC_ALL=C.UTF-8;LSAN_OPTIONS=suppressions=${suppressions}/lsan.supp:print_suppressions=0;TSAN_OPTIONS=suppressions=${suppressions}/tsan.supp:halt_on_error=1;UBSAN_OPTIONS=print_stacktrace=1")
  if(WIN32)
    # There the user's folder of data is told by no variable: whoever uses it is alone. It is used by all but these.
    get_filename_component(folder ${CMAKE_CURRENT_SOURCE_DIR} NAME)
    if(NOT folder MATCHES "^(store|analysis|acquisition|device|emulator)$")
      set_tests_properties(${name} PROPERTIES RESOURCE_LOCK user_data)
    endif()
  endif()
endfunction()

include(LuxTest)
