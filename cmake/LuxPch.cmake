# Precompiled headers of Qt and the standard library: most of the time of a small file is spent on reading them. Nothing
# of the tree is in them, but for the decoders' one. All targets with the same Qt modules share one. A file names what
# it needs all the same: the preset "clang" compiles without them.

# lux_reaches(<variable> <target> <library>...): whether the target links one of the libraries, by whatever way.
function(lux_reaches variable target)
  set(${variable} FALSE PARENT_SCOPE)
  set(seen)
  get_target_property(next ${target} LINK_LIBRARIES)
  while(next)
    list(POP_FRONT next library)
    string(REGEX REPLACE "^\\$<LINK_ONLY:(.*)>$" "\\1" library "${library}")
    if(library IN_LIST ARGN)
      set(${variable} TRUE PARENT_SCOPE)
      return()
    endif()
    if(TARGET "${library}" AND NOT library IN_LIST seen)
      list(APPEND seen ${library})
      get_target_property(below ${library} INTERFACE_LINK_LIBRARIES)
      if(below)
        list(APPEND next ${below})
      endif()
    endif()
  endwhile()
endfunction()

set(LUX_PCH_STD <algorithm> <array> <atomic> <cmath> <condition_variable> <functional> <limits> <map> <memory> <mutex>
  <optional> <span> <string> <thread> <vector>)
# The modules' whole headers would instantiate templates in each file that nobody there asks for.
set(LUX_PCH_Core <QByteArray> <QCoreApplication> <QDir> <QFile> <QList> <QMap> <QObject> <QPointer> <QString>
  <QStringList> <QTimer> <QVariant> <QVector>)
set(LUX_PCH_Gui ${LUX_PCH_Core} <QColor> <QFont> <QFontMetrics> <QIcon> <QImage> <QMouseEvent> <QPainter>)
set(LUX_PCH_Widgets ${LUX_PCH_Gui} <QApplication> <QBoxLayout> <QComboBox> <QDialog> <QGraphicsItem> <QGraphicsScene>
  <QGraphicsView> <QGridLayout> <QLabel> <QLineEdit> <QMenu> <QPushButton> <QRadioButton> <QScrollBar> <QWidget>)

# What nearly every file of a decoder reads: headers of the tree too, which all decoders depend on in any case.
set(LUX_PCH_Decoder <algorithm> <array> <charconv> <cmath> <cstdint> <memory> <span> <string> <string_view> <vector>
  <corvanlux/analyzer/ChannelReader.h> <corvanlux/analyzer/Decoder.h> <corvanlux/analyzer/FrameText.h>
  <corvanlux/analyzer/Simulation.h>)

# lux_pch_library(<name> LINK <targets> HEADERS <headers>): compiles them for others, as CMake does for a source's sake.
function(lux_pch_library name)
  cmake_parse_arguments(ARG "" "" "LINK;HEADERS" ${ARGN})
  set(source ${CMAKE_BINARY_DIR}/pch/${name}.cpp)
  if(NOT EXISTS ${source})
    file(WRITE ${source} "")
  endif()
  add_library(${name} STATIC ${source})
  set_target_properties(${name} PROPERTIES UNITY_BUILD OFF)
  target_link_libraries(${name} PRIVATE ${ARG_LINK})
  target_precompile_headers(${name} PRIVATE ${ARG_HEADERS})
endfunction()

# lux_precompile(<target> [TEST]): to be called when the target's libraries are known.
function(lux_precompile target)
  if(NOT LUX_PCH)
    return()
  endif()
  cmake_parse_arguments(ARG "TEST" "" "" ${ARGN})
  set(module)
  foreach(candidate Core Gui Widgets)
    lux_reaches(reached ${target} Qt5::${candidate})
    if(reached)
      set(module ${candidate})
    endif()
  endforeach()
  set(headers ${LUX_PCH_${module}} ${LUX_PCH_STD})
  set(libraries lux_flags Threads::Threads)
  if(module)
    list(APPEND libraries Qt5::${module})
    set(kind lux_pch_${module})
  else()
    set(kind lux_pch_std)
  endif()
  if(ARG_TEST)
    set(kind lux_pch_test_${module})
    list(PREPEND headers <QtTest> <QSignalSpy>)
    list(APPEND libraries Qt5::Test)
    get_target_property(plain ${target} LUX_TEST_PLAIN)
    if(plain)
      set(kind ${kind}_plain) # a precompiled header holds for one set of options
    endif()
  endif()
  if(NOT TARGET ${kind})
    lux_pch_library(${kind} LINK ${libraries} HEADERS ${headers})
    if(ARG_TEST)
      lux_test_options(${kind})
    endif()
  endif()
  target_precompile_headers(${target} REUSE_FROM ${kind})
endfunction()

# lux_precompile_decoder(<target>): of decoders/.
function(lux_precompile_decoder target)
  if(NOT LUX_PCH)
    return()
  endif()
  if(NOT TARGET lux_pch_decoder)
    lux_pch_library(lux_pch_decoder LINK lux_plugin_flags lux_runtime_headers HEADERS ${LUX_PCH_Decoder})
    set_target_properties(lux_pch_decoder PROPERTIES CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  endif()
  target_precompile_headers(${target} REUSE_FROM lux_pch_decoder)
endfunction()
