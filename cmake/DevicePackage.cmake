# SPDX-License-Identifier: BSD-3-Clause
# The installed package: DeviceTargets.cmake (the imported Device::Device),
# DeviceConfig.cmake and its version file for find_package(Device), and
# Device.pc for pkg-config; in the Qt 6 build Device6 in every name.
include(CMakePackageConfigHelpers)
if(QT_MAJOR_VERSION STREQUAL "6")
    set(DEVICE_OTHER_QT_MAJOR 5)
    set(DEVICE_OTHER_NAME Device)
else()
    set(DEVICE_OTHER_QT_MAJOR 6)
    set(DEVICE_OTHER_NAME Device6)
endif()

install(EXPORT DeviceTargets
    NAMESPACE ${DEVICE_NAME}::
    FILE ${DEVICE_NAME}Targets.cmake
    DESTINATION ${DEVICE_INSTALL_CMAKEDIR}
    COMPONENT Development)

configure_package_config_file(
    ${CMAKE_CURRENT_LIST_DIR}/DeviceConfig.cmake.in
    ${PROJECT_BINARY_DIR}/${DEVICE_NAME}Config.cmake
    INSTALL_DESTINATION ${DEVICE_INSTALL_CMAKEDIR})

# The major version is the SOVERSION: within one, hosts keep working.
write_basic_package_version_file(
    ${PROJECT_BINARY_DIR}/${DEVICE_NAME}ConfigVersion.cmake
    VERSION ${PROJECT_VERSION}
    COMPATIBILITY SameMajorVersion)

install(FILES
    ${PROJECT_BINARY_DIR}/${DEVICE_NAME}Config.cmake
    ${PROJECT_BINARY_DIR}/${DEVICE_NAME}ConfigVersion.cmake
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
configure_file(${CMAKE_CURRENT_LIST_DIR}/Device.pc.in ${PROJECT_BINARY_DIR}/${DEVICE_NAME}.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/${DEVICE_NAME}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
    COMPONENT Development)
