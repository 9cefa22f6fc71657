# SPDX-License-Identifier: MIT
# Libraries, headers, CMake package and pkg-config file. The prefix may be moved after installation.
# The components are those of the packages: runtime, development and tools.

include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/vxclss)

install(TARGETS vxfoundation vxclss EXPORT vxclssTargets
  RUNTIME COMPONENT runtime
  LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE COMPONENT development
  FILE_SET HEADERS COMPONENT development)
install(EXPORT vxclssTargets NAMESPACE vxclss:: DESTINATION ${package_dir} COMPONENT development)

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/vxclssConfig.cmake.in
  ${PROJECT_BINARY_DIR}/cmake/vxclssConfig.cmake
  INSTALL_DESTINATION ${package_dir}
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/cmake/vxclssConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/cmake/vxclssConfig.cmake
  ${PROJECT_BINARY_DIR}/cmake/vxclssConfigVersion.cmake
  DESTINATION ${package_dir} COMPONENT development)

set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH pc_prefix /prefix/${pkgconfig_dir} /prefix)
string(REGEX REPLACE "/$" "" pc_prefix ${pc_prefix})
configure_file(${PROJECT_SOURCE_DIR}/cmake/vxclss.pc.in ${PROJECT_BINARY_DIR}/cmake/vxclss.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/cmake/vxclss.pc DESTINATION ${pkgconfig_dir}
  COMPONENT development)
