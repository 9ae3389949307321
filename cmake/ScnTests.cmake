# The functions that declare the tests. A folder of tests is one program, with a test in each
# test_<name>.cpp; ctest has an entry for each test, which runs in a process of its own.

# scn_test_program(NAME [SOURCES helper...] [LINK library...] [LABELS label...])
# The program of this folder's tests. The labels are those of all of them. Every test_*.cpp of the
# folder must be a test, and every function and row of a test must have an entry: the entry
# NAME.entries fails otherwise.
function(scn_test_program name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINK;LABELS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    set_target_properties(${name} PROPERTIES
        AUTOMOC ON
        RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
    target_link_libraries(${name} PRIVATE scn_qt_options scn_test_main ${ARG_LINK} Qt5::Test)
    target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}/tests")
    set_property(DIRECTORY PROPERTY SCN_TEST_PROGRAM ${name})
    set_property(DIRECTORY PROPERTY SCN_TEST_LABELS ${ARG_LABELS})

    add_test(NAME ${name}.entries
        COMMAND ${name} --check "$<TARGET_PROPERTY:${name},SCN_ENTRIES>"
        COMMAND_EXPAND_LISTS)
    _scn_set_test_properties(${name}.entries TIMEOUT 120)
    cmake_language(DEFER CALL _scn_check_folder)
endfunction()

# scn_test(NAME [TIMEOUT seconds] [LABELS label...] [ENVIRONMENT variable=value...]
#          [ROWS function[:row]...])
# The test in NAME.cpp and its ctest entry. It runs under the "offscreen" platform with a private
# runtime directory, and without a folder for data: a test whose programs keep any gives them one of
# its own. A label "long" keeps it out of the ordinary run, "random" allows a system test no second
# try, "serial" gives it the machine, "contract" marks what code outside relies on.
# With ROWS there is an entry for each of them.
function(scn_test name)
    cmake_parse_arguments(ARG "" "TIMEOUT" "LABELS;ENVIRONMENT;ROWS" ${ARGN})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 300)
    endif()
    set(properties
        TIMEOUT ${ARG_TIMEOUT} LABELS ${ARG_LABELS} ENVIRONMENT ${ARG_ENVIRONMENT})
    get_property(program DIRECTORY PROPERTY SCN_TEST_PROGRAM)
    target_sources(${program} PRIVATE ${name}.cpp)
    set_property(DIRECTORY APPEND PROPERTY SCN_TEST_SOURCES ${name}.cpp)
    if(NOT ARG_ROWS)
        _scn_add_entry(${name} TEST ${name} ${properties})
    endif()
    foreach(row IN LISTS ARG_ROWS)
        _scn_add_entry(${name}.${row} TEST ${name} ROW ${row} ${properties})
    endforeach()
endfunction()

# scn_test_again(NAME TEST test [ROW function[:row]] [PROGRAM target] [TIMEOUT seconds]
#                [LABELS label...] [ENVIRONMENT variable=value...])
# A further entry NAME for a test or one row of it, with more of everything.
function(scn_test_again name)
    _scn_add_entry(${name} ${ARGN})
endfunction()

function(_scn_add_entry name)
    cmake_parse_arguments(ARG "" "TEST;ROW;PROGRAM;TIMEOUT" "LABELS;ENVIRONMENT" ${ARGN})
    get_property(program DIRECTORY PROPERTY SCN_TEST_PROGRAM)
    if(ARG_ROW)
        set_property(TARGET ${program} APPEND PROPERTY SCN_ENTRIES "${ARG_TEST} ${ARG_ROW}")
    else()
        set_property(TARGET ${program} APPEND PROPERTY SCN_ENTRIES "${ARG_TEST}")
    endif()
    if(ARG_PROGRAM)
        set(program ${ARG_PROGRAM})
    endif()
    add_test(NAME ${name} COMMAND ${program} ${ARG_TEST} ${ARG_ROW})
    _scn_set_test_properties(${name}
        TIMEOUT "${ARG_TIMEOUT}" LABELS ${ARG_LABELS} ENVIRONMENT ${ARG_ENVIRONMENT})
endfunction()

function(_scn_set_test_properties entry)
    cmake_parse_arguments(ARG "" "TIMEOUT" "LABELS;ENVIRONMENT" ${ARGN})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 300)
    endif()
    get_property(labels DIRECTORY PROPERTY SCN_TEST_LABELS)
    list(APPEND labels ${ARG_LABELS})
    # The return code is that of testprogram::skip().
    set_tests_properties(${entry} PROPERTIES
        TIMEOUT ${ARG_TIMEOUT}
        LABELS "${labels}"
        SKIP_RETURN_CODE 77
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;XDG_RUNTIME_DIR=${CMAKE_BINARY_DIR}/runtime;XDG_DATA_HOME=/dev/null;SCN4070A_LOCK_FOLDER=${CMAKE_BINARY_DIR}/locks;LC_ALL=C.UTF-8;ASAN_OPTIONS=detect_leaks=0:verify_asan_link_order=0;UBSAN_OPTIONS=print_stacktrace=1;${ARG_ENVIRONMENT}")
    if("serial" IN_LIST labels)
        set_tests_properties(${entry} PROPERTIES RUN_SERIAL TRUE)
    elseif("system" IN_LIST labels)
        # They take longest, and ctest starts the longest first.
        set_tests_properties(${entry} PROPERTIES COST 30)
    endif()
endfunction()

# Called at the end of a folder of tests.
function(_scn_check_folder)
    get_property(listed DIRECTORY PROPERTY SCN_TEST_SOURCES)
    file(GLOB present CONFIGURE_DEPENDS
        RELATIVE "${CMAKE_CURRENT_SOURCE_DIR}" "${CMAKE_CURRENT_SOURCE_DIR}/test_*.cpp")
    list(REMOVE_ITEM present ${listed})
    if(present)
        message(FATAL_ERROR "${CMAKE_CURRENT_SOURCE_DIR}: no scn_test() for ${present}")
    endif()
endfunction()

# An instrument that a user of this machine has open is no concern of the tests, and theirs none of the user.
file(MAKE_DIRECTORY "${CMAKE_BINARY_DIR}/locks" "${CMAKE_BINARY_DIR}/runtime")
file(CHMOD "${CMAKE_BINARY_DIR}/runtime" DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
