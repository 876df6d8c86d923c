# Three parts: `lib` is what a program needs to run, `dev` what it needs to be built, `tools` is
# the command-line tool. All of it can be moved as a whole after it is installed.
include(CMakePackageConfigHelpers)

set(ZVG_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/ZVSmartZvg)

install(TARGETS ZVSmartZvg EXPORT ZVSmartZvgTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT lib NAMELINK_COMPONENT dev
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT lib)
foreach(room ${ZVG_INCLUDE_ROOMS})
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/${room}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
          COMPONENT dev FILES_MATCHING PATTERN "*.h")
endforeach()

if(BUILD_SHARED_LIBS)
  set(ZVG_IS_STATIC OFF)
  set(ZVG_PC_REQUIRES Requires.private)
else()
  set(ZVG_IS_STATIC ON)
  set(ZVG_PC_REQUIRES Requires)
  set(ZVG_PC_STATIC_LIBS " -lstdc++")
  set(ZVG_PC_STATIC_FLAGS " -DZVSMARTZVG_STATIC")
endif()
install(EXPORT ZVSmartZvgTargets NAMESPACE ZVSmartZvg:: DESTINATION ${ZVG_CMAKE_DIR}
        COMPONENT dev)
configure_package_config_file(cmake/ZVSmartZvgConfig.cmake.in ZVSmartZvgConfig.cmake
                              INSTALL_DESTINATION ${ZVG_CMAKE_DIR})
write_basic_package_version_file(ZVSmartZvgConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ZVSmartZvgConfig.cmake
              ${PROJECT_BINARY_DIR}/ZVSmartZvgConfigVersion.cmake
        DESTINATION ${ZVG_CMAKE_DIR} COMPONENT dev)

# pkg-config finds the prefix from where its file lies.
file(RELATIVE_PATH ZVG_PC_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
configure_file(cmake/ZVSmartZvg.pc.in ZVSmartZvg.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/ZVSmartZvg.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
        COMPONENT dev)
