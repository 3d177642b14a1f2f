# The Debian package: what its policy asks to be installed, and how CPack makes it.
execute_process(COMMAND date -u -R -d ${DORN_RELEASE_DATE}
    OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
configure_file(debian/changelog.in changelog @ONLY)
zip_file(${CMAKE_CURRENT_BINARY_DIR}/changelog changelog ${CMAKE_INSTALL_DOCDIR})
zip_file(${PROJECT_SOURCE_DIR}/CHANGELOG.md NEWS ${CMAKE_INSTALL_DOCDIR})
install(FILES debian/copyright DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES debian/lintian-overrides RENAME dorn
    DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides)

set(CPACK_GENERATOR DEB)
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PACKAGE_NAME dorn)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT ${DORN_MAINTAINER})
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "graphical file manager with bookmarks beside the list
dorn shows bookmarks on the left and the files of one directory on the right,
with menus, a toolbar, a path field and a filter above them. Large directories
open quickly, dead mounts do not freeze the window, names may be in any
character set, and the keyboard alone is enough.
.
Files are opened with the programs that a table of name patterns ties to them.")
# Linked libraries are found by shlibdeps. Plug-ins and programs that are run are not linked.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libqt6svg6, file, sensible-utils, xdg-utils")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
    "breeze-icon-theme, less, libglib2.0-bin, qt6-wayland, x-terminal-emulator")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "cups-bsd | lpr, gdb")
include(CPack)
