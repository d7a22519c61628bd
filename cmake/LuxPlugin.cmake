# Decoders and the runtime that they are written on: where they lie beside the program, in the build and installed.
#
#   bin/            the program, Analyzer.dll on Windows
#   bin/            libAnalyzer.so.1
#   bin/Analyzer/   the decoders: SPI.so, SPI.dll
#
# Each finds the library relative to itself, so that the whole folder can be moved.

# lux_beside_program(<target>): a shared library that lies beside the program.
function(lux_beside_program target)
  set_target_properties(${target} PROPERTIES
    LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin
    RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
endfunction()

# lux_uses_runtime(<target>): a program that finds the runtime beside itself, once it is installed too.
function(lux_uses_runtime target)
  target_link_libraries(${target} PRIVATE lux_runtime)
  if(UNIX AND NOT APPLE)
    set_target_properties(${target} PROPERTIES BUILD_RPATH_USE_ORIGIN ON INSTALL_RPATH "$ORIGIN")
  endif()
endfunction()

# lux_plugin(<name> FILE <stored base name> SOURCES <files> [LINK <static libraries of decoders/>])
# One decoder, as target plugin_<name>, which is in the global list LUX_PLUGINS: <build>/bin/Analyzer/<FILE>.so or .dll. It links the runtime and nothing of src/.
function(lux_plugin name)
  cmake_parse_arguments(ARG "" "FILE" "SOURCES;LINK" ${ARGN})
  set(target plugin_${name})
  add_library(${target} MODULE ${ARG_SOURCES})
  target_link_libraries(${target} PRIVATE lux_plugin_flags lux_runtime ${ARG_LINK})
  set_property(GLOBAL APPEND PROPERTY LUX_PLUGINS ${target})
  set_target_properties(${target} PROPERTIES
    PREFIX ""
    OUTPUT_NAME ${ARG_FILE}
    UNITY_BUILD OFF # its files name the same quantities of the protocol, each for itself
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin/Analyzer
    RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin/Analyzer)
  if(UNIX AND NOT APPLE)
    set_target_properties(${target} PROPERTIES BUILD_RPATH_USE_ORIGIN ON INSTALL_RPATH "$ORIGIN/..")
  endif()
  install(TARGETS ${target} LIBRARY DESTINATION ${LUX_INSTALL_PROGRAM_DIR}/Analyzer
    RUNTIME DESTINATION ${LUX_INSTALL_PROGRAM_DIR}/Analyzer)
endfunction()

# The warnings of our own code without the include folder of src/, which decoders must not see.
add_library(lux_plugin_flags INTERFACE)
target_compile_options(lux_plugin_flags INTERFACE $<TARGET_PROPERTY:lux_flags,INTERFACE_COMPILE_OPTIONS>)
target_link_options(lux_plugin_flags INTERFACE $<TARGET_PROPERTY:lux_flags,INTERFACE_LINK_OPTIONS>)
