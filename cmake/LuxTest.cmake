# How a test becomes a program.

# What moc reads before each test: the compiler's own macros and the names that Qt gives to systems, so that it sees the
# same functions as the compiler. Of other headers it needs nothing, and reading Qt's takes it most of its time; CMake's
# AUTOMOC, which hands over all of them and compiles one more file for each program, takes fifteen times as long.
set(LUX_MOC_FIRST ${CMAKE_BINARY_DIR}/tests/moc_first.h)
function(lux_write_moc_first)
  file(WRITE ${CMAKE_BINARY_DIR}/tests/moc_nothing.cpp "")
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -std=c++20 -dM -E ${CMAKE_BINARY_DIR}/tests/moc_nothing.cpp
    OUTPUT_VARIABLE macros COMMAND_ERROR_IS_FATAL ANY)
  file(CONFIGURE OUTPUT ${LUX_MOC_FIRST} CONTENT "${macros}#include <QtCore/qglobal.h>\n" @ONLY) # only when it alters
endfunction()
if(LUX_TESTS)
  lux_write_moc_first()
endif()

# lux_moc_tests(<target> <sources>): a source tst_*.cpp includes what moc makes of it, tst_*.moc.
function(lux_moc_tests target)
  get_target_property(core Qt5::Core INTERFACE_INCLUDE_DIRECTORIES)
  list(GET core 0 qt) # the folder above those of the modules
  foreach(source IN LISTS ARGN)
    get_filename_component(base ${source} NAME_WE)
    if(NOT base MATCHES "^tst_")
      continue()
    endif()
    set(moc ${CMAKE_CURRENT_BINARY_DIR}/moc/${base}.moc)
    get_filename_component(absolute ${source} ABSOLUTE)
    add_custom_command(
      OUTPUT ${moc}
      COMMAND Qt5::moc --no-notes --include ${LUX_MOC_FIRST} -I${qt} -o ${moc} ${absolute}
      DEPENDS ${absolute} ${LUX_MOC_FIRST}
      COMMENT ""
      VERBATIM)
    target_sources(${target} PRIVATE ${moc})
  endforeach()
  target_include_directories(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/moc)
endfunction()

# lux_test_object(<variable> <target> <sources>): the object of a test in the build LUX_TEST_OBJECTS, or nothing. A test
# that is told a place in its own build folder (a definition) or has files of the product in it is compiled anew.
function(lux_test_object variable target)
  set(${variable} "" PARENT_SCOPE)
  get_target_property(plain ${target} LUX_TEST_PLAIN)
  get_target_property(definitions ${target} COMPILE_DEFINITIONS)
  list(LENGTH ARGN count)
  if(NOT LUX_TEST_OBJECTS OR NOT plain OR NOT count EQUAL 1 OR NOT ARGN MATCHES "^tst_[A-Za-z0-9_]+\\.cpp$")
    return()
  endif()
  string(FIND "${definitions}" "${CMAKE_BINARY_DIR}" own)
  if(own GREATER_EQUAL 0 OR definitions MATCHES "\\$<")
    return()
  endif()
  file(RELATIVE_PATH folder ${CMAKE_BINARY_DIR} ${CMAKE_CURRENT_BINARY_DIR})
  set(${variable} ${LUX_TEST_OBJECTS}/${folder}/CMakeFiles/${target}.dir/${ARGN}${CMAKE_CXX_OUTPUT_EXTENSION} PARENT_SCOPE)
endfunction()

# lux_test_compile(<target> <sources>): what has to wait until all is said about a test.
function(lux_test_compile target)
  lux_test_object(object ${target} ${ARGN})
  if(object)
    set_target_properties(${target} PROPERTIES SOURCES ${object} LINKER_LANGUAGE CXX)
    set_source_files_properties(${object} PROPERTIES EXTERNAL_OBJECT ON GENERATED ON) # made by the other build
    set_property(GLOBAL APPEND PROPERTY LUX_TESTS_TAKEN ${target})
    return()
  endif()
  lux_moc_tests(${target} ${ARGN})
  lux_precompile(${target} TEST)
endfunction()

# lux_test(<name> SOURCES <files> LINK <targets> [LABELS <labels>])
# One Qt Test executable. It runs offscreen, with a home of its own below the build folder.
function(lux_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK;LABELS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  set_target_properties(${name} PROPERTIES UNITY_BUILD OFF RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests/bin)
  target_link_libraries(${name} PRIVATE lux_flags Qt5::Test ${ARG_LINK})
  target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
  lux_test_options(${name})
  list(JOIN ARG_SOURCES " " sources)
  cmake_language(EVAL CODE "cmake_language(DEFER CALL lux_test_compile ${name} ${sources})")
  add_test(NAME ${name} COMMAND ${name})
  lux_test_environment(${name})
  if(ARG_LABELS)
    set_tests_properties(${name} PROPERTIES LABELS "${ARG_LABELS}")
  endif()
  if("slow" IN_LIST ARG_LABELS)
    set_tests_properties(${name} PROPERTIES COST 100) # begins first, so that nothing waits for it in the end
  endif()
endfunction()
