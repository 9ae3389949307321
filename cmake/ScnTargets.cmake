# The compiler settings of all our own code, and the functions that declare a library, a program
# and a test of this project.

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

# scn_test(NAME SOURCES file... [LINK library...] [TIMEOUT seconds] [LABELS label...]
#          [ENVIRONMENT variable=value...] [ROWS function:row...])
# One Qt Test program and its ctest entry. It runs under the "offscreen" platform with a private
# runtime directory; a label "long" keeps it out of the ordinary run, "random" allows no second
# try, "serial" gives it the machine.
# With ROWS there is an entry for each of them, so that each runs in a process of its own.
function(scn_test name)
    cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LINK;LABELS;ENVIRONMENT;ROWS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    set_target_properties(${name} PROPERTIES
        AUTOMOC ON
        RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
    target_link_libraries(${name} PRIVATE scn_qt_options ${ARG_LINK} Qt5::Test)
    target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}/tests")
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 120)
    endif()

    set(entries ${name})
    if(ARG_ROWS)
        set(entries)
        foreach(row IN LISTS ARG_ROWS)
            add_test(NAME ${name}.${row} COMMAND ${name} ${row})
            list(APPEND entries ${name}.${row})
        endforeach()
    else()
        add_test(NAME ${name} COMMAND ${name})
    endif()
    set_tests_properties(${entries} PROPERTIES
        TIMEOUT ${ARG_TIMEOUT}
        LABELS "${ARG_LABELS}"
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;XDG_RUNTIME_DIR=${CMAKE_BINARY_DIR}/runtime;LC_ALL=C.UTF-8;ASAN_OPTIONS=detect_leaks=0:verify_asan_link_order=0;UBSAN_OPTIONS=print_stacktrace=1;${ARG_ENVIRONMENT}")
    if("serial" IN_LIST ARG_LABELS)
        set_tests_properties(${entries} PROPERTIES RUN_SERIAL TRUE)
    endif()
endfunction()

file(MAKE_DIRECTORY "${CMAKE_BINARY_DIR}/runtime")
file(CHMOD "${CMAKE_BINARY_DIR}/runtime" DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
