# install_session_files.cmake: Writes the desktop entries, the systemd user unit and the man pages
# with the folders of this installation, and installs them.
#
# Runs while installing, not while configuring: `cmake --install --prefix DIR` and the package
# builder choose the prefix only then, and a file naming another prefix would start nothing.
# Expects CORVETTA_TEMPLATES, CORVETTA_GENERATED, CORVETTA_VERSION and the folders CORVETTA_BINDIR,
# CORVETTA_DATADIR, CORVETTA_MANDIR, CORVETTA_SYSCONFDIR and CORVETTA_USERUNITDIR (each relative
# to the prefix, or absolute).

function(corvetta_full_path folder result)
  if(IS_ABSOLUTE "${folder}")
    set(${result} "${folder}" PARENT_SCOPE)
  else()
    set(${result} "${CMAKE_INSTALL_PREFIX}/${folder}" PARENT_SCOPE)
  endif()
endfunction()

corvetta_full_path("${CORVETTA_BINDIR}" CORVETTA_FULL_BINDIR)
corvetta_full_path("${CORVETTA_DATADIR}" CORVETTA_FULL_DATADIR)
corvetta_full_path("${CORVETTA_MANDIR}" CORVETTA_FULL_MANDIR)
corvetta_full_path("${CORVETTA_USERUNITDIR}" CORVETTA_FULL_USERUNITDIR)
# As GNUInstallDirs has it: a system-wide installation keeps its configuration in /etc, where
# sessions look for autostart entries (XDG_CONFIG_DIRS defaults to /etc/xdg).
if(CMAKE_INSTALL_PREFIX MATCHES "^/(usr/?)?$" AND NOT IS_ABSOLUTE "${CORVETTA_SYSCONFDIR}")
  set(CORVETTA_FULL_SYSCONFDIR "/${CORVETTA_SYSCONFDIR}")
else()
  corvetta_full_path("${CORVETTA_SYSCONFDIR}" CORVETTA_FULL_SYSCONFDIR)
endif()
set(CORVETTA_FULL_AUTOSTARTDIR "${CORVETTA_FULL_SYSCONFDIR}/xdg/autostart")
set(PROJECT_VERSION "${CORVETTA_VERSION}")

# template in data/ | installed name | folder
set(corvetta_session_files
    "applications/com.corvetta.Corvetta.desktop.in|com.corvetta.Corvetta.desktop|${CORVETTA_FULL_DATADIR}/applications"
    "autostart/corvetta.desktop.in|corvetta.desktop|${CORVETTA_FULL_AUTOSTARTDIR}"
    "systemd/corvetta.service.in|corvetta.service|${CORVETTA_FULL_USERUNITDIR}"
    "man/corvetta.1.in|corvetta.1|${CORVETTA_FULL_MANDIR}/man1"
    "man/corvetta-ctl.1.in|corvetta-ctl.1|${CORVETTA_FULL_MANDIR}/man1")

# One scratch folder per destination, so installing to two places at once cannot mix their files.
string(MD5 destination_key "$ENV{DESTDIR}|${CMAKE_INSTALL_PREFIX}")
set(generated "${CORVETTA_GENERATED}/${destination_key}")
foreach(entry IN LISTS corvetta_session_files)
  string(REPLACE "|" ";" fields "${entry}")
  list(GET fields 0 template)
  list(GET fields 1 name)
  list(GET fields 2 folder)
  configure_file("${CORVETTA_TEMPLATES}/${template}" "${generated}/${name}" @ONLY)
  file(INSTALL "${generated}/${name}" DESTINATION "${folder}")
endforeach()
file(REMOVE_RECURSE "${generated}")
