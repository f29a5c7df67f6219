# What `cmake --install` puts in place besides the tool (tools/zksupt installs
# that): the library with its version chain, the headers, a pkg-config file
# and a relocatable CMake package exporting the target zksupt::zksupt.
include(CMakePackageConfigHelpers)

set(ZKSUPT_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/zksupt)

install(TARGETS zksupt EXPORT zksuptTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} NAMELINK_COMPONENT Development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY include/zksupt DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT Development)

configure_file(cmake/zksupt.pc.in ${CMAKE_CURRENT_BINARY_DIR}/zksupt.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zksupt.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT Development)

install(EXPORT zksuptTargets NAMESPACE zksupt::
  DESTINATION ${ZKSUPT_CMAKE_DIR} COMPONENT Development)
configure_package_config_file(cmake/zksuptConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/zksuptConfig.cmake
  INSTALL_DESTINATION ${ZKSUPT_CMAKE_DIR})
# A program built against 9.x runs on any later 9.y: the SONAME only changes
# with the major version.
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/zksuptConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/zksuptConfig.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/zksuptConfigVersion.cmake
  DESTINATION ${ZKSUPT_CMAKE_DIR} COMPONENT Development)
