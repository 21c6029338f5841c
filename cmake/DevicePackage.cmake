# SPDX-License-Identifier: BSD-3-Clause
# The installed package: DeviceTargets.cmake (the imported Device::Device),
# DeviceConfig.cmake and its version file for find_package(Device), and
# Device.pc for pkg-config.
include(CMakePackageConfigHelpers)

install(EXPORT DeviceTargets
    NAMESPACE Device::
    FILE DeviceTargets.cmake
    DESTINATION ${DEVICE_INSTALL_CMAKEDIR}
    COMPONENT Development)

configure_package_config_file(
    ${CMAKE_CURRENT_LIST_DIR}/DeviceConfig.cmake.in
    ${PROJECT_BINARY_DIR}/DeviceConfig.cmake
    INSTALL_DESTINATION ${DEVICE_INSTALL_CMAKEDIR})

# The major version is the SOVERSION: within one, hosts keep working.
write_basic_package_version_file(
    ${PROJECT_BINARY_DIR}/DeviceConfigVersion.cmake
    VERSION ${PROJECT_VERSION}
    COMPATIBILITY SameMajorVersion)

install(FILES
    ${PROJECT_BINARY_DIR}/DeviceConfig.cmake
    ${PROJECT_BINARY_DIR}/DeviceConfigVersion.cmake
    DESTINATION ${DEVICE_INSTALL_CMAKEDIR}
    COMPONENT Development)

# Device.pc locates the prefix from its own directory, like the CMake package
# does, so that `cmake --install --prefix <anywhere>` (and moving the tree
# afterwards) yields a working file. Absolute install directories cannot move
# and are written as they are.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}" OR IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
    set(DEVICE_PC_PREFIX "${CMAKE_INSTALL_PREFIX}")
    set(DEVICE_PC_LIBDIR "${CMAKE_INSTALL_FULL_LIBDIR}")
    set(DEVICE_PC_INCLUDEDIR "${CMAKE_INSTALL_FULL_INCLUDEDIR}")
else()
    file(RELATIVE_PATH pcToPrefix
        ${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
    string(REGEX REPLACE "/$" "" pcToPrefix "${pcToPrefix}")
    set(DEVICE_PC_PREFIX "\${pcfiledir}/${pcToPrefix}")
    set(DEVICE_PC_LIBDIR "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
    set(DEVICE_PC_INCLUDEDIR "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/Device.pc.in ${PROJECT_BINARY_DIR}/Device.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/Device.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
    COMPONENT Development)
