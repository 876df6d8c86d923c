# Each library has two parts: one that a program needs to run (`lib`, `model`) and one that it needs
# to be built (`dev`, `model-dev`). `import` is the process in which foreign models are read, `tools`
# the command-line tool. All of it can be moved as a whole after it is installed.
include(CMakePackageConfigHelpers)

set(ZVG_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/ZVSmartZvg)
# pkg-config finds the prefix from where its file lies.
file(RELATIVE_PATH ZVG_PC_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")

if(BUILD_SHARED_LIBS)
  set(ZVG_IS_STATIC OFF)
  set(ZVG_PC_REQUIRES Requires.private)
else()
  set(ZVG_IS_STATIC ON)
  set(ZVG_PC_REQUIRES Requires)
  set(ZVG_PC_STATIC_LIBS " -lstdc++")
  set(ZVG_PC_STATIC_FLAGS " -DZVSMARTZVG_STATIC")
endif()

# A library with its headers, its targets for CMake and its file for pkg-config.
function(zvg_install_library library runtime development)
  install(TARGETS ${library} EXPORT ${library}Targets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${runtime}
            NAMELINK_COMPONENT ${development}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${development}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT ${runtime})
  foreach(room ${ARGN})
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/${room}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
            COMPONENT ${development} FILES_MATCHING PATTERN "*.h")
  endforeach()
  install(EXPORT ${library}Targets NAMESPACE ZVSmartZvg:: DESTINATION ${ZVG_CMAKE_DIR}
          COMPONENT ${development})
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${library}.pc.in ${PROJECT_BINARY_DIR}/${library}.pc
                 @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${library}.pc
          DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT ${development})
endfunction()

zvg_install_library(ZVSmartZvg lib dev ${ZVG_INCLUDE_ROOMS})
if(ZVG_BUILD_MODEL)
  # What a static library needs besides; pkg-config has no targets.
  get_property(libraries GLOBAL PROPERTY ZVG_MODEL_LIBRARIES)
  if(NOT BUILD_SHARED_LIBS)
    foreach(target PNG::PNG=png meshoptimizer::meshoptimizer=meshoptimizer Threads::Threads=pthread
                   SQLite::SQLite3=sqlite3)
      string(REPLACE "=" ";" target ${target})
      list(GET target 0 name)
      list(GET target 1 library)
      if(name IN_LIST libraries)
        string(APPEND ZVG_PC_MODEL_LIBS " -l${library}")
      endif()
    endforeach()
    foreach(library ${libraries})
      if(IS_ABSOLUTE ${library})
        string(APPEND ZVG_PC_MODEL_LIBS " ${library}")
      endif()
    endforeach()
    string(APPEND ZVG_PC_MODEL_LIBS " -ldl")
    set(ZVG_PC_MODEL_FLAGS " -DZVSMARTMODEL_STATIC")
  endif()
  zvg_install_library(ZVSmartModel model model-dev model/include)
endif()

configure_package_config_file(cmake/ZVSmartZvgConfig.cmake.in ZVSmartZvgConfig.cmake
                              INSTALL_DESTINATION ${ZVG_CMAKE_DIR})
write_basic_package_version_file(ZVSmartZvgConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ZVSmartZvgConfig.cmake
              ${PROJECT_BINARY_DIR}/ZVSmartZvgConfigVersion.cmake
        DESTINATION ${ZVG_CMAKE_DIR} COMPONENT dev)
