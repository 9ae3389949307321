# The dark style sheet and its icons come from Debian's package of QDarkStyleSheet. The tree keeps no
# copy; docs/licences.md credits it.

set(SCN_QDARKSTYLE_PACKAGE python3-qdarkstyle)
set(SCN_QDARKSTYLE_INSTALLED /usr/lib/python3/dist-packages/qdarkstyle/dark)
set(SCN_QDARKSTYLE_DIR "" CACHE PATH
    "Folder with QDarkStyleSheet's darkstyle.qss and rc/; empty: the installed or downloaded one")

# scn_find_qdarkstyle(VARIABLE)
# Sets the variable to a folder with darkstyle.qss and rc/*.png: SCN_QDARKSTYLE_DIR, the installed
# package, or what was unpacked below build/, in this order. The package is downloaded only where
# none of them is there. It is not installed: it depends on all of Python's Qt.
function(scn_find_qdarkstyle out)
    if(SCN_QDARKSTYLE_DIR)
        if(NOT EXISTS "${SCN_QDARKSTYLE_DIR}/darkstyle.qss")
            message(FATAL_ERROR "SCN_QDARKSTYLE_DIR: no darkstyle.qss in ${SCN_QDARKSTYLE_DIR}")
        endif()
        set(${out} "${SCN_QDARKSTYLE_DIR}" PARENT_SCOPE)
        return()
    endif()
    if(EXISTS "${SCN_QDARKSTYLE_INSTALLED}/darkstyle.qss")
        set(${out} "${SCN_QDARKSTYLE_INSTALLED}" PARENT_SCOPE)
        return()
    endif()

    # All build folders of this tree share one download.
    set(cache "${CMAKE_SOURCE_DIR}/build/qdarkstyle")
    set(unpacked "${cache}/root${SCN_QDARKSTYLE_INSTALLED}")
    if(NOT EXISTS "${cache}/complete")
        file(MAKE_DIRECTORY "${cache}")
        # Another preset may be configuring at the same time; whoever comes second finds it done.
        file(LOCK "${cache}" DIRECTORY GUARD FUNCTION TIMEOUT 300)
        if(NOT EXISTS "${cache}/complete")
            _scn_unpack_qdarkstyle("${cache}")
            if(NOT EXISTS "${unpacked}/darkstyle.qss")
                message(FATAL_ERROR
                    "The package ${SCN_QDARKSTYLE_PACKAGE} holds no dark/darkstyle.qss; "
                    "the style sheet of another version cannot be used.")
            endif()
            file(TOUCH "${cache}/complete")
        endif()
    endif()
    set(${out} "${unpacked}" PARENT_SCOPE)
endfunction()

# _scn_unpack_qdarkstyle(CACHE): downloads the package and unpacks it to CACHE/root. A package that
# is there already, brought by hand or left by a broken configure, is unpacked without the network.
function(_scn_unpack_qdarkstyle cache)
    find_program(SCN_APT_GET apt-get)
    find_program(SCN_DPKG_DEB dpkg-deb)
    mark_as_advanced(SCN_APT_GET SCN_DPKG_DEB)
    string(CONCAT advice
        "Do one of these and configure again:\n"
        "  - install the package ${SCN_QDARKSTYLE_PACKAGE};\n"
        "  - with the network on, run apt-get update;\n"
        "  - copy build/qdarkstyle from another tree;\n"
        "  - set SCN_QDARKSTYLE_DIR to a folder with darkstyle.qss and rc/.")
    if(NOT SCN_APT_GET OR NOT SCN_DPKG_DEB)
        message(FATAL_ERROR
            "The dark style sheet is not installed, and without apt-get and dpkg-deb it cannot be "
            "downloaded.\n${advice}")
    endif()

    file(REMOVE_RECURSE "${cache}/root")
    file(GLOB package "${cache}/${SCN_QDARKSTYLE_PACKAGE}_*.deb")
    if(NOT package)
        message(STATUS "Downloading ${SCN_QDARKSTYLE_PACKAGE} for the dark style sheet")
        execute_process(
            COMMAND "${SCN_APT_GET}" download "${SCN_QDARKSTYLE_PACKAGE}"
            WORKING_DIRECTORY "${cache}"
            RESULT_VARIABLE result OUTPUT_QUIET ERROR_VARIABLE errors)
        file(GLOB package "${cache}/${SCN_QDARKSTYLE_PACKAGE}_*.deb")
        if(NOT result EQUAL 0 OR NOT package)
            message(FATAL_ERROR
                "The dark style sheet is not installed and could not be downloaded:\n"
                "${errors}${advice}")
        endif()
    endif()
    list(GET package 0 package)
    execute_process(
        COMMAND "${SCN_DPKG_DEB}" -x "${package}" "${cache}/root"
        RESULT_VARIABLE result ERROR_VARIABLE errors)
    if(NOT result EQUAL 0)
        file(REMOVE "${package}")
        message(FATAL_ERROR "${package} could not be unpacked and was deleted:\n${errors}${advice}")
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

# scn_dark_style_sheet(FOLDER ADDITIONS OUTPUT)
# Writes the folder's style sheet with the icons' paths of our resource bundle, and the file ADDITIONS after
# it.
function(scn_dark_style_sheet folder additions output)
    file(READ "${folder}/darkstyle.qss" sheet)
    string(REPLACE ":/qss_icons/dark/rc/" ":/dark/" sheet "${sheet}")
    if(sheet MATCHES "qss_icons")
        message(FATAL_ERROR "${folder}/darkstyle.qss names icons in a place that is not known.")
    endif()
    # A rule for whatever is inside some kind of widget is tried on every widget of the program, up its whole
    # line of parents. These are for kinds that have nothing inside them here, or that the program does not have.
    foreach(selector IN ITEMS "QToolBar \\*" "QCheckBox QWidget:disabled" "QRadioButton QWidget"
                              "QToolBox QScrollArea QWidget QWidget")
        string(REGEX REPLACE "\n${selector} {[^}]*}\n" "\n" shorter "${sheet}")
        if(shorter STREQUAL sheet)
            message(FATAL_ERROR "${folder}/darkstyle.qss has no rule for ${selector}.")
        endif()
        set(sheet "${shorter}")
    endforeach()
    file(READ "${additions}" rules)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${additions}")
    scn_write_if_changed("${output}" "${sheet}${rules}")
endfunction()
