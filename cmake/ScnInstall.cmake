# Where `cmake --install` puts the programs, below any prefix.
include(GNUInstallDirs)

# The program keeps its data beside itself, and only the launcher starts it: it is in no folder of
# the search path.
set(SCN_INSTALL_PROGRAM_DIR lib/scn4070a)
cmake_path(RELATIVE_PATH SCN_INSTALL_PROGRAM_DIR
    BASE_DIRECTORY "${CMAKE_INSTALL_BINDIR}"
    OUTPUT_VARIABLE SCN_PROGRAM_FROM_BIN)
