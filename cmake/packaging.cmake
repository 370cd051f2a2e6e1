# packaging.cmake: The Debian package `cpack -G DEB` builds from what installing puts in place.
set(CORVETTA_PACKAGE_MAINTAINER
    "Corvetta maintainers <maintainers@users.noreply.c-seed-8f0f59dd.example>"
    CACHE STRING "Maintainer named in the Debian package")

set(CPACK_PACKAGE_NAME corvetta)
set(CPACK_PACKAGE_VENDOR Corvetta)
set(CPACK_PACKAGE_CONTACT "${CORVETTA_PACKAGE_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "window layout manager in the status bar")
string(CONCAT CPACK_PACKAGE_DESCRIPTION
       "Corvetta moves and resizes other applications' windows from global shortcuts, a\n"
       "command palette and a local automation socket, applies layout templates, saves and\n"
       "restores workspaces, and keeps a log book of what it did. It works on X11 desktops.\n"
       "corvetta-ctl drives it from scripts.")
# The package installs under /usr (the DEB generator's prefix) whatever prefix the build tree was
# configured with; the installed files name their folders as they are generated while installing.
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_PACKAGE_SECTION x11)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
# The library packages come from the binaries themselves (dpkg-shlibdeps), so the list follows
# what is linked without one to keep up by hand.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# An edited autostart entry survives upgrades, as any file under /etc should.
set(corvetta_conffiles "${CMAKE_CURRENT_BINARY_DIR}/debian/conffiles")
file(WRITE "${corvetta_conffiles}" "/etc/xdg/autostart/corvetta.desktop\n")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA "${corvetta_conffiles}")

set(CPACK_GENERATOR DEB)
# The source package leaves out what git and the build trees keep beside the sources.
set(CPACK_SOURCE_IGNORE_FILES "/\\\\.git(/|$)" "/build/" "/\\\\.cache/")
include(CPack)
