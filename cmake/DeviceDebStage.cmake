# SPDX-License-Identifier: BSD-3-Clause
# Run by CPack (CPACK_PRE_BUILD_SCRIPTS, cmake/DeviceDeb.cmake) on its staging
# tree, one folder per component, before the packages are made of it: what a
# package for Debian needs beyond an ordinary installation of the build.
#
# - The catalogue moves from <prefix>/data/device/, beside bin/ where
#   DeviceDb::instance() looks, to /usr/share/device/: Debian has no /usr/data,
#   and the programs look in the system's data directories next.
# - Programs and plugins lose their RPATH: under /usr the dynamic linker finds
#   the library by itself, and a search path of their own is what lintian
#   rightly flags.
# - Every package gets its copyright and its changelog in
#   /usr/share/doc/<package>/, dated by SOURCE_DATE_EPOCH when it is set, so
#   that the Qt 5 and the Qt 6 build make the same device-data.
#
# Run again after the packages are made (CPACK_POST_BUILD_SCRIPTS, with
# CPACK_PACKAGE_FILES set), it takes out the postinst and postrm that CPack
# writes for any package with a library in /usr/lib, which only call
# ldconfig: dpkg's trigger, which the library's package activates, does that
# already, as in packages that Debian's own tools make. The package is packed
# again with dpkg-deb, all else unchanged.
if(CPACK_PACKAGE_FILES)
    foreach(deb IN LISTS CPACK_PACKAGE_FILES)
        set(tree ${deb}.tree)
        file(REMOVE_RECURSE ${tree})
        execute_process(COMMAND dpkg-deb --raw-extract ${deb} ${tree} RESULT_VARIABLE status)
        if(NOT status EQUAL 0)
            message(FATAL_ERROR "dpkg-deb cannot unpack ${deb}")
        endif()
        set(trimmed FALSE)
        foreach(script postinst postrm)
            set(file ${tree}/DEBIAN/${script})
            if(EXISTS ${file} AND EXISTS ${tree}/DEBIAN/triggers)
                file(READ ${file} text)
                string(REGEX REPLACE "#![^\n]*|set -e|if \\[ \"\\$1\" = \"[a-z]+\" \\]; then|ldconfig|fi|[ \t\n]" "" rest "${text}")
                if(NOT rest STREQUAL "")
                    message(FATAL_ERROR "${deb}'s ${script} does more than call ldconfig:\n${text}")
                endif()
                file(REMOVE ${file})
                set(trimmed TRUE)
            endif()
        endforeach()
        if(trimmed)
            execute_process(COMMAND dpkg-deb --root-owner-group --build ${tree} ${deb}
                OUTPUT_QUIET RESULT_VARIABLE status)
            if(NOT status EQUAL 0)
                message(FATAL_ERROR "dpkg-deb cannot pack ${deb} again")
            endif()
        endif()
        file(REMOVE_RECURSE ${tree})
    endforeach()
    return()
endif()

set(prefix ${CPACK_PACKAGING_INSTALL_PREFIX})
set(share ${prefix}/${CPACK_DEVICE_DATADIR})
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${component} upper)
    set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
    set(root ${CPACK_TEMPORARY_DIRECTORY}/${component})

    # The catalogues (chips and boards) move to share/device/.
    set(catalogues ${root}${prefix}/${CPACK_DEVICE_CATALOGUEDIR})
    file(GLOB data ${catalogues}/*.csv)
    if(data)
        file(MAKE_DIRECTORY ${root}${share}/device)
        foreach(file IN LISTS data)
            get_filename_component(name ${file} NAME)
            file(RENAME ${file} ${root}${share}/device/${name})
        endforeach()
        # The folders they leave, up to the prefix, if nothing else is in them.
        set(dir ${catalogues})
        while(NOT dir STREQUAL "${root}${prefix}")
            file(GLOB left ${dir}/*)
            if(left)
                break()
            endif()
            file(REMOVE_RECURSE ${dir})
            get_filename_component(dir ${dir} DIRECTORY)
        endwhile()
    endif()

    file(GLOB_RECURSE files LIST_DIRECTORIES false ${root}/*)
    foreach(file IN LISTS files)
        if(NOT IS_SYMLINK ${file})
            file(READ ${file} magic LIMIT 4 HEX)
            if(magic STREQUAL "7f454c46") # ELF
                file(RPATH_REMOVE FILE ${file})
            endif()
        endif()
    endforeach()

    set(doc ${root}${share}/doc/${package})
    file(MAKE_DIRECTORY ${doc})
    file(COPY ${CPACK_DEVICE_COPYRIGHT} DESTINATION ${doc}
        FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
    file(WRITE ${doc}/changelog.Debian
        "${package} (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) unstable; urgency=medium\n\n"
        "  * Release ${CPACK_PACKAGE_VERSION}.\n\n"
        " -- ${CPACK_PACKAGE_CONTACT}  ${date}\n")
    execute_process(COMMAND gzip -9nf ${doc}/changelog.Debian RESULT_VARIABLE status)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "gzip failed on ${doc}/changelog.Debian")
    endif()
endforeach()
