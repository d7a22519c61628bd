lux_library(core RANK 0
  SOURCES
    ${CMAKE_CURRENT_SOURCE_DIR}/app/Config.cpp ${CMAKE_CURRENT_SOURCE_DIR}/app/Config.h
    ${CMAKE_CURRENT_SOURCE_DIR}/app/ConfigValues.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/app/Globals.cpp ${CMAKE_CURRENT_SOURCE_DIR}/app/Globals.h
    ${CMAKE_CURRENT_SOURCE_DIR}/app/Language.cpp ${CMAKE_CURRENT_SOURCE_DIR}/app/Language.h
    ${CMAKE_CURRENT_SOURCE_DIR}/app/XmlText.cpp ${CMAKE_CURRENT_SOURCE_DIR}/app/XmlText.h
  QT Core Gui Xml)
target_compile_definitions(lux_core PUBLIC LUX_VERSION="${PROJECT_VERSION}")
