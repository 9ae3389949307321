# The dark style sheet and its icons, from Debian's package of QDarkStyleSheet. Nothing of it is
# kept in this tree; docs/licences.md credits it.

set(SCN_QDARKSTYLE_PACKAGE python3-qdarkstyle)
set(SCN_QDARKSTYLE_INSTALLED /usr/lib/python3/dist-packages/qdarkstyle)

# scn_find_qdarkstyle(VARIABLE)
# Sets the variable to a folder with darkstyle.qss and rc/*.png: an installed copy, else one that is
# unpacked from the downloaded package. Installing the package would pull in all of Python's Qt.
# The download is kept for all presets in one folder below build/.
function(scn_find_qdarkstyle out)
    if(EXISTS "${SCN_QDARKSTYLE_INSTALLED}/dark/darkstyle.qss")
        set(${out} "${SCN_QDARKSTYLE_INSTALLED}/dark" PARENT_SCOPE)
        return()
    endif()

    set(cache "${CMAKE_SOURCE_DIR}/build/qdarkstyle")
    set(unpacked "${cache}/root${SCN_QDARKSTYLE_INSTALLED}/dark")
    set(complete "${cache}/complete")
    file(MAKE_DIRECTORY "${cache}")
    # Two presets may be configured at the same time.
    file(LOCK "${cache}" DIRECTORY GUARD FUNCTION TIMEOUT 300)
    if(NOT EXISTS "${complete}")
        _scn_unpack_qdarkstyle("${cache}")
        if(NOT EXISTS "${unpacked}/darkstyle.qss")
            message(FATAL_ERROR
                "The package ${SCN_QDARKSTYLE_PACKAGE} holds no dark/darkstyle.qss; "
                "the style sheet of another version cannot be used.")
        endif()
        file(TOUCH "${complete}")
    endif()
    set(${out} "${unpacked}" PARENT_SCOPE)
endfunction()

function(_scn_unpack_qdarkstyle cache)
    find_program(SCN_APT_GET apt-get)
    find_program(SCN_DPKG_DEB dpkg-deb)
    mark_as_advanced(SCN_APT_GET SCN_DPKG_DEB)
    set(advice
        "Install the package ${SCN_QDARKSTYLE_PACKAGE}, or run apt-get update and configure again.")
    if(NOT SCN_APT_GET OR NOT SCN_DPKG_DEB)
        message(FATAL_ERROR
            "The dark style sheet is neither installed nor can it be fetched: this system has no "
            "apt-get or no dpkg-deb. ${advice}")
    endif()

    message(STATUS "Fetching ${SCN_QDARKSTYLE_PACKAGE} for the dark style sheet")
    file(REMOVE_RECURSE "${cache}/root")
    file(GLOB old "${cache}/*.deb")
    if(old)
        file(REMOVE ${old})
    endif()
    execute_process(
        COMMAND "${SCN_APT_GET}" download "${SCN_QDARKSTYLE_PACKAGE}"
        WORKING_DIRECTORY "${cache}"
        RESULT_VARIABLE result OUTPUT_QUIET ERROR_VARIABLE errors)
    file(GLOB package "${cache}/*.deb")
    if(NOT result EQUAL 0 OR NOT package)
        message(FATAL_ERROR
            "The dark style sheet is not installed and could not be fetched.\n${errors}${advice}")
    endif()
    execute_process(
        COMMAND "${SCN_DPKG_DEB}" -x "${package}" "${cache}/root"
        RESULT_VARIABLE result ERROR_VARIABLE errors)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "${package} could not be unpacked.\n${errors}${advice}")
    endif()
endfunction()

# scn_write_if_changed(FILE TEXT): keeps the file's time, and with it what is built from it.
function(scn_write_if_changed file text)
    if(EXISTS "${file}")
        file(READ "${file}" present)
        if(present STREQUAL text)
            return()
        endif()
    endif()
    file(WRITE "${file}" "${text}")
endfunction()

# scn_dark_style_sheet(FOLDER OUTPUT)
# Writes the folder's style sheet with the icons' paths of our resource bundle.
function(scn_dark_style_sheet folder output)
    file(READ "${folder}/darkstyle.qss" sheet)
    string(REPLACE ":/qss_icons/dark/rc/" ":/dark/" sheet "${sheet}")
    if(sheet MATCHES "qss_icons")
        message(FATAL_ERROR "${folder}/darkstyle.qss names icons in a place that is not known.")
    endif()
    scn_write_if_changed("${output}" "${sheet}")
endfunction()
