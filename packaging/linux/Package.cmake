# A Debian package: the installation folder below /usr/lib, a systemd unit and a user of its own.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX "/usr/lib/varnholt-server")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "adduser")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "Serves the control pages to browsers and sends their commands to equipment on\nserial lines, TCP and UDP.")
# The libraries of the package itself are found beside the programs.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA
    "${CMAKE_CURRENT_SOURCE_DIR}/linux/postinst"
    "${CMAKE_CURRENT_SOURCE_DIR}/linux/prerm"
    "${CMAKE_CURRENT_SOURCE_DIR}/linux/postrm")
# Only the package places the unit: `cmake --install` leaves the system's folders alone.
install(FILES linux/varnholt-server.service DESTINATION /usr/lib/systemd/system COMPONENT unit EXCLUDE_FROM_ALL)
set(CPACK_INSTALL_CMAKE_PROJECTS "${CMAKE_BINARY_DIR};Server;ALL;/" "${CMAKE_BINARY_DIR};Server;unit;/")
