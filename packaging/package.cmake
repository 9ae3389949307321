# The Debian package: cpack in the build folder, or the target "package".
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME scn4070a)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_CONTACT "SCN4070A control maintainers <maintainers@scn4070a.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "control and data logging for the SCN4070A mainframe")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Sets up, runs and records scans of an SCN4070A, a scanning data-acquisition
mainframe, over serial port, network or USB. Readings are stored in SQLite
files, shown live in charts and grids, and exported to CSV. The user interface
is Chinese. A simulated instrument comes with it. A command line lists, checks,
exports and draws stored runs, and copies the readings of any number of
instruments into a PostgreSQL database while they are taken.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_SET_DESTDIR OFF)
set(CPACK_PACKAGE_DIRECTORY "${CMAKE_BINARY_DIR}/package")

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# What is loaded at run time shows in no program file: Qt's driver for SQLite, and a font with Chinese,
# without which every text is a row of boxes. Qt's own texts in Chinese, the desktop's program for a log
# and the search for instruments on the network can be done without.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libqt5sql5-sqlite, fonts-wqy-microhei | fonts-noto-cjk")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "qttranslations5-l10n, xdg-utils")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "avahi-utils, postgresql, sqlite3")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA
    "${CMAKE_CURRENT_SOURCE_DIR}/debian/postinst" "${CMAKE_CURRENT_SOURCE_DIR}/debian/postrm")

# Debian wants a change log in each package.
set(change_log "${CMAKE_CURRENT_SOURCE_DIR}/debian/changelog")
file(STRINGS "${change_log}" newest LIMIT_COUNT 1)
if(NOT newest MATCHES "^scn4070a \\(${PROJECT_VERSION}\\)")
    message(FATAL_ERROR "${change_log} has no entry for version ${PROJECT_VERSION}: \"${newest}\"")
endif()
scn_compressed("${change_log}" "${CMAKE_CURRENT_BINARY_DIR}/changelog.gz")
list(APPEND compressed_files "${CMAKE_CURRENT_BINARY_DIR}/changelog.gz")
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/changelog.gz"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/scn4070a")

include(CPack)
