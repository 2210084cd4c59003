# Install rules and the package configuration, so that a program can say
#   find_package(Orvane REQUIRED)
#   target_link_libraries(app PRIVATE Orvane::orvane)
# or, for the Qt widget, find_package(Orvane REQUIRED COMPONENTS qt) and Orvane::orvane_qt.
include(CMakePackageConfigHelpers)

install(TARGETS orvane orvane_kriging EXPORT OrvaneTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY include/orvane DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY engines/kriging/include/orvane_kriging DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${PROJECT_BINARY_DIR}/include/orvane/version.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orvane)
if(ORVANE_BUILD_CLI)
  install(TARGETS orvane_cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

set(ORVANE_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Orvane)
install(EXPORT OrvaneTargets NAMESPACE Orvane:: DESTINATION ${ORVANE_CMAKE_DIR})
# The Qt widget has an export set of its own, loaded only for the component "qt", so that
# programs without Qt never need it.
if(TARGET orvane_qt)
  install(TARGETS orvane_qt EXPORT OrvaneQtTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  install(DIRECTORY qt/include/orvane/qt DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orvane)
  install(EXPORT OrvaneQtTargets NAMESPACE Orvane:: DESTINATION ${ORVANE_CMAKE_DIR})
endif()
if(TARGET orvane_viewer)
  install(TARGETS orvane_viewer RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
configure_package_config_file(cmake/OrvaneConfig.cmake.in
  ${PROJECT_BINARY_DIR}/OrvaneConfig.cmake INSTALL_DESTINATION ${ORVANE_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/OrvaneConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/OrvaneConfig.cmake
  ${PROJECT_BINARY_DIR}/OrvaneConfigVersion.cmake DESTINATION ${ORVANE_CMAKE_DIR})
