# SPDX-License-Identifier: BSD-3-Clause
# Debian packages of a build, made with CPack from any build configured for
# /usr (scripts/package does it all):
#
#   cmake -S . -B build -DCMAKE_INSTALL_PREFIX=/usr -DDEVICE_DEB=ON
#   cmake --build build && cmake --build build --target docs
#   (cd build && cpack)
#
# DEVICE_DEB builds with Debian's build flags (dpkg-buildflags: hardening,
# relro), as packages for Debian are built; the build stays an ordinary one
# otherwise, so that scripts/test runs its suite on the very build it then
# packs. What only the packages need is done to CPack's staging tree by
# cmake/DeviceDebStage.cmake: the catalogue moves to /usr/share/device/, the
# programs and the plugin lose their RPATH, and each package gets its
# copyright and changelog.
#
# One package per install component, named so that the Qt 5 and the Qt 6
# build install side by side, as their files do (Device6 names, Qt's own
# plugin and documentation folders):
#
#   Runtime      libdevice1, libdevice6-1           the library
#   Data         device-data (all)                  catalogue and translations,
#                                                   the same for both
#   Development  libdevice-dev, libdevice6-dev      headers, CMake package, .pc
#   Examples     device-tools, device6-tools        devicequery, devicepicker
#                                                   and their manual pages
#   Designer     device-designer-plugin, device6-designer-plugin
#   Documentation device-doc, device6-doc (all)     the Qt help file
#
# Shared-library dependencies are computed by dpkg-shlibdeps; those between
# the packages of one build are exact versions.
option(DEVICE_DEB "Build with Debian's build flags (dpkg-buildflags), as packages for Debian are built" OFF)
if(DEVICE_DEB)
    find_program(DEVICE_DPKG_BUILDFLAGS dpkg-buildflags)
    if(NOT DEVICE_DPKG_BUILDFLAGS)
        message(FATAL_ERROR "DEVICE_DEB needs dpkg-buildflags (scripts/bootstrap package installs it)")
    endif()
    # Run in the source folder, which its -ffile-prefix-map then names.
    foreach(kind CPPFLAGS CXXFLAGS LDFLAGS)
        execute_process(COMMAND ${DEVICE_DPKG_BUILDFLAGS} --get ${kind}
            WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
            OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE)
        separate_arguments(deb_${kind} UNIX_COMMAND "${flags}")
    endforeach()
    add_compile_options(${deb_CPPFLAGS} ${deb_CXXFLAGS})
    add_link_options(${deb_LDFLAGS})
endif()

if(CMAKE_VERSION VERSION_LESS 3.19)
    message(STATUS "CMake ${CMAKE_VERSION} has no CPack build scripts (3.19): no Debian packages")
    return()
endif()

string(TOLOWER ${DEVICE_NAME} lower)
if(QT_MAJOR_VERSION STREQUAL "6")
    set(runtime_package lib${lower}-${PROJECT_VERSION_MAJOR}) # a SONAME ending in a digit
    set(qt_dev_package qt6-base-dev)
else()
    set(runtime_package lib${lower}${PROJECT_VERSION_MAJOR})
    set(qt_dev_package qtbase5-dev)
endif()
set(DEVICE_DEB_RELEASE 1)

# component  package  section  architecture  synopsis  description (wrapped
# as control files want it)
set(DEVICE_DEB_COMPONENTS
    "Runtime|${runtime_package}|libs|any|chip database and chip selector widgets for FPGA tools (Qt ${QT_MAJOR_VERSION})|The shared library ${DEVICE_NAME}: a read-only database of the chips of a catalogue,\nfilters and free-text search, a sixteen-column table model, a selector\nwidget and a modal dialog."
    "Data|device-data|misc|all|chip catalogue and translations of the Device library|The bundled chip catalogue and the German translation of the selector,\nshared by the Qt 5 and the Qt 6 build of the library."
    "Development|lib${lower}-dev|libdevel|any|development files of the Device library (Qt ${QT_MAJOR_VERSION})|Headers in include/${DEVICE_NAME}/, the CMake package ${DEVICE_NAME} (target\n${DEVICE_NAME}::Device) and ${DEVICE_NAME}.pc for pkg-config."
    "Examples|${lower}-tools|utils|any|chip queries and chip picker of the Device library (Qt ${QT_MAJOR_VERSION})|devicequery${DEVICE_NAME_SUFFIX} answers chip look-ups for build scripts, and\ndevicepicker${DEVICE_NAME_SUFFIX} opens the chip selector dialog and prints the chosen chip."
    "Designer|${lower}-designer-plugin|devel|any|Qt Designer plugin of the Device library (Qt ${QT_MAJOR_VERSION})|Puts the chip selector and its search field into Qt Designer's widget\nbox, group Device."
    "Documentation|${lower}-doc|doc|all|API documentation of the Device library for Qt Creator (Qt ${QT_MAJOR_VERSION})|The API documentation as a Qt help file in Qt's documentation folder,\nwhere Qt Creator finds it.")

set(CPACK_PACKAGE_CONTACT "Device developers <device@example.org>")
set(CPACK_COMPONENTS_ALL)
foreach(entry IN LISTS DEVICE_DEB_COMPONENTS)
    string(REPLACE "|" ";" fields "${entry}")
    list(GET fields 0 component)
    list(GET fields 1 package)
    list(GET fields 2 section)
    list(GET fields 3 architecture)
    list(GET fields 4 synopsis)
    list(GET fields 5 description)
    string(TOUPPER ${component} upper)
    list(APPEND CPACK_COMPONENTS_ALL ${component})
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${package})
    set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
    if(architecture STREQUAL "all")
        set(CPACK_DEBIAN_${upper}_PACKAGE_ARCHITECTURE all)
    endif()
    set(CPACK_DEBIAN_${upper}_DESCRIPTION "${synopsis}\n${description}")
endforeach()

# Every package carries its copyright (Debian policy 12.5), the licence in
# Debian's machine-readable form; the staging script adds it and the
# changelog (12.7), dated by SOURCE_DATE_EPOCH when it is set.
file(READ ${PROJECT_SOURCE_DIR}/LICENSE licence)
string(REGEX REPLACE "\n\n" "\n.\n" licence "${licence}")
string(REGEX REPLACE "\n" "\n " licence "${licence}")
string(REGEX MATCH "Copyright \\(c\\) [^\n]*" holder "${licence}")
string(REPLACE "Copyright (c) " "" holder "${holder}")
file(WRITE ${PROJECT_BINARY_DIR}/deb/copyright
    "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/\n"
    "Upstream-Name: Device\n\n"
    "Files: *\nCopyright: ${holder}\nLicense: BSD-3-Clause\n ${licence}\n")
set(CPACK_DEVICE_COPYRIGHT ${PROJECT_BINARY_DIR}/deb/copyright)
set(CPACK_DEVICE_CATALOGUEDIR ${DEVICE_INSTALL_CATALOGUEDIR})
set(CPACK_DEVICE_DATADIR ${CMAKE_INSTALL_DATADIR})
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/DeviceDebStage.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/DeviceDebStage.cmake)

set(CPACK_GENERATOR DEB)
# CPack's own default summary, which CPackDeb leaves out, so that the first
# line of each package's description is its synopsis (CMake 3.25's
# CPackDeb.cmake prepends any other summary to every description).
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_NAME} built using CMake")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PACKAGE_NAME device)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_DEBIAN_PACKAGE_RELEASE ${DEVICE_DEB_RELEASE})
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)

# Dependencies on other packages' shared libraries are computed; the library
# itself is found in the build tree, and the packages of this build depend on
# each other's exact version.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/lib)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
# Within SONAME 1 a newer library serves what an older one did.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_COMPONENT_RUNTIME_DEPENDS Data)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS Runtime)
# The library's package has ldconfig run through dpkg's trigger.
file(WRITE ${PROJECT_BINARY_DIR}/deb/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/deb/triggers)
set(CPACK_COMPONENT_EXAMPLES_DEPENDS Runtime)
set(CPACK_COMPONENT_DESIGNER_DEPENDS Runtime)
# Hosts compile against Qt's headers too.
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS ${qt_dev_package})

include(CPack)
