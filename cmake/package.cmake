# What turns the program into something to install: on Windows its resources, elsewhere the Debian
# package, which "cpack -G DEB" makes.

# Kept where scripts find it, too.
set(CORVANE_FULL_VERSION ${PROJECT_VERSION}.${CORVANE_BUILD_NUMBER} CACHE INTERNAL "")

if(CORVANE_PLATFORM STREQUAL windows)
  enable_language(RC)
  configure_file(packaging/windows/corvane-server.rc.in corvane-server.rc @ONLY)
  target_sources(corvane-server PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/corvane-server.rc)
  return()
endif()

# The program itself lies apart: what users start lays down the database first.
install(TARGETS corvane-server DESTINATION lib/corvane-server)
install(PROGRAMS packaging/linux/corvane-server DESTINATION bin)
install(PROGRAMS packaging/prepare-data-folder DESTINATION share/corvane-server)
install(FILES packaging/serverdb.sql DESTINATION share/corvane-server)
install(FILES packaging/linux/corvane-server.desktop DESTINATION share/applications)
install(FILES packaging/linux/corvane-server.service DESTINATION lib/systemd/user)
install(FILES CHANGELOG.md docs/operating.md DESTINATION share/doc/corvane-server)
install(DIRECTORY docs/images DESTINATION share/doc/corvane-server FILES_MATCHING PATTERN *.png)
install(FILES packaging/icons/corvane-server.svg DESTINATION share/icons/hicolor/scalable/apps)
foreach(size 16 24 32 48 64 128 256)
  install(FILES packaging/icons/corvane-server-${size}.png
    DESTINATION share/icons/hicolor/${size}x${size}/apps RENAME corvane-server.png)
endforeach()

set(CPACK_PACKAGE_NAME corvane-server)
set(CPACK_PACKAGE_VERSION ${CORVANE_FULL_VERSION})
set(CPACK_PACKAGE_CONTACT "Corvane Server <root@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "map-sharing server for groups of players")
set(CPACK_PACKAGE_DESCRIPTION
  "Clients of the mapping tool log into password-protected networks, report their players' positions and see those of the other members. Runs as a desktop program with a tray icon, or without a display.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS sqlite3)
# Programs for Wayland desktops load this one themselves.
set(CPACK_DEBIAN_PACKAGE_SUGGESTS qt6-wayland)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
include(CPack)
