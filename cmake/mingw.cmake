# Toolchain: 64-bit Windows from Linux, by mingw-w64 with POSIX threads and a Qt 5.15 that was built with it.
#
#   cmake --toolchain cmake/mingw.cmake -DQT5_MINGW=FOLDER ...       or QT5_MINGW in the environment
#
# FOLDER is the prefix of that Qt: DLLs and the build's own tools (moc, rcc, for Linux) in bin/, packages in lib/cmake/.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

# The compiler checks of CMake are projects of their own and read this file again.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QT5_MINGW)
if(NOT QT5_MINGW)
  set(QT5_MINGW "$ENV{QT5_MINGW}")
endif()
set(QT5_MINGW "${QT5_MINGW}" CACHE PATH "Prefix of a Qt 5.15 for mingw-w64")
if(NOT EXISTS "${QT5_MINGW}/lib/cmake/Qt5/Qt5Config.cmake")
  message(FATAL_ERROR "QT5_MINGW must name the prefix of a Qt 5 for mingw-w64; \"${QT5_MINGW}\" is none")
endif()

set(_mingw x86_64-w64-mingw32)
# With the other threads there is no <mutex> and no <thread>. Systems that offer only one kind have no suffix.
find_program(LUX_MINGW_CXX NAMES ${_mingw}-g++-posix ${_mingw}-g++ REQUIRED)
find_program(LUX_MINGW_WINDRES NAMES ${_mingw}-windres REQUIRED)
set(CMAKE_CXX_COMPILER ${LUX_MINGW_CXX})
set(CMAKE_RC_COMPILER ${LUX_MINGW_WINDRES})

# Programs are those of this machine; all else is for Windows.
list(APPEND CMAKE_PREFIX_PATH ${QT5_MINGW})
set(CMAKE_FIND_ROOT_PATH ${QT5_MINGW} /usr/${_mingw})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)

# What runs the programs built: the tests. Left empty they are built and not run.
find_program(LUX_WINE NAMES wine64 wine)
if(LUX_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${LUX_WINE})
endif()
unset(_mingw)
