# Where things are installed. The program looks for its languages in the folder "Language" beside itself. On a system
# with the usual Unix folders bin/ is no place for one, so the program has a folder of its own there and bin/ has a link,
# which the program sees through.
include(GNUInstallDirs)
if(UNIX AND NOT APPLE)
  set(LUX_INSTALL_PROGRAM_DIR ${CMAKE_INSTALL_LIBDIR}/corvanlux)
else()
  set(LUX_INSTALL_PROGRAM_DIR ${CMAKE_INSTALL_BINDIR})
endif()
