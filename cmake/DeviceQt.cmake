# SPDX-License-Identifier: BSD-3-Clause
# Which Qt to build against, and the names that follow from it.
#
#   cmake -DQT_MAJOR_VERSION=6 ...   (default 5)
#
# The two builds are not binary compatible (Qt's containers differ in size),
# so the Qt 6 one is installed under names of its own, as KDE names its 5/6
# packages: libDevice6.so.1, include/Device6/, the CMake package Device6 with
# the target Device6::Device, and Device6.pc. The Qt 5 build keeps the plain
# names. Both can be installed into one prefix.
set(QT_MAJOR_VERSION 5 CACHE STRING "Major version of Qt to build against: 5 or 6")
set_property(CACHE QT_MAJOR_VERSION PROPERTY STRINGS 5 6)
if(QT_MAJOR_VERSION STREQUAL "5")
    set(DEVICE_QT_MIN_VERSION 5.14)
    set(DEVICE_NAME_SUFFIX "")
elseif(QT_MAJOR_VERSION STREQUAL "6")
    set(DEVICE_QT_MIN_VERSION 6.2)
    set(DEVICE_NAME_SUFFIX 6)
else()
    message(FATAL_ERROR "QT_MAJOR_VERSION must be 5 or 6, not '${QT_MAJOR_VERSION}'")
endif()
set(DEVICE_QT Qt${QT_MAJOR_VERSION})
set(DEVICE_NAME Device${DEVICE_NAME_SUFFIX})

# Headers go to include/Device/ (Qt 5) or include/Device6/ (Qt 6), the one
# include root a host gets; either way it writes <devicedb.h> or
# <Device/devicedb.h>.
set(DEVICE_INSTALL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/${DEVICE_NAME})

find_package(${DEVICE_QT} ${DEVICE_QT_MIN_VERSION} REQUIRED COMPONENTS Core Gui Widgets)
if(QT_MAJOR_VERSION STREQUAL "6")
    # QRegExp, whose matching the search is defined by, lives on in Qt 6's
    # compatibility module.
    find_package(Qt6 ${DEVICE_QT_MIN_VERSION} REQUIRED COMPONENTS Core5Compat)
endif()
# Designer's plugin interfaces, when present, for the Designer plugin and its
# test (designer/).
if(DEVICE_BUILD_DESIGNER_PLUGIN)
    find_package(${DEVICE_QT} ${DEVICE_QT_MIN_VERSION} QUIET COMPONENTS UiPlugin)
endif()

# The Qt commands of the chosen major version (Qt 5.14 has no version-less
# ones), each putting its generated files into <out-var>.
function(device_qt_wrap_ui out)
    if(QT_MAJOR_VERSION STREQUAL "6")
        qt6_wrap_ui(files ${ARGN})
    else()
        qt5_wrap_ui(files ${ARGN})
    endif()
    set(${out} ${files} PARENT_SCOPE)
endfunction()

function(device_qt_add_resources out)
    if(QT_MAJOR_VERSION STREQUAL "6")
        qt6_add_resources(files ${ARGN})
    else()
        qt5_add_resources(files ${ARGN})
    endif()
    set(${out} ${files} PARENT_SCOPE)
endfunction()

function(device_qt_add_translation out)
    if(QT_MAJOR_VERSION STREQUAL "6")
        qt6_add_translation(files ${ARGN})
    else()
        qt5_add_translation(files ${ARGN})
    endif()
    set(${out} ${files} PARENT_SCOPE)
endfunction()
