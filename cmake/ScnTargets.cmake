# The compiler settings of all our own code, and the functions that declare a library and a program
# of this project.

add_library(scn_options INTERFACE)
target_compile_options(scn_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(SCN_WARNINGS_AS_ERRORS)
    target_compile_options(scn_options INTERFACE -Werror)
endif()
if(SCN_SANITIZE)
    target_compile_options(scn_options INTERFACE
        -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
    target_link_options(scn_options INTERFACE -fsanitize=address,undefined)
endif()

if(SCN_BUILD_FUZZERS)
    if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        message(FATAL_ERROR "SCN_BUILD_FUZZERS wants clang++ as the compiler.")
    endif()
    # Warnings are the business of the usual compiler, not of clang.
    target_compile_options(scn_options INTERFACE
        -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined
        -fno-omit-frame-pointer -w)
    target_link_options(scn_options INTERFACE -fsanitize=address,undefined)
endif()

# Qt's stricter rules: slips become compile errors, log lines carry no file and no line.
add_library(scn_qt_options INTERFACE)
target_compile_definitions(scn_qt_options INTERFACE
    QT_NO_CAST_FROM_ASCII
    QT_NO_CAST_TO_ASCII
    QT_NO_CAST_FROM_BYTEARRAY
    QT_NO_URL_CAST_FROM_STRING
    QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
    QT_NO_FOREACH
    QT_USE_QSTRINGBUILDER
    QT_NO_MESSAGELOGCONTEXT)
target_link_libraries(scn_qt_options INTERFACE scn_options)

# scn_library(NAME [QT] SOURCES file... [LINK library...])
# A static library of one folder. It links what its files include, no more and no less. Its headers
# are included by the folder's name, "folder/header.h". QT runs moc and applies Qt's stricter rules.
function(scn_library name)
    cmake_parse_arguments(ARG "QT" "" "SOURCES;LINK" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    if(ARG_QT)
        set_target_properties(${name} PROPERTIES AUTOMOC ON)
        target_link_libraries(${name} PRIVATE scn_qt_options)
    else()
        target_link_libraries(${name} PRIVATE scn_options)
    endif()
    target_link_libraries(${name} PUBLIC ${ARG_LINK})
    cmake_path(GET CMAKE_CURRENT_SOURCE_DIR PARENT_PATH root)
    target_include_directories(${name} PUBLIC "${root}")
endfunction()

# scn_program(NAME OUTPUT file-name [QT] SOURCES file... [LINK library...])
function(scn_program name)
    cmake_parse_arguments(ARG "QT" "OUTPUT" "SOURCES;LINK" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    set_target_properties(${name} PROPERTIES OUTPUT_NAME "${ARG_OUTPUT}")
    if(ARG_QT)
        set_target_properties(${name} PROPERTIES AUTOMOC ON)
        target_link_libraries(${name} PRIVATE scn_qt_options)
    else()
        target_link_libraries(${name} PRIVATE scn_options)
    endif()
    target_link_libraries(${name} PRIVATE ${ARG_LINK})
endfunction()
