# Installation: header, both libraries, the program with its man page, the CMake package and the pkg-config file.
include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/zorvex")

install(FILES "${PROJECT_SOURCE_DIR}/include/zorvex.h" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(TARGETS zorvex zorvex_static EXPORT zorvexTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")
if(TARGET zorvex_cli)
  install(TARGETS zorvex_cli RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
  install(FILES "${PROJECT_SOURCE_DIR}/docs/zorvex.1" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
endif()

install(EXPORT zorvexTargets NAMESPACE zorvex:: DESTINATION "${package_dir}")
configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/zorvexConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/zorvexConfig.cmake" INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/zorvexConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/zorvexConfig.cmake" "${PROJECT_BINARY_DIR}/zorvexConfigVersion.cmake"
  "${CMAKE_CURRENT_LIST_DIR}/FindAMD.cmake" "${CMAKE_CURRENT_LIST_DIR}/FindMETIS.cmake"
  DESTINATION "${package_dir}")

# Relative to the file itself, so that an installation can be moved or made with another --prefix.
file(RELATIVE_PATH ZORVEX_PC_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" ZORVEX_PC_PREFIX "${ZORVEX_PC_PREFIX}")
configure_file("${CMAKE_CURRENT_LIST_DIR}/zorvex.pc.in" "${PROJECT_BINARY_DIR}/zorvex.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/zorvex.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" "${PROJECT_SOURCE_DIR}/README.md"
  "${PROJECT_SOURCE_DIR}/docs/guide.md" "${PROJECT_SOURCE_DIR}/docs/reference.md"
  "${PROJECT_SOURCE_DIR}/docs/parameters.md" DESTINATION "${CMAKE_INSTALL_DOCDIR}")
