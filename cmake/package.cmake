# What is installed: on Windows the programs' resources, elsewhere the Debian packages, which
# "cpack -G DEB" makes, one for each component.

# In the cache, where scripts find it.
set(CORVANE_FULL_VERSION ${PROJECT_VERSION}.${CORVANE_BUILD_NUMBER} CACHE INTERNAL "")

if(CORVANE_PLATFORM STREQUAL windows)
  enable_language(RC)
  # corvane_resources(PROGRAM TITLE): icon, version and manifest of a program.
  function(corvane_resources program title)
    configure_file(packaging/windows/program.manifest.in ${program}.manifest @ONLY)
    configure_file(packaging/windows/program.rc.in ${program}.rc @ONLY)
    target_sources(${program} PRIVATE ${PROJECT_BINARY_DIR}/${program}.rc)
  endfunction()
  corvane_resources(corvane-server "Corvane Server")
  corvane_resources(corvane-map "Corvane Map")
  return()
endif()

# corvane_documents(PROGRAM)
#
# Starts the package of a program: what is installed from here on belongs to it. Installs its manual
# page, changes and copyright.
macro(corvane_documents program)
  set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME ${program})
  install(FILES ${documents}/${program}.1.gz DESTINATION share/man/man1)
  install(FILES CHANGELOG.md packaging/linux/debian/copyright ${documents}/changelog.gz
    DESTINATION share/doc/${program})
endmacro()

# corvane_guides(PROGRAM)
#
# Installs the documents for a program's users. They link to one another.
function(corvane_guides program)
  install(FILES docs/internet.md docs/map.md docs/operating.md docs/performance.md docs/protocol.md
    docs/security.md docs/web.md DESTINATION share/doc/${program})
  install(DIRECTORY docs/images DESTINATION share/doc/${program})
endfunction()

# corvane_menu_entry(PROGRAM)
#
# Installs a menu entry, the description for software centres, and icons.
function(corvane_menu_entry program)
  install(FILES packaging/linux/${program}.desktop DESTINATION share/applications)
  install(FILES packaging/linux/metainfo/${program}.metainfo.xml DESTINATION share/metainfo)
  install(FILES packaging/icons/${program}.svg DESTINATION share/icons/hicolor/scalable/apps)
  foreach(size 16 24 32 48 64 128 256)
    install(FILES packaging/icons/${program}-${size}.png
      DESTINATION share/icons/hicolor/${size}x${size}/apps RENAME ${program}.png)
  endforeach()
endfunction()

# corvane_server(PROGRAM)
#
# Installs a server below lib, and in bin a script that creates the database before it starts it.
function(corvane_server program)
  install(TARGETS ${program} DESTINATION lib/corvane-server)
  configure_file(packaging/linux/start-server.in start/${program} @ONLY)
  install(PROGRAMS ${CMAKE_CURRENT_BINARY_DIR}/start/${program} DESTINATION bin)
endfunction()

# corvane_unit(UNIT FOLDER folder DESCRIPTION text ABOUT text RESTART lines [OPTION text])
#
# Installs a system service.
function(corvane_unit unit)
  cmake_parse_arguments(PARSE_ARGV 1 "" "" "FOLDER;DESCRIPTION;ABOUT;RESTART;OPTION" "")
  foreach(name folder description about restart option)
    string(TOUPPER ${name} upper)
    set(${name} "${_${upper}}")
  endforeach()
  configure_file(packaging/linux/system/server.service.in ${unit}.service @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${unit}.service DESTINATION /lib/systemd/system)
endfunction()

set(documents ${CMAKE_CURRENT_BINARY_DIR}/documents)
file(MAKE_DIRECTORY ${documents})
add_custom_target(documents
  packaging/linux/make-documents ${CORVANE_FULL_VERSION} $<TARGET_FILE:corvanectl> ${documents}
  WORKING_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
add_dependencies(documents corvanectl)

set(CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
corvane_documents(corvane-serverd)
corvane_guides(corvane-serverd)
corvane_server(corvane-serverd)
install(TARGETS corvanectl DESTINATION bin)
install(PROGRAMS packaging/prepare-data-folder DESTINATION share/corvane-server)
install(FILES packaging/serverdb.sql DESTINATION share/corvane-server)
install(DIRECTORY packaging/tunnel/ packaging/monitoring/
  USE_SOURCE_PERMISSIONS DESTINATION share/doc/corvane-serverd/examples)
install(FILES packaging/linux/user/corvane-server.service DESTINATION lib/systemd/user)
corvane_unit(corvane-server FOLDER corvane-server DESCRIPTION "Corvane Server"
  ABOUT "The machine's server"
  RESTART "# Five starts 5 s apart, then a minute's pause, and so on.
StartLimitIntervalSec=60
StartLimitBurst=5
OnFailure=corvane-server-again.timer")
corvane_unit(corvane-serverd@ FOLDER corvane-serverd/%i DESCRIPTION "Corvane Server %i"
  OPTION "--instance %i "
  ABOUT "One of several servers of the machine" RESTART "StartLimitIntervalSec=0")
foreach(units lib/systemd/user /lib/systemd/system)
  install(FILES packaging/linux/corvane-server-again.timer DESTINATION ${units})
endforeach()
install(FILES packaging/linux/fail2ban.conf
  DESTINATION /etc/fail2ban/filter.d RENAME corvane-server.conf)
install(FILES ${documents}/corvanectl.1.gz DESTINATION share/man/man1)
install(FILES packaging/linux/completion/corvanectl.bash
  DESTINATION share/bash-completion/completions RENAME corvanectl)
install(FILES packaging/linux/completion/_corvanectl DESTINATION share/zsh/vendor-completions)
install(FILES packaging/linux/completion/corvanectl.fish DESTINATION share/fish/vendor_completions.d)

corvane_documents(corvane-server)
corvane_menu_entry(corvane-server)
corvane_server(corvane-server)

corvane_documents(corvane-map)
corvane_guides(corvane-map)
corvane_menu_entry(corvane-map)
install(TARGETS corvane-map DESTINATION bin)
install(FILES packaging/linux/corvane-map.mime.xml
  DESTINATION share/mime/packages RENAME corvane-map.xml)

corvane_documents(corvane-web)
corvane_guides(corvane-web)
install(TARGETS corvane-web DESTINATION bin)
install(FILES packaging/linux/web/corvane-web.service DESTINATION /lib/systemd/system)
install(DIRECTORY packaging/web/ DESTINATION share/doc/corvane-web/examples)
install(DIRECTORY DESTINATION /etc/corvane-web)

set(CPACK_PACKAGE_NAME corvane)
set(CPACK_PACKAGE_VERSION ${CORVANE_FULL_VERSION})
set(CPACK_PACKAGE_CONTACT "Corvane Server Developers <noreply@corvane.invalid>")
set(CPACK_COMPONENTS_ALL corvane-serverd corvane-server corvane-map corvane-web)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS OFF)
set(CPACK_DEBIAN_CORVANE-SERVERD_PACKAGE_NAME corvane-serverd)
set(CPACK_DEBIAN_CORVANE-SERVERD_DESCRIPTION
  "map-sharing server for groups of players, without a window\n\
Players run a client such as corvane-map. It logs into a password-protected\n\
network, reports the player's position and shows those of the others. Runs\n\
as a service, administered from a shell by corvanectl.")
set(CPACK_DEBIAN_CORVANE-SERVERD_PACKAGE_DEPENDS "sqlite3, adduser")
set(CPACK_DEBIAN_CORVANE-SERVERD_PACKAGE_SUGGESTS "stunnel4 | haproxy, ca-certificates")
# Until 1.0.0.1 one package had the files of both.
set(CPACK_DEBIAN_CORVANE-SERVERD_PACKAGE_BREAKS "corvane-server (<< 1.0.0.2)")
set(CPACK_DEBIAN_CORVANE-SERVERD_PACKAGE_REPLACES "corvane-server (<< 1.0.0.2)")
set(CPACK_DEBIAN_CORVANE-SERVERD_PACKAGE_CONTROL_EXTRA
  ${CMAKE_CURRENT_SOURCE_DIR}/packaging/linux/debian/conffiles
  ${CMAKE_CURRENT_SOURCE_DIR}/packaging/linux/debian/postinst
  ${CMAKE_CURRENT_SOURCE_DIR}/packaging/linux/debian/prerm
  ${CMAKE_CURRENT_SOURCE_DIR}/packaging/linux/debian/postrm)
set(CPACK_DEBIAN_CORVANE-SERVER_PACKAGE_NAME corvane-server)
set(CPACK_DEBIAN_CORVANE-SERVER_DESCRIPTION
  "map-sharing server for groups of players, with a window\n\
Players run a client such as corvane-map. It logs into a password-protected\n\
network, reports the player's position and shows those of the others. This\n\
is the desktop program with its tray icon.")
set(CPACK_DEBIAN_CORVANE-SERVER_PACKAGE_DEPENDS "corvane-serverd (= ${CORVANE_FULL_VERSION})")
# On Wayland desktops Qt loads this at run time.
set(CPACK_DEBIAN_CORVANE-SERVER_PACKAGE_SUGGESTS qt6-wayland)
set(CPACK_DEBIAN_CORVANE-MAP_PACKAGE_NAME corvane-map)
set(CPACK_DEBIAN_CORVANE-MAP_DESCRIPTION
  "map of the players of a Corvane network\n\
Logs into a network of a Corvane server and shows its members on a map, with\n\
their state and what the server says. Administrators of a network manage it\n\
from here.")
# The system's authorities, for encrypted connections.
set(CPACK_DEBIAN_CORVANE-MAP_PACKAGE_RECOMMENDS ca-certificates)
set(CPACK_DEBIAN_CORVANE-MAP_PACKAGE_SUGGESTS qt6-wayland)
set(CPACK_DEBIAN_CORVANE-WEB_PACKAGE_NAME corvane-web)
set(CPACK_DEBIAN_CORVANE-WEB_DESCRIPTION
  "map of the players of a Corvane network in a browser\n\
Logs into networks of a Corvane server and shows their members in a browser,\n\
read-only, to those who have a link. Runs as a service behind a web server.")
set(CPACK_DEBIAN_CORVANE-WEB_PACKAGE_DEPENDS "libjs-leaflet, adduser")
set(CPACK_DEBIAN_CORVANE-WEB_PACKAGE_SUGGESTS "nginx | caddy")
# The system's authorities, for encrypted connections.
set(CPACK_DEBIAN_CORVANE-WEB_PACKAGE_RECOMMENDS ca-certificates)
set(CPACK_DEBIAN_CORVANE-WEB_PACKAGE_CONTROL_EXTRA
  ${CMAKE_CURRENT_SOURCE_DIR}/packaging/linux/web/debian/postinst
  ${CMAKE_CURRENT_SOURCE_DIR}/packaging/linux/web/debian/prerm
  ${CMAKE_CURRENT_SOURCE_DIR}/packaging/linux/web/debian/postrm)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
include(CPack)
