# Installed: the libraries, the headers, the back end, a pkg-config file and the CMake package `oruapi`.
include(CMakePackageConfigHelpers)

# Built with the path that they are installed with: a path made longer to be patched later ends in
# an empty folder, which is the current one.
set_target_properties(oruapi PROPERTIES INSTALL_RPATH "$ORIGIN" EXPORT_NAME api)
set_target_properties(oruplatform PROPERTIES INSTALL_RPATH "$ORIGIN;$ORIGIN/../lib"
  EXPORT_NAME platform)
set_target_properties(oruthread PROPERTIES INSTALL_RPATH "$ORIGIN" EXPORT_NAME thread)
set_target_properties(oruapi oruplatform oruthread PROPERTIES BUILD_WITH_INSTALL_RPATH ON)

install(TARGETS oruapi oruplatform oruthread EXPORT oruapi-targets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/oru" "${PROJECT_SOURCE_DIR}/include/oruplatform"
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")


# The back end that the library opens by default, beside it.
if(TARGET orudbal)
  set_target_properties(orudbal PROPERTIES INSTALL_RPATH "$ORIGIN" BUILD_WITH_INSTALL_RPATH ON)
  install(TARGETS orudbal LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}")
  install(FILES "${PROJECT_SOURCE_DIR}/backends/embedded/include/oruembedded.h"
    DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
endif()

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/oruapi")
install(EXPORT oruapi-targets NAMESPACE oru:: DESTINATION "${package_dir}")
configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/oruapi-config.cmake.in"
  "${PROJECT_BINARY_DIR}/oruapi-config.cmake" INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/oruapi-config-version.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/oruapi-config.cmake"
  "${PROJECT_BINARY_DIR}/oruapi-config-version.cmake" DESTINATION "${package_dir}")

# Relative, so that a moved installation still tells its own place.
file(RELATIVE_PATH ORUAPI_PC_TO_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
configure_file("${CMAKE_CURRENT_LIST_DIR}/oruapi.pc.in" "${PROJECT_BINARY_DIR}/oruapi.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/oruapi.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
